#include "zelv/controller/CommandController.h"

#include <gmock/gmock.h>

#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/controller/testing/CommandTrial.h"
#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace {

using testing::ElementsAre;
using Zelv::CommandArgs;
using Zelv::GUID;
using Zelv::Controller::CommandController;
using Zelv::Controller::Testing::CommandCallback;
using Zelv::Controller::Testing::CommandHandler;
using Zelv::Controller::Testing::Phone;
using Zelv::Platform::Fake::FakeThreads;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;
using Zelv::Platform::Testing::Event;
using Zelv::Testing::Peer;

class Commands : public Zelv::Controller::Testing::CommandTrial {
 protected:
  std::vector<std::string> paths() const {
    std::vector<std::string> paths;
    for (auto const& request : mTree.requests) {
      paths.push_back(request.path);
    }
    return paths;
  }

  std::vector<std::string> queues() const {
    std::vector<std::string> queues;
    for (auto const& queue : mController->getStatistics().mQueues) {
      queues.push_back(queue.mDeviceId);
    }
    return queues;
  }
};

// Start

TEST_F(Commands, AskTheTreeWhoAndWhereThisDeviceIsAndForThePhones) {
  mController->initialize();
  EXPECT_THAT(paths(), ElementsAre(cIdentityPath, cAddressPath, cDevicesPath));
  for (auto const& request : mTree.requests) {
    EXPECT_EQ(nullptr, request.context);
    EXPECT_EQ(static_cast<Zelv::IBaseDataCallback*>(mController.get()), request.callback);
  }
}

TEST_F(Commands, AskNothingWithoutATimer) {
  sTimer = nullptr;
  LogCapture const log;
  mController->initialize();
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DiscoveryService::initialize: Failed to obtain ICoreTimer interface."));
  EXPECT_THAT(paths(), ElementsAre());
}

TEST(CommandsAlone, AskNothingWithoutATree) {
  auto const none = []() -> Zelv::ICoreData* { return nullptr; };
  auto const noTimer = []() -> Zelv::ICoreTimer* { return nullptr; };
  CommandController controller(CommandController::Surroundings{none, noTimer, nullptr});
  LogCapture const log;
  controller.initialize();
  EXPECT_THAT(log.texts(PCRealDebug::Error),
              ElementsAre("CommandController::initialize: Failed to obtain ICoreData interface."));
  CommandCallback callback;
  EXPECT_THROW(
      try {
        controller.executeCommand("<A>", "phone", &callback);
      } catch (std::runtime_error const& error) {
        EXPECT_STREQ("CommandController::executeCommand: Failed to obtain ICoreData interface!",
                     error.what());
        throw;
      },
      std::runtime_error);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::executeCommand: Failed to obtain ICoreData "
                          "interface."));
  EXPECT_EQ(0U, controller.getStatistics().mPendingCommands);
}

TEST_F(Commands, ListenOnTCPAndUDPOnceTheAddressIsKnown) {
  mController->initialize();
  answer(cIdentityPath, cSelf);
  EXPECT_FALSE(Peer(Peer::Stream).connect(cPort));
  LogCapture const log;
  answer(cAddressPath, "127.0.0.1");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail, "CommandController::onData: Local IP='127.0.0.1'"));
  EXPECT_THAT(log.texts(PCRealDebug::Notable),
              testing::IsSupersetOf({"CommandController::onData: Add CommandControl service on "
                                     "'tcp://127.0.0.1:4448/'",
                                     "CommandController::onData: Add CommandControl service on "
                                     "'udp://127.0.0.1:4448/'"}));
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  EXPECT_TRUE(send(message(newId(), "<A>tcp</A>")));
  ASSERT_TRUE(handler.waitFor(1));
  EXPECT_TRUE(Peer(Peer::Datagram).sendTo(cPort, message(newId(), "<A>udp</A>")));
  ASSERT_TRUE(handler.waitFor(2));
  EXPECT_EQ("<A>tcp</A>", handler.calls()[0].command);
  EXPECT_EQ("<A>udp</A>", handler.calls()[1].command);
}

