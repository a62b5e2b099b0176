#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zelv/controller/CommandController.h"
#include "zelv/controller/testing/CommandTrial.h"
#include "zelv/platform/TestPlatform.h"
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

class RemoteCommands : public Zelv::Controller::Testing::CommandTrial {
 protected:
  RemoteCommands() { start(); }

  std::vector<std::string> queues() const {
    std::vector<std::string> queues;
    for (auto const& queue : mController->getStatistics().mQueues) {
      queues.push_back(queue.mDeviceId);
    }
    return queues;
  }

  static std::string onTheWire(GUID const& aId, std::string const& aCommand) {
    return "<Envelope><Header><MessageID>" + aId.toString() + "</MessageID><SenderID>" + cSelf +
           "</SenderID><ReplyTo>tcp://127.0.0.1:4448/</ReplyTo></Header><Body>" + aCommand +
           "</Body></Envelope>\n";
  }
};

// Outgoing

TEST_F(RemoteCommands, AreHeldUntilTheAddressOfTheirDeviceIsKnown) {
  LogCapture const log;
  Phone phone;
  GUID const id = mController->executeCommand("<A>1 &lt; 2</A>", "phone", &mCallback);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::executeCommand() No existing message queue and URL "
                          "for device: phone, creating new one \n"));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "CommandController::executeCommand: Requesting URL for Remote Host: "
                          "phone."));
  EXPECT_EQ(1U, mController->getStatistics().mPendingCommands);
  EXPECT_TRUE(phone.texts().empty());
  answer(urlPath("phone"), phone.url());
  EXPECT_THAT(log,
              Logged(PCRealDebug::Detail,
                     "CommandController::onData() got Remote device service URL: " + phone.url()));
  ASSERT_TRUE(phone.waitFor(1));
  EXPECT_THAT(phone.texts(), ElementsAre(onTheWire(id, "<A>1 &lt; 2</A>")));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
  EXPECT_EQ(1U, mController->getStatistics().mCallbacks);
}

TEST_F(RemoteCommands, TellOfTheirNewQueueAtErrorLevel) {
  Phone phone;
  LogCapture const log;
  command("<A></A>", "phone", phone);
  EXPECT_THAT(log.texts(PCRealDebug::Error),
              ElementsAre(testing::MatchesRegex(
                  "CommandController::onData: deviceServiceQueue for device: phone is launched, "
                  "Thread ID=-?[0-9]+")));
}

TEST_F(RemoteCommands, GoDirectlyOnceThereIsAQueue) {
  Phone phone;
  command("<A></A>", "phone", phone);
  LogCapture const log;
  GUID const id = mController->executeCommand("<B></B>", "phone", &mCallback);
  ASSERT_TRUE(phone.waitFor(2));
  EXPECT_EQ(onTheWire(id, "<B></B>"), phone.texts()[1]);
  std::string const text = onTheWire(id, "<B></B>");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::executeCommand() The created message is: " +
                              text.substr(0, text.size() - 1)));
  EXPECT_EQ(2U, mController->getStatistics().mCallbacks);
}

TEST_F(RemoteCommands, AskEachWhileTheAddressIsNotKnownAndShareOneQueue) {
  Phone phone;
  std::vector<GUID> ids;
  for (char const* text : {"<A></A>", "<B></B>", "<C></C>"}) {
    ids.push_back(mController->executeCommand(text, "phone", &mCallback));
  }
  EXPECT_EQ(3U, mController->getStatistics().mPendingCommands);
  LogCapture const log;
  auto const requests = mTree.requests;
  for (auto const& request : requests) {
    if (request.path == urlPath("phone")) {
      mTree.answer(request, phone.url());
    }
  }
  ASSERT_TRUE(phone.waitFor(3));
  EXPECT_THAT(phone.texts(), ElementsAre(onTheWire(ids[0], "<A></A>"), onTheWire(ids[1], "<B></B>"),
                                         onTheWire(ids[2], "<C></C>")));
  EXPECT_THAT(queues(), ElementsAre("phone"));
  EXPECT_EQ(1, log.countContaining(PCRealDebug::Error, "is launched"));
  EXPECT_EQ(3U, mController->getStatistics().mCallbacks);
}