TEST_F(Commands, GoOnWhenAServiceCannotBeRegistered) {
  Peer taken(Peer::Stream);
  ASSERT_TRUE(taken.listen(cPort));
  start();
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  EXPECT_TRUE(Peer(Peer::Datagram).sendTo(cPort, message(newId(), "<A></A>")));
  EXPECT_TRUE(handler.waitFor(1));
}

TEST_F(Commands, KeepTheirServiceWhenItIsRegisteredOnceMore) {
  start();
  mController->startService();
  mController->terminate();
  EXPECT_FALSE(Peer(Peer::Stream).connect(cPort));
}

TEST_F(Commands, StartNoServiceBeforeTheAddressIsKnown) {
  mController->initialize();
  mController->startService();
  EXPECT_FALSE(Peer(Peer::Stream).connect(cPort));
}

TEST_F(Commands, AreExecutedOnceTheIdentityIsKnown) {
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  mController->initialize();
  mController->executeCommand("<A>early</A>", "", &mCallback);
  EXPECT_EQ(1U, mController->getStatistics().mTasks);
  LogCapture const log;
  answer(cIdentityPath, cSelf);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail, std::string("CommandController::onData: "
                                                           "mLocalDeviceId='") +
                                                   cSelf + "'"));
  EXPECT_TRUE(handler.waitFor(1));
}

/// Its thread ends at once, with a line that has its name.
class FailingController : public CommandController {
 public:
  using CommandController::CommandController;
  void t_Main() override { throw std::runtime_error("failed"); }
};

TEST_F(Commands, AreExecutedOnAThreadWithAName) {
  FailingController controller(CommandController::Surroundings{
      Zelv::Controller::Testing::FakeCoreData::find, [] { return sTimer; }, nullptr});
  controller.initialize();
  LogCapture const log;
  answer(cIdentityPath, cSelf);
  EXPECT_TRUE(log.waitFor(PCRealDebug::Error,
                          "PCThread::t_Main: thread 'Quorl - CommandController::onData' ended by "
                          "exception 'failed'"));
}

TEST_F(Commands, ShowTheLifeOfTheirThread) {
  LogCapture const log;
  start();
  EXPECT_TRUE(log.waitFor(PCRealDebug::Trace, "CommandController::processTasks: Entry."));
  mController->terminate();
  EXPECT_TRUE(log.waitFor(PCRealDebug::Trace, "CommandController::processTasks: Exit."));
}

TEST_F(Commands, TellWhenThereIsNoThreadToBeHad) {
  mController->initialize();
  LogCapture const log;
  FakeThreads::FailNext(1);
  answer(cIdentityPath, cSelf);
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "CommandController::onData: Error creating a new thread"));
}

// The data worker runs already when the controller asks.
TEST_F(Commands, TakeAnswersThatComeBeforeTheirRequestHasReturned) {
  mTree.reaction = [this](auto const& aRequest) {
    std::thread worker([&] {
      mTree.answer(aRequest, aRequest.path == cIdentityPath  ? cSelf
                             : aRequest.path == cAddressPath ? "127.0.0.1"
                                                             : "phone");
    });
    worker.join();
  };
  LogCapture const log;
  mController->initialize();
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Error, "Context is empty")) << log.dump();
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::onData: mDiscoveredDevSubscription='phone'"));
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  EXPECT_TRUE(send(message(newId(), "<A></A>")));
  EXPECT_TRUE(handler.waitFor(1));
}

TEST_F(Commands, TakeAnswersToEarlyCommandsAsWell) {
  Phone phone;
  mController->executeCommand("<A></A>", "phone", &mCallback);
  answer(urlPath("phone"), phone.url());
  mController->executeCommand("<B></B>", "other", &mCallback);
  answer(urlPath("other"), "no URL");
  EXPECT_TRUE(phone.texts().empty());
  LogCapture const log;
  mController->initialize();
  EXPECT_TRUE(phone.waitFor(1));
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "CommandController::initialize: Exception: Invalid URL."));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
}