TEST_F(RemoteCommands, DoNotOvertakeThoseThatWaitForTheAddress) {
  Phone phone;
  GUID const first = mController->executeCommand("<A></A>", "phone", &mCallback);
  GUID const second = mController->executeCommand("<B></B>", "phone", &mCallback);
  auto const secondQuestion = mTree.requests.back();
  mTree.answer(*std::prev(mTree.requests.end(), 2), phone.url());
  GUID const third = mController->executeCommand("<C></C>", "phone", &mCallback);
  LogCapture const log;
  mTree.answer(secondQuestion, phone.url());
  GUID const fourth = mController->executeCommand("<D></D>", "phone", &mCallback);
  ASSERT_TRUE(phone.waitFor(4));
  EXPECT_THAT(phone.texts(),
              ElementsAre(onTheWire(first, "<A></A>"), onTheWire(second, "<B></B>"),
                          onTheWire(third, "<C></C>"), onTheWire(fourth, "<D></D>")));
  EXPECT_EQ(0, log.count(PCRealDebug::Error));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
  EXPECT_EQ(4U, mController->getStatistics().mCallbacks);
}

TEST_F(RemoteCommands, ThatWentWithTheFirstAnswerAreForgottenWithTheirOwn) {
  Phone phone;
  mController->executeCommand("<A></A>", "phone", &mCallback);
  mController->executeCommand("<B></B>", "phone", &mCallback);
  mController->executeCommand("<C></C>", "other", &mCallback);
  auto const ownQuestion = *std::prev(mTree.requests.end(), 2);
  mTree.answer(*std::prev(mTree.requests.end(), 3), phone.url());
  EXPECT_EQ(2U, mController->getStatistics().mPendingCommands);
  LogCapture const log;
  mController->discardCommandCallback(&mCallback);
  EXPECT_EQ(3, log.countContaining(PCRealDebug::Detail, "discarding callback for command"));
  mTree.fail(ownQuestion);
  EXPECT_EQ(1U, mController->getStatistics().mPendingCommands);
  ASSERT_TRUE(phone.waitFor(2));
  EXPECT_EQ(2U, phone.texts().size());
}

/// While a command asks for the tree, an answer to one before it comes on another thread.
class CommandsBetween : public RemoteCommands {
 protected:
  CommandsBetween() {
    end();
    mAdapter.reset(Zelv::Adapter::NetworkAdapter::getInstance());
    mController = std::make_unique<CommandController>(CommandController::Surroundings{
        find, [] { return sTimer; },
        [] { return std::make_unique<Zelv::Controller::DeviceServiceQueue>(); }});
    start();
  }
  ~CommandsBetween() override { sBetween = nullptr; }

  static Zelv::ICoreData* find() {
    if (sBetween) {
      std::exchange(sBetween, nullptr)();
    }
    return Zelv::Controller::Testing::FakeCoreData::find();
  }

  static inline std::function<void()> sBetween;
};

TEST_F(CommandsBetween, GoBehindTheFirstAndBeforeTheNext) {
  Phone phone;
  GUID const first = mController->executeCommand("<A></A>", "phone", &mCallback);
  sBetween = [this, &phone] { answer(urlPath("phone"), phone.url()); };
  GUID const second = mController->executeCommand("<B></B>", "phone", &mCallback);
  GUID const third = mController->executeCommand("<C></C>", "phone", &mCallback);
  ASSERT_TRUE(phone.waitFor(3));
  EXPECT_THAT(phone.texts(), ElementsAre(onTheWire(first, "<A></A>"), onTheWire(second, "<B></B>"),
                                         onTheWire(third, "<C></C>")));
}

TEST_F(RemoteCommands, ReachTheDeviceInOrderAndOnce) {
  Phone phone;
  command("<N>0</N>", "phone", phone);
  constexpr std::size_t count = 2000;
  for (std::size_t i = 1; i < count; ++i) {
    mController->executeCommand("<N>" + std::to_string(i) + "</N>", "phone", &mCallback);
    if (i % 200 == 0) {
      ASSERT_TRUE(phone.waitFor(i));
    }
  }
  ASSERT_TRUE(phone.waitFor(count));
  auto const texts = phone.texts();
  ASSERT_EQ(count, texts.size());
  for (std::size_t i = 0; i < count; ++i) {
    ASSERT_NE(std::string::npos, texts[i].find("<N>" + std::to_string(i) + "</N>")) << texts[i];
  }
}