// Local commands

TEST_F(Commands, GoToTheHandlerOfTheirName) {
  start();
  CommandHandler a;
  CommandHandler b;
  mController->registerCommandHandler("A", &a);
  mController->registerCommandHandler("B", &b);
  LogCapture const log;
  GUID const id = mController->executeCommand("<A>text</A>", "", &mCallback);
  ASSERT_TRUE(a.waitFor(1));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "CommandController::executeCommand: DeviceID is NULL; sending command to "
                          "Local Host."));
  settle();
  EXPECT_TRUE(b.calls().empty());
  auto const call = a.calls().front();
  EXPECT_EQ("<A>text</A>", call.command);
  EXPECT_EQ(id, call.args.commandId);
  EXPECT_EQ(GUID::nullGUID, call.args.messageId);
  EXPECT_EQ("", call.args.senderId);
  EXPECT_EQ("", call.args.replyTo);
}

TEST_F(Commands, ToThisDevicesOwnIdentityAreLocal) {
  start();
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  mController->executeCommand("<A></A>", cSelf, &mCallback);
  EXPECT_TRUE(handler.waitFor(1));
}

TEST_F(Commands, BringTheReturnValueToTheirCallback) {
  start();
  CommandHandler handler([](auto const&, auto const&) { return "done"; });
  mController->registerCommandHandler("A", &handler);
  GUID const id = mController->executeCommand("<A></A>", "", &mCallback);
  ASSERT_TRUE(mCallback.waitFor(1));
  EXPECT_EQ("done", mCallback.returns()[0].value);
  EXPECT_EQ(id, mCallback.returns()[0].id);
}

TEST_F(Commands, WithoutAReturnValueTellNobody) {
  start();
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  LogCapture const log;
  mController->executeCommand("<A></A>", "", &mCallback);
  settle();
  EXPECT_TRUE(mCallback.returns().empty());
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Warning, "No callback"));
}

TEST_F(Commands, RunOneAfterTheOtherOnOneThread) {
  start();
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  for (int i = 0; i < 100; ++i) {
    mController->executeCommand("<A>" + std::to_string(i) + "</A>", "", &mCallback);
  }
  ASSERT_TRUE(handler.waitFor(100));
  auto const calls = handler.calls();
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_EQ("<A>" + std::to_string(i) + "</A>", calls[i].command);
    EXPECT_EQ(calls[0].thread, calls[i].thread);
  }
}

TEST_F(Commands, WithoutAHandlerAreLogged) {
  start();
  LogCapture const log;
  mController->executeCommand("<A></A>", "", &mCallback);
  settle();
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandController::dispatchCommand: No handler found for command type "
                          "'A'."));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::executeExecuteCommand: dispatchCommand failed."));
  EXPECT_TRUE(mCallback.returns().empty());
}

TEST_F(Commands, WithoutAHandlerReturnWhatTheLastOneReturned) {
  start();
  CommandHandler handler([](auto const&, auto const&) { return "kept"; });
  mController->registerCommandHandler("A", &handler);
  CommandCallback first;
  mController->executeCommand("<A></A>", "", &first);
  GUID const id = mController->executeCommand("<B></B>", "", &mCallback);
  ASSERT_TRUE(mCallback.waitFor(1));
  EXPECT_EQ("kept", mCallback.returns()[0].value);
  EXPECT_EQ(id, mCallback.returns()[0].id);
}