TEST_F(RemoteCommands, DoNotWaitForAnotherDeviceThatIsDead) {
  Phone dead(Phone::KeepsSilent);
  Phone alive;
  command("<A></A>", "dead", dead);
  ASSERT_TRUE(dead.waitFor(1));
  command("<A></A>", "alive", alive);
  for (int i = 0; i < 100; ++i) {
    mController->executeCommand("<A></A>", "dead", &mCallback);
    mController->executeCommand("<A></A>", "alive", &mCallback);
  }
  EXPECT_TRUE(alive.waitFor(101));
  EXPECT_EQ(1U, dead.texts().size());
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  mController->executeCommand("<A></A>", "", &mCallback);
  EXPECT_TRUE(handler.waitFor(1));
}

TEST_F(RemoteCommands, AreLostWhenTheirDeviceHasNoAddress) {
  mController->executeCommand("<A></A>", "gone", &mCallback);
  LogCapture const log;
  EXPECT_THROW(answer(urlPath("gone"), ""), std::logic_error);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::onData: no command goes to device: gone, its URL is "
                          "''."));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
  EXPECT_EQ(0U, mController->getStatistics().mCallbacks);
  EXPECT_THAT(queues(), ElementsAre());
}

TEST_F(RemoteCommands, AreLostWhenTheirAddressCannotBeRead) {
  mController->executeCommand("<A></A>", "gone", &mCallback);
  mTree.fail(mTree.of(urlPath("gone")));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
  mTree.reaction = [this](auto const& aRequest) { mTree.fail(aRequest); };
  mController->executeCommand("<A></A>", "gone", &mCallback);
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
}

TEST_F(RemoteCommands, AreLostWithoutAThread) {
  mController->executeCommand("<A></A>", "phone", &mCallback);
  LogCapture const log;
  FakeThreads::FailNext(1);
  answer(urlPath("phone"), "tcp://127.0.0.1:1/");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::onData: deviceServiceQueue for device: phone "
                          "initialize failed!!!!"));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
  EXPECT_EQ(0U, mController->getStatistics().mCallbacks);
  EXPECT_THAT(queues(), ElementsAre());
}

TEST_F(RemoteCommands, AreLostWithoutMemoryForAQueue) {
  mController->executeCommand("<A></A>", "phone", &mCallback);
  LogCapture const log;
  sMakesQueues = false;
  answer(urlPath("phone"), "tcp://127.0.0.1:1/");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::onData: failed to create deviceServiceQueue for "
                          "device: phone !!!"));
  EXPECT_EQ(0U, mController->getStatistics().mCallbacks);
}

TEST_F(RemoteCommands, AreNotTakenFromAnAnswerThatNobodyAskedFor) {
  LogCapture const log;
  mController->onData("path", "tcp://127.0.0.1:1/", nullptr, GUID::createGUID());
  Zelv::Controller::PendingCommandContext const strange(GUID::createGUID(), "<A>", "phone",
                                                        &mCallback);
  mController->onData("path", "tcp://127.0.0.1:1/", &strange, GUID::createGUID());
  EXPECT_EQ(2, log.count(PCRealDebug::Error, "CommandController::onData: Context is empty!!!!"));
  EXPECT_THAT(queues(), ElementsAre());
}

TEST_F(RemoteCommands, ToAnIdentifierThatNoDeviceCanHaveAskNothing) {
  std::size_t const asked = mTree.requests.size();
  LogCapture const log;
  mController->executeCommand("<A></A>", "x' or '1'='1", &mCallback);
  mController->executeCommand("<A></A>", "a[b", &mCallback);
  EXPECT_EQ(asked, mTree.requests.size());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandController::executeCommand: There is no device 'a[b'."));
  EXPECT_EQ(0U, mController->getStatistics().mPendingCommands);
}

TEST_F(RemoteCommands, WhoseCallbackIsDiscardedAreSentAllTheSame) {
  Phone phone;
  GUID const id = mController->executeCommand("<A></A>", "phone", &mCallback);
  LogCapture const log;
  mController->discardCommandCallback(&mCallback);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::discardCommandCallback: discarding callback for "
                          "command '" +
                              id.toString() + "'."));
  answer(urlPath("phone"), phone.url());
  EXPECT_TRUE(phone.waitFor(1));
  EXPECT_EQ(0U, mController->getStatistics().mCallbacks);
}

// The list of phones