TEST_F(Commands, AreRefusedWithoutTextOrCallback) {
  LogCapture const log;
  struct Case {
    std::function<void()> call;
    char const* line;
    char const* what;
  };
  Case const cases[] = {
      {[this] { mController->executeCommand("", "", &mCallback); },
       "CommandController::executeCommand: aCommand parameter is empty.",
       "aCommand parameter is empty!"},
      {[this] { mController->executeCommand("<A>", "", nullptr); },
       "CommandController::executeCommand: aCallback parameter is NULL.",
       "aCallback parameter is NULL!"},
      {[this] { mController->discardCommandCallback(nullptr); },
       "CommandController::discardCommandCallback: aCallback parameter is NULL.",
       "aCallback parameter is NULL!"},
      {[this] { mController->registerCommandHandler("", nullptr); },
       "CommandController::registerCommandHandler: aCommandName parameter is empty.",
       "aCommandName parameter is empty!"},
  };
  for (Case const& one : cases) {
    std::string what;
    try {
      one.call();
    } catch (std::invalid_argument const& error) {
      what = error.what();
    }
    EXPECT_EQ(one.what, what);
    EXPECT_THAT(log, Logged(PCRealDebug::Error, one.line));
  }
}

TEST_F(Commands, OfOneNameHaveOneHandler) {
  CommandHandler handler;
  GUID const handle = mController->registerCommandHandler("A", &handler);
  LogCapture const log;
  std::string what;
  try {
    mController->registerCommandHandler("A", &handler);
  } catch (std::logic_error const& error) {
    what = error.what();
  }
  EXPECT_EQ("Command handler already registered.", what);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::registerCommandHandler: Command handler already "
                          "registered."));
  mController->unregisterCommandHandler(handle);
  EXPECT_NE(handle, mController->registerCommandHandler("A", &handler));
}

TEST_F(Commands, LeaveTheOtherHandlersWhenOneGoes) {
  CommandHandler handler;
  GUID const handle = mController->registerCommandHandler("A", &handler);
  mController->registerCommandHandler("B", &handler);
  mController->unregisterCommandHandler(handle);
  LogCapture const log;
  mController->unregisterCommandHandler(handle);
  mController->unregisterCommandHandler(GUID::createGUID());
  EXPECT_EQ(2, log.count(PCRealDebug::Warning,
                         "CommandController::unregisterCommandHandler: Registration not found!"));
  EXPECT_TRUE(mController->dispatchCommand("<B></B>", CommandArgs()));
  EXPECT_FALSE(mController->dispatchCommand("<A></A>", CommandArgs()));
}

TEST_F(Commands, OfNoTextOrOfANullHandlerAreNotDispatched) {
  mController->registerCommandHandler("A", nullptr);
  EXPECT_FALSE(mController->dispatchCommand("", CommandArgs()));
  EXPECT_FALSE(mController->dispatchCommand("<A></A>", CommandArgs()));
}

TEST_F(Commands, GoOnWhenAHandlerOrACallbackThrows) {
  start();
  CommandHandler handler([](std::string const& aCommand, auto const&) -> std::string {
    if (aCommand == "<A>1</A>") {
      throw std::runtime_error("handler");
    }
    if (aCommand == "<A>2</A>") {
      throw 7;
    }
    return "value";
  });
  CommandCallback callback([](auto const&) { throw std::runtime_error("callback"); });
  mController->registerCommandHandler("A", &handler);
  LogCapture const log;
  for (char const* text : {"<A>1</A>", "<A>2</A>", "<A>3</A>"}) {
    mController->executeCommand(text, "", &callback);
  }
  ASSERT_TRUE(handler.waitFor(3));
  settle();
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::processTasks: Exception in a task: handler"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::processTasks: Unknown exception in a task."));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::processTasks: Exception in a task: callback"));
}

// Callbacks

TEST_F(Commands, KeepACallbackUntilItIsDiscarded) {
  start();
  CommandHandler handler([](auto const&, auto const&) { return "value"; });
  mController->registerCommandHandler("A", &handler);
  GUID const id = mController->executeCommand("<A></A>", "", &mCallback);
  ASSERT_TRUE(mCallback.waitFor(1));
  EXPECT_EQ(1U, mController->getStatistics().mCallbacks);
  mController->executeProcessCommandReturn("again", id, CommandArgs());
  EXPECT_EQ(2U, mCallback.returns().size());
  LogCapture const log;
  mController->discardCommandCallback(&mCallback);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::discardCommandCallback: discarding callback for "
                          "command '" +
                              id.toString() + "'."));
  mController->executeProcessCommandReturn("again", id, CommandArgs());
  EXPECT_EQ(2U, mCallback.returns().size());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandController::executeProcessCommandReturn: No callback related to "
                          "message '" +
                              id.toString() + "'."));
}

TEST_F(Commands, DiscardOneCallbackWithAllItsCommandsAndNoOther) {
  CommandCallback other;
  for (int i = 0; i < 10; ++i) {
    mController->executeCommand("<A></A>", "", &mCallback);
    mController->executeCommand("<A></A>", "", &other);
  }
  mController->discardCommandCallback(&mCallback);
  EXPECT_EQ(10U, mController->getStatistics().mCallbacks);
  mController->discardCommandCallback(&mCallback);
  EXPECT_EQ(10U, mController->getStatistics().mCallbacks);
}

TEST_F(Commands, ReturnTheirValueToNobodyWhenTheCallbackIsDiscardedMeanwhile) {
  start();
  CommandHandler handler([this](auto const&, auto const&) {
    mController->discardCommandCallback(&mCallback);
    return "value";
  });
  mController->registerCommandHandler("A", &handler);
  LogCapture const log;
  GUID const id = mController->executeCommand("<A></A>", "", &mCallback);
  settle();
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandController::executeExecuteCommand: No callback related to "
                          "command '" +
                              id.toString() + "'."));
}

TEST_F(Commands, DiscardACallbackOnlyWhenNobodyIsInsideIt) {
  start();
  CommandHandler handler([](auto const&, auto const&) { return "value"; });
  mController->registerCommandHandler("A", &handler);
  Event inside;
  Event mayLeave;
  std::atomic<bool> left{false};
  auto callback = std::make_unique<CommandCallback>([&](auto const&) {
    inside.happen();
    EXPECT_TRUE(mayLeave.wait());
    left = true;
  });
  mController->executeCommand("<A></A>", "", callback.get());
  ASSERT_TRUE(inside.wait());
  std::thread leaver([&] { mayLeave.happen(); });
  mController->discardCommandCallback(callback.get());
  EXPECT_TRUE(left);
  callback.reset();
  leaver.join();
}

// A callback that uses the tree may be waiting for the lock under which the delivery runs.
TEST_F(Commands, AreNotWaitedForInsideADeliveryOfTheTree) {
  start();
  CommandHandler handler([](auto const&, auto const&) { return "value"; });
  GUID const handle = mController->registerCommandHandler("A", &handler);
  Event inside;
  Event mayLeave;
  std::atomic<bool> left{false};
  CommandCallback callback([&](auto const&) {
    inside.happen();
    left = mayLeave.wait();
  });
  mController->executeCommand("<A></A>", "", &callback);
  ASSERT_TRUE(inside.wait());
  {
    Zelv::Controller::InsideDelivery const delivery;
    mController->discardCommandCallback(&callback);
    mController->unregisterCommandHandler(handle);
  }
  EXPECT_FALSE(left);
  mayLeave.happen();
  settle();
  EXPECT_TRUE(left);
}

TEST_F(Commands, LetACallbackDiscardItself) {
  start();
  CommandHandler handler([](auto const&, auto const&) { return "value"; });
  mController->registerCommandHandler("A", &handler);
  CommandCallback* self = nullptr;
  CommandCallback callback([&](auto const&) { mController->discardCommandCallback(self); });
  self = &callback;
  mController->executeCommand("<A></A>", "", &callback);
  ASSERT_TRUE(callback.waitFor(1));
  settle();
  EXPECT_EQ(1U, mController->getStatistics().mCallbacks) << "that of settle() alone";
}