TEST_F(RemoteCommands, GoWithTheQueueOfADeviceThatLeaves) {
  Phone silent(Phone::KeepsSilent);
  Phone phone;
  command("<A></A>", "leaves", silent);
  command("<A></A>", "stays", phone);
  ASSERT_TRUE(silent.waitFor(1));
  mController->executeCommand("<B></B>", "leaves", &mCallback);
  LogCapture const log;
  answer(cDevicesPath, "stays&#x13;other");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::onData: mDiscoveredDevSubscription='stays&#x13;"
                          "other'"));
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::terminateInactiveDeviceQueue() Device: 'leaves', not "
                          "present in the updated list."));
  EXPECT_THAT(queues(), ElementsAre("stays"));
  mController->executeCommand("<B></B>", "stays", &mCallback);
  EXPECT_TRUE(phone.waitFor(2));
  mController->terminate();
  EXPECT_EQ(1U, silent.texts().size());
}

TEST_F(RemoteCommands, LoseAllQueuesWhenTheLastPhoneLeaves) {
  Phone phone;
  command("<A></A>", "one", phone);
  command("<A></A>", "two", phone);
  LogCapture const log;
  answer(cDevicesPath, "");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "CommandController::terminateInactiveDeviceQueue: updated Device List "
                          "empty, remove all the service queue."));
  EXPECT_THAT(queues(), ElementsAre());
  // And a new one is made for whoever comes back.
  command("<B></B>", "one", phone);
  EXPECT_THAT(queues(), ElementsAre("one"));
}

TEST_F(RemoteCommands, EndWithoutWaitingForDevicesThatAreDead) {
  std::vector<std::unique_ptr<Phone>> dead;
  for (int i = 0; i < 10; ++i) {
    dead.push_back(std::make_unique<Phone>(Phone::KeepsSilent));
    command("<A></A>", "dead" + std::to_string(i), *dead.back());
    ASSERT_TRUE(dead.back()->waitFor(1));
  }
  // Each would be waited for 9 seconds.
  auto const start = std::chrono::steady_clock::now();
  end();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(45));
}

// Returns

TEST_F(RemoteCommands, BringWhatTheDeviceReturnsToTheirCallback) {
  Phone phone;
  GUID const id = command("<A></A>", "phone", phone);
  ASSERT_TRUE(phone.waitFor(1));
  ASSERT_TRUE(send(message(newId(), "<Yes>&lt;</Yes>", "", id.toString())));
  ASSERT_TRUE(mCallback.waitFor(1));
  auto const returned = mCallback.returns()[0];
  EXPECT_EQ("<Yes>&lt;</Yes>", returned.value);
  EXPECT_NE(id, returned.id) << "an identifier of its own, and not that of the command";
  EXPECT_NE(GUID::nullGUID, returned.id);
}

TEST_F(RemoteCommands, ReturnedThatNobodyGaveEndInTheWarning) {
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  std::string const id = newId();
  LogCapture const log;
  receive(message(newId(), "<A></A>", "", id));
  settle();
  EXPECT_TRUE(handler.calls().empty());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandController::executeProcessCommandReturn: No callback related to "
                          "message '" +
                              id + "'."));
}

TEST_F(RemoteCommands, ReturnedWithoutAValueDoNothing) {
  LogCapture const log;
  mController->executeProcessCommandReturn("", GUID::createGUID(), CommandArgs());
  EXPECT_EQ(0, log.count(PCRealDebug::Warning));
}

TEST_F(RemoteCommands, AreAnsweredByTheirHandlerAlone) {
  CommandHandler handler([](auto const&, auto const&) { return "value"; });
  mController->registerCommandHandler("A", &handler);
  Phone phone;
  LogCapture const log;
  receive(message(newId(), "<A></A>", phone.url()));
  settle();
  ASSERT_EQ(1U, handler.calls().size());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandController::executeExecuteCommand: No callback related to "
                          "command '" +
                              handler.calls()[0].args.commandId.toString() + "'."));
  EXPECT_TRUE(phone.texts().empty());
}

TEST_F(RemoteCommands, ReachTheHandlerWithWhatTheMessageTells) {
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  std::string const id = newId();
  ASSERT_TRUE(send(message(id, "<A>text</A>", "tcp://127.0.0.1:5000")));
  ASSERT_TRUE(handler.waitFor(1));
  auto const call = handler.calls()[0];
  EXPECT_EQ("<A>text</A>", call.command);
  EXPECT_EQ(GUID(id), call.args.messageId);
  EXPECT_NE(GUID(id), call.args.commandId);
  EXPECT_NE(GUID::nullGUID, call.args.commandId);
  EXPECT_EQ("phone", call.args.senderId);
  EXPECT_EQ("tcp://127.0.0.1:5000", call.args.replyTo);
}

TEST_F(RemoteCommands, AreReadWithTheirHeadersInAnyOrder) {
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  std::string const id = newId();
  receive(
      "<Envelope>\n <Body><A></A></Body> <Header> <ReplyTo>udp://127.0.0.1:1/</ReplyTo>"
      "<Other/><SenderID>other</SenderID><MessageID>" +
      id + "</MessageID></Header></Envelope>");
  ASSERT_TRUE(handler.waitFor(1));
  EXPECT_EQ(GUID(id), handler.calls()[0].args.messageId);
  EXPECT_EQ("other", handler.calls()[0].args.senderId);
  EXPECT_EQ("udp://127.0.0.1:1/", handler.calls()[0].args.replyTo);
}

TEST_F(RemoteCommands, AreAnsweredOverTheWire) {
  Phone phone;
  CommandHandler handler([this](std::string const& aCommand, CommandArgs const& aArgs) {
    mController->sendReturn(aCommand, aArgs);
    return "";
  });
  mController->registerCommandHandler("Echo", &handler);
  std::string const id = newId();
  ASSERT_TRUE(send(message(id, "<Echo>1 &lt; 2</Echo>", phone.url())));
  ASSERT_TRUE(phone.waitFor(1));
  std::string const text = phone.texts()[0];
  std::string const head = "<Envelope><Header><MessageID>";
  std::string const tail = std::string("</MessageID><SenderID>") + cSelf +
                           "</SenderID><RelatesTo>" + id +
                           "</RelatesTo></Header><Body><Echo>1 &lt; 2</Echo></Body></Envelope>\n";
  ASSERT_EQ(head.size() + 36 + tail.size(), text.size()) << text;
  EXPECT_EQ(head, text.substr(0, head.size()));
  EXPECT_NE(id, text.substr(head.size(), 36));
  EXPECT_EQ(tail, text.substr(head.size() + 36));
}

TEST_F(RemoteCommands, CannotBeAnsweredWithoutAnAddress) {
  EXPECT_THROW(mController->sendReturn("value", CommandArgs()), std::logic_error);
}

TEST_F(RemoteCommands, EndWithoutWaitingForAnAnswerToADeadDevice) {
  Phone silent(Phone::KeepsSilent);
  CommandHandler handler([this](std::string const& aCommand, CommandArgs const& aArgs) {
    for (int i = 0; i < 20; ++i) {
      mController->sendReturn(aCommand, aArgs);
    }
    return "";
  });
  mController->registerCommandHandler("A", &handler);
  receive(message(newId(), "<A></A>", silent.url()));
  ASSERT_TRUE(silent.waitFor(1));
  auto const start = std::chrono::steady_clock::now();
  mController->terminate();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  EXPECT_EQ(1U, silent.texts().size());
}

// Bad messages

TEST_F(RemoteCommands, ThatAreNoMessagesAreDroppedWithALine) {
  struct Case {
    std::string message;
    unsigned long level;
    char const* line;
  };
  Case const cases[] = {
      {"no XML", PCRealDebug::Error, "CommandController::onMessage: Failed to load Message."},
      {"", PCRealDebug::Error, "CommandController::onMessage: Failed to load Message."},
      {message("", "<A></A>"), PCRealDebug::Warning,
       "CommandController::OnMessage: Message has no MessageID. Ignoring it!"},
      {"<Other/>", PCRealDebug::Warning,
       "CommandController::OnMessage: Message has no MessageID. Ignoring it!"},
      {message(newId(), "<A></A>", "nonsense"), PCRealDebug::Warning,
       "CommandController::onMessage: replyTo is not a valid URL 'nonsense'."},
      {message(newId(), "<A></A>", "tcp:"), PCRealDebug::Warning,
       "CommandController::onMessage: replyTo is not a valid URL 'tcp:'."},
      {message(newId(), "<A></A>", "udp://239.255.44.46:4451/"), PCRealDebug::Warning,
       "CommandController::onMessage: replyTo is not a valid URL 'udp://239.255.44.46:4451/'."},
      {message(newId(), "<A></A>", "udp://255.255.255.255:1/"), PCRealDebug::Warning,
       "CommandController::onMessage: replyTo is not a valid URL 'udp://255.255.255.255:1/'."},
      {message(newId(), ""), PCRealDebug::Warning,
       "CommandController::onMessage: message has empty body."},
  };
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  for (Case const& one : cases) {
    LogCapture const log;
    receive(one.message);
    EXPECT_THAT(log, Logged(one.level, one.line)) << one.message;
  }
  settle();
  EXPECT_TRUE(handler.calls().empty());
}