TEST_F(Commands, UnregisterAHandlerOnlyWhenNobodyIsInsideIt) {
  start();
  Event inside;
  Event mayLeave;
  std::atomic<bool> left{false};
  GUID own;
  CommandHandler handler([&](auto const&, auto const&) {
    inside.happen();
    EXPECT_TRUE(mayLeave.wait());
    left = true;
    return "";
  });
  CommandHandler leaving([&](auto const&, auto const&) {
    mController->unregisterCommandHandler(own);
    return "";
  });
  GUID const handle = mController->registerCommandHandler("A", &handler);
  own = mController->registerCommandHandler("B", &leaving);
  mController->executeCommand("<A></A>", "", &mCallback);
  ASSERT_TRUE(inside.wait());
  std::thread leaver([&] { mayLeave.happen(); });
  mController->unregisterCommandHandler(handle);
  EXPECT_TRUE(left);
  leaver.join();
  mController->executeCommand("<B></B>", "", &mCallback);
  settle();
  EXPECT_EQ(1U, leaving.calls().size());
}

TEST_F(Commands, MayBeGivenFromWithinHandlersAndCallbacks) {
  start();
  CommandHandler second([](auto const&, auto const&) { return "second"; });
  CommandHandler first([&](auto const&, auto const&) {
    mController->registerCommandHandler("Second", &second);
    mController->executeCommand("<Second></Second>", "", &mCallback);
    return "first";
  });
  mController->registerCommandHandler("First", &first);
  CommandCallback callback(
      [&](auto const&) { mController->executeCommand("<Second></Second>", "", &mCallback); });
  mController->executeCommand("<First></First>", "", &callback);
  EXPECT_TRUE(mCallback.waitFor(2));
}

// Texts

TEST_F(Commands, AreNamedByTheTextOfTheirFirstTag) {
  struct Case {
    char const* command;
    char const* name;
  };
  for (Case const& one : {Case{"<Echo>text</Echo>", "Echo"}, Case{"<Echo/>", "Echo/"},
                          Case{"<Echo a=\"1\"></Echo>", "Echo a=\"1\""}, Case{"<Echo", "Echo"},
                          Case{"xEcho>", "Echo"}, Case{"<>", ""}, Case{">Echo>", "Echo"},
                          Case{"<", ""}, Case{"", ""}}) {
    EXPECT_EQ(one.name, CommandController::getCommandName(one.command)) << one.command;
  }
}

TEST_F(Commands, AreTheBodyOfTheirMessageExactlyAsItWasSent) {
  struct Case {
    char const* message;
    char const* body;
  };
  for (Case const& one : {Case{"", ""}, Case{"no body", "no body"}, Case{"<Body></Body>", ""},
                          Case{"<Body> <A b = 'c'>&lt;&amp;&#x13;<!-- x --></A>\n</Body>\n",
                               " <A b = 'c'>&lt;&amp;&#x13;<!-- x --></A>\n"},
                          Case{"<Body>1</Body><Body>2</Body>", "1"},
                          Case{"<Body>open", "<Body>open"}, Case{"close</Body>", "close</Body>"},
                          Case{"<Body a=\"1\">x</Body>", "<Body a=\"1\">x</Body>"},
                          Case{"</Body><Body>x</Body>", "x"}}) {
    EXPECT_EQ(one.body, mController->getMessage(one.message)) << one.message;
  }
}

TEST_F(Commands, HaveNoMessageWhenItCameBefore) {
  std::string const text = "<MessageID>7</MessageID><Body>x</Body>";
  EXPECT_EQ("x", mController->getMessage(text));
  LogCapture const log;
  EXPECT_EQ("", mController->getMessage(text));
  EXPECT_EQ("", mController->getMessage("<MessageID>7</MessageID>"));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "CommandController::checkDuplicateMessage: Message '7' is duplicate."));
  EXPECT_EQ("x", mController->getMessage("<MessageID>8</MessageID><Body>x</Body>"));
}

TEST_F(Commands, SplitAndTellTheTimeAsText) {
  std::list<std::string> items{"old"};
  CommandController::multiStringToList("a&#x13;&#x13;b", items);
  EXPECT_THAT(items, ElementsAre("a", "", "b"));
  CommandController::multiStringToList("", items);
  EXPECT_TRUE(items.empty());
  std::string time;
  CommandController::getCurrentTime(time);
  EXPECT_EQ("1600000000", time);
}

TEST_F(Commands, ForgetMessagesOfEarlierSecondsWhenTheHeartBeats) {
  mController->checkDuplicateMessage("old");
  Zelv::Platform::Fake::FakeClock::Advance(1000);
  mController->checkDuplicateMessage("new");
  LogCapture const log;
  mController->onTimer("OtherTimer", GUID::createGUID());
  EXPECT_EQ(2U, mController->getStatistics().mSeenMessages);
  mController->onTimer("HeartBeatTimer", GUID::createGUID());
  EXPECT_EQ(1U, mController->getStatistics().mSeenMessages);
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "CommandController::cleanExpiredMessages: Discarding msg 'old', "
                          "received: 1600000000, now: 1600000001."));
  EXPECT_FALSE(mController->checkDuplicateMessage("old"));
  EXPECT_TRUE(mController->checkDuplicateMessage("new"));
}

TEST_F(Commands, RememberNoMoreMessagesThanTheTableHolds) {
  for (int i = 0; i < 5000; ++i) {
    mController->checkDuplicateMessage(std::to_string(i));
  }
  mController->checkDuplicateMessage(std::string(129, 'x'));
  EXPECT_EQ(4096U, mController->getStatistics().mSeenMessages);
  EXPECT_TRUE(mController->checkDuplicateMessage("4999"));
  EXPECT_FALSE(mController->checkDuplicateMessage("0"));
}

TEST_F(Commands, OnlyLogWhatIsReturnedToTheControllerItself) {
  LogCapture const log;
  mController->onReturn("value", GUID::createGUID());
  EXPECT_THAT(log, Logged(PCRealDebug::Trace, "CommandController::onReturn: Entry."));
  EXPECT_EQ(0, log.count(PCRealDebug::Warning));
}

// End

TEST_F(Commands, ThatAreQueuedAreNotExecutedAfterTheEnd) {
  start();
  Event inside;
  Event mayLeave;
  CommandHandler handler([&](auto const&, auto const&) {
    inside.happen();
    EXPECT_TRUE(mayLeave.wait());
    return "";
  });
  mController->registerCommandHandler("A", &handler);
  mController->executeCommand("<A>1</A>", "", &mCallback);
  mController->executeCommand("<A>2</A>", "", &mCallback);
  mController->executeCommand("<A>3</A>", "", &mCallback);
  ASSERT_TRUE(inside.wait());
  std::thread terminator([&] { mController->terminate(); });
  LogCapture const log;
  // Its services go after the flag is set.
  while (Peer(Peer::Stream).connect(cPort)) {
    std::this_thread::yield();
  }
  mayLeave.happen();
  terminator.join();
  mAdapter.reset();
  mController.reset();
  EXPECT_EQ(1U, handler.calls().size());
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "CommandController::~CommandController: cleaning up 2 tasks in task "
                          "queue."));
  EXPECT_TRUE(log.hasContaining(
      PCRealDebug::Trace, "CommandController::~CommandController: Destroying PCThread ID = "));
}

TEST_F(Commands, EndWithoutBeingTerminated) {
  start();
  mAdapter.reset();
  mController.reset();
}

TEST_F(Commands, TakeNoAnswersAfterTheEnd) {
  mController->initialize();
  mController->executeCommand("<A></A>", "phone", &mCallback);
  mController->terminate();
  answer(cIdentityPath, cSelf);
  answer(cAddressPath, "127.0.0.1");
  answer(urlPath("phone"), "tcp://127.0.0.1:1/");
  EXPECT_EQ(0U, mController->GetId());
  EXPECT_FALSE(Peer(Peer::Stream).connect(cPort));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
  EXPECT_THAT(queues(), ElementsAre());
}

}  // namespace