TEST_F(RemoteCommands, ThatCameBeforeEndAsAnEmptyBody) {
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  std::string const text = message(newId(), "<A></A>");
  receive(text);
  LogCapture const log;
  receive(text);
  EXPECT_THAT(
      log, Logged(PCRealDebug::Warning, "CommandController::onMessage: message has empty body."));
  settle();
  EXPECT_EQ(1U, handler.calls().size());
}

TEST_F(RemoteCommands, WithIdentifiersThatAreNoneAreDroppedByTheNetwork) {
  EXPECT_THROW(receive(message("no GUID", "<A></A>")), std::exception);
  EXPECT_THROW(receive(message(newId(), "<A></A>", "", "no GUID")), std::exception);
  LogCapture const log;
  EXPECT_TRUE(send(message("no GUID either", "<A></A>")));
  EXPECT_TRUE(Peer(Peer::Datagram).sendTo(cPort, message(newId(), "<A></A>", "", "none")));
  CommandHandler handler;
  mController->registerCommandHandler("A", &handler);
  EXPECT_TRUE(Peer(Peer::Datagram).sendTo(cPort, message(newId(), "<A></A>")));
  EXPECT_TRUE(handler.waitFor(1)) << "on the thread that met the exception";
  EXPECT_TRUE(send(message(newId(), "<A></A>")));
  EXPECT_TRUE(handler.waitFor(2));
  EXPECT_GE(log.countContaining(PCRealDebug::Error,
                                "NetworkConnection::deliver: Message dropped, exception: "),
            1);
}

TEST_F(RemoteCommands, InAFloodAreDroppedWithALine) {
  Event inside;
  Event mayLeave;
  CommandHandler handler([&](auto const&, auto const&) {
    inside.happen();
    EXPECT_TRUE(mayLeave.wait());
    return "";
  });
  GUID const handle = mController->registerCommandHandler("A", &handler);
  mController->executeCommand("<A></A>", "", &mCallback);
  ASSERT_TRUE(inside.wait());
  std::string const body = "<B>" + std::string(1 << 20, 'x') + "</B>";
  LogCapture const log;
  int sent = 0;
  while (sent < 100 && log.count(PCRealDebug::Warning) == 0) {
    receive(message(newId(), body));
    ++sent;
  }
  EXPECT_EQ(64, sent);
  EXPECT_THAT(log,
              Logged(PCRealDebug::Warning,
                     "CommandController::onMessage: Too many commands wait, message dropped."));
  mayLeave.happen();
  settle();
  receive(message(newId(), "<B></B>"));
  EXPECT_FALSE(log.count(PCRealDebug::Warning,
                         "CommandController::onMessage: Too many commands wait, message dropped.") >
               1);
  mController->unregisterCommandHandler(handle);
}

// Threads

TEST_F(RemoteCommands, ComeAndGoOnManyThreadsAtATime) {
  Phone phone;
  CommandHandler handler([](auto const&, auto const&) { return "value"; });
  mController->registerCommandHandler("A", &handler);
  command("<A></A>", "phone", phone);
  constexpr int turns = 100;
  std::vector<std::thread> threads;
  threads.emplace_back([&] {
    for (int i = 0; i < turns; ++i) {
      receive(message(newId(), "<A></A>", phone.url()));
    }
  });
  threads.emplace_back([&] {
    for (int i = 0; i < turns; ++i) {
      receive(message(newId(), "<A></A>", "", newId()));
    }
  });
  threads.emplace_back([&] {
    for (int i = 0; i < turns; ++i) {
      CommandCallback callback;
      mController->executeCommand("<A></A>", "", &callback);
      mController->executeCommand("<A></A>", "phone", &callback);
      mController->discardCommandCallback(&callback);
    }
  });
  threads.emplace_back([&] {
    for (int i = 0; i < turns; ++i) {
      CommandHandler passing;
      mController->unregisterCommandHandler(mController->registerCommandHandler("B", &passing));
      mController->getStatistics();
    }
  });
  for (std::thread& thread : threads) {
    thread.join();
  }
  settle();
  EXPECT_GE(handler.calls().size(), static_cast<std::size_t>(2 * turns));
}

}  // namespace
