#include "zelv/controller/UserController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/RecordingUserCallback.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Adapter::NetworkAdapter;
using Platform::Fake::FakeSockets;
using Platform::Fake::FakeThreads;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::ElementsAre;
using Testing::FakeCoreData;
using ::testing::IsEmpty;
using Testing::RecordingUserCallback;
using ::testing::SizeIs;

constexpr std::chrono::seconds cLongEnough(20);

char const cIdentityPath[] = "/Zelv/Devices/LocalTV/@ID";
char const cAddressPath[] = "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
char const cStarting[] =
    "UserController::onData: Starting CommandControl service on 'udp://192.0.2.7:4449/'";
char const cFull[] = "UserController::enqueueUserInput: The queue is full, dropping inputs.";

/// Commands that nobody gives.
class FakeCoreCommand : public virtual ICoreCommand {
 public:
  GUID executeCommand(std::string const&, std::string const&, IBaseCommandCallback*) override {
    return GUID::nullGUID;
  }
  void discardCommandCallback(IBaseCommandCallback*) override {}
  GUID registerCommandHandler(std::string const&, IBaseCommandHandler*) override {
    return GUID::nullGUID;
  }
  void unregisterCommandHandler(GUID const&) override {}
};

std::string inputOf(std::string const& aType, std::string const& aValue) {
  return "<OnInput><Type>" + aType + "</Type><Value>" + aValue +
         "</Value><DeviceGuid>device</DeviceGuid><UserNickname>Anna</UserNickname></OnInput>";
}

class UserControllerTest : public ::testing::Test {
 protected:
  UserControllerTest() { Platform::Fake::ResetFakes(); }
  ~UserControllerTest() override {
    controller.reset();
    delete NetworkAdapter::getInstance();
    Platform::Fake::ResetFakes();
  }

  /// No service is started by it: binding fails.
  void refuseService() { FakeSockets::FailNext(FakeSockets::Bind, EADDRINUSE, 1000); }

  void deliver(std::string const& aMessage) { controller->onMessage(aMessage, aMessage); }

  FakeCoreData::Request requestOf(std::string const& aPath) const {
    for (FakeCoreData::Request const& request : tree.requests) {
      if (request.path == aPath) {
        return request;
      }
    }
    ADD_FAILURE() << aPath << " was not asked for";
    return {};
  }

  /// What finds the tree and the commands.
  static IBase* find(GUID aInterfaceID) {
    if (aInterfaceID == IID_ICoreData) {
      return FakeCoreData::find();
    }
    static FakeCoreCommand commands;
    return aInterfaceID == IID_ICoreCommand ? &commands : nullptr;
  }
  static IBase* findTreeOnly(GUID aInterfaceID) {
    return aInterfaceID == IID_ICoreData ? FakeCoreData::find() : nullptr;
  }
  static IBase* findNothing(GUID) { return nullptr; }

  LogCapture log;
  FakeCoreData tree;
  std::unique_ptr<UserController> controller = std::make_unique<UserController>(find);
};

// Starting.

TEST_F(UserControllerTest, AsksForIdentityAndAddressOnceItsThreadRuns) {
  controller->initialize();
  ASSERT_THAT(tree.requests, SizeIs(2));
  EXPECT_EQ(tree.requests[0].path, cIdentityPath);
  EXPECT_EQ(tree.requests[1].path, cAddressPath);
  for (FakeCoreData::Request const& request : tree.requests) {
    EXPECT_EQ(request.context, nullptr);
    EXPECT_EQ(request.callback, controller.get());
  }
  EXPECT_NE(controller->GetId(), 0U);
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
}

TEST_F(UserControllerTest, StopsItsStartWithoutATree) {
  controller = std::make_unique<UserController>(findNothing);
  controller->initialize();
  EXPECT_THAT(tree.requests, IsEmpty());
  EXPECT_THAT(log.texts(PCRealDebug::Error),
              ElementsAre("UserController::initialize: Failed to obtain ICoreData interface."));
}

TEST_F(UserControllerTest, AsksTheTreeThoughThereAreNoCommands) {
  controller = std::make_unique<UserController>(findTreeOnly);
  controller->initialize();
  EXPECT_THAT(tree.requests, SizeIs(2));
  EXPECT_THAT(log.texts(PCRealDebug::Error),
              ElementsAre("TVControl::initialize: Failed to obtain mCoreCommand interface."));
}

TEST_F(UserControllerTest, GoesOnWithoutAThread) {
  FakeThreads::FailNext(1);
  controller->initialize();
  EXPECT_THAT(tree.requests, SizeIs(2));
  EXPECT_THAT(log.texts(PCRealDebug::Error),
              ElementsAre("UserController::onData: Error creating a new thread"));
  deliver(inputOf("Key", "Left"));
  EXPECT_EQ(controller->getQueueSize(), 1U);
}

TEST_F(UserControllerTest, StartsItsServiceWhenTheAddressArrives) {
  refuseService();
  controller->initialize();
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Bind), 0);
  tree.answer(requestOf(cAddressPath), "192.0.2.7");
  EXPECT_THAT(log, Logged(PCRealDebug::Trace, "UserController::onData: Local IP='192.0.2.7'"));
  EXPECT_THAT(log.texts(PCRealDebug::Notable), ::testing::Contains(cStarting));
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Bind), 1);
}

TEST_F(UserControllerTest, TakesNoNoticeOfAServiceThatCannotBeHad) {
  refuseService();
  controller->initialize();
  EXPECT_NO_THROW(tree.answer(requestOf(cAddressPath), "192.0.2.7"));
  RecordingUserCallback callback;
  controller->subscribeUser("Key", &callback);
  deliver(inputOf("Key", "Left"));
  EXPECT_TRUE(callback.waitFor(1));
}

TEST_F(UserControllerTest, StartsNoServiceForTheIdentityNorForAStrangersAnswer) {
  controller->initialize();
  tree.answer(requestOf(cIdentityPath), "6ba7b810-9dad-11d1-80b4-00c04fd430c8");
  controller->onData(cAddressPath, "192.0.2.7", nullptr, GUID::createGUID());
  controller->onData(cAddressPath, "192.0.2.7", nullptr, GUID::nullGUID);
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Open), 0);
}

// Answers that are there before the request has returned.

TEST_F(UserControllerTest, HoldsBackAnswersThatComeBeforeTheirIds) {
  refuseService();
  tree.reaction = [this](FakeCoreData::Request const& aRequest) {
    tree.answer(aRequest, "192.0.2.7");
    EXPECT_EQ(FakeSockets::Count(FakeSockets::Open), 0);
  };
  controller->initialize();
  EXPECT_EQ(log.count(PCRealDebug::Notable, cStarting), 1) << log.dump();
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Bind), 1);
}

TEST_F(UserControllerTest, HoldsBackAnswersFromAnotherThread) {
  refuseService();
  tree.reaction = [this](FakeCoreData::Request const& aRequest) {
    std::jthread([&] { tree.answer(aRequest, "192.0.2.7"); }).join();
  };
  controller->initialize();
  EXPECT_EQ(log.count(PCRealDebug::Notable, cStarting), 1) << log.dump();
}

TEST_F(UserControllerTest, HoldsBackNothingThatIsNotItsOwn) {
  tree.reaction = [this](FakeCoreData::Request const&) {
    controller->onData(cAddressPath, "192.0.2.7", nullptr, GUID::createGUID());
  };
  controller->initialize();
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Open), 0);
}

// Messages.

TEST(UserControllerMessage, IsWhatStandsInTheBody) {
  struct Case {
    std::string message;
    std::string input;
  };
  std::vector<Case> const cases = {
      {"<Envelope><Header></Header><Body><OnInput/></Body></Envelope>\n", "<OnInput/>"},
      {"<Body></Body>", ""},
      {"<Body>a</Body>b</Body>", "a"},
      {"<Body>a<Body>b</Body>", "a<Body>b"},
      // Without both marks, or where nothing stands between them, the whole text.
      {"<OnInput/>\n", "<OnInput/>\n"},
      {"", ""},
      {"<Body><OnInput/>", "<Body><OnInput/>"},
      {"<OnInput/></Body>", "<OnInput/></Body>"},
      {"</Body><OnInput/><Body>", "</Body><OnInput/><Body>"},
      {"</Body><Body>a</Body>", "</Body><Body>a</Body>"},
      {"<body>a</body>", "<body>a</body>"},
      {"<Body x='1'>a</Body>", "<Body x='1'>a</Body>"},
      // Up to the first NUL.
      {std::string("<OnInput/>\0<Body>a</Body>", 25), "<OnInput/>"},
      {std::string("<Body>a</Body>\0</Body>", 22), "a"},
      {std::string("\0<OnInput/>", 11), ""},
  };
  for (Case const& one : cases) {
    EXPECT_EQ(UserController::getMessage(one.message), one.input) << one.message;
  }
}

TEST_F(UserControllerTest, DeliversAnEventOnItsThread) {
  std::thread::id thread;
  RecordingUserCallback callback(
      [&](Testing::HeardInput const&) { thread = std::this_thread::get_id(); });
  GUID const id = controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver("<Envelope><Header></Header><Body>" + inputOf("Key", "Left") + "</Body></Envelope>\n");
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_THAT(callback.heard(),
              ElementsAre(Testing::HeardInput{"Key", "Left", "device", "Anna", id}));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Detail,
                  "UserController::onMessage: The stripped input is: " + inputOf("Key", "Left")));
  controller->terminate();
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(UserControllerTest, TakesABareDocumentWithItsLineFeed) {
  RecordingUserCallback callback;
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver(inputOf("Key", "<A>1</A><B/>") + "\n");
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_EQ(callback.heard()[0].value, "<A>1</A>&#x13;<B/>");
}

TEST_F(UserControllerTest, DeliversIdenticalMessagesEachAndAllInOrder) {
  RecordingUserCallback callback;
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  for (char const* value : {"1", "2", "2", "3"}) {
    deliver(inputOf("Key", value));
  }
  ASSERT_TRUE(callback.waitFor(4));
  EXPECT_THAT(callback.values(), ElementsAre("1", "2", "2", "3"));
}

TEST_F(UserControllerTest, GivesWhatItCannotReadToTheSubscribersOfTheEmptyType) {
  RecordingUserCallback callback;
  RecordingUserCallback keys;
  GUID const id = controller->subscribeUser("", &callback);
  controller->subscribeUser("Key", &keys);
  controller->initialize();
  deliver("no XML\n");
  deliver("<OnInput><Type>Key</Type><Value>Left</Value><DeviceGuid>d</DeviceGuid></OnInput>\n");
  ASSERT_TRUE(callback.waitFor(2));
  Testing::HeardInput const empty{"", "", "", "", id};
  EXPECT_THAT(callback.heard(), ElementsAre(empty, empty));
  EXPECT_EQ(keys.count(), 0U);
  EXPECT_EQ(log.count(PCRealDebug::Error, "UserInput::UserInput: Error in parsing user inputs."), 2)
      << log.dump();
}

TEST_F(UserControllerTest, LetsATypeThatNobodyWantsPassInSilence) {
  RecordingUserCallback callback;
  controller->subscribeUser("Text", &callback);
  controller->initialize();
  deliver(inputOf("Key", "Left"));
  deliver(inputOf("Text", "a"));
  ASSERT_TRUE(callback.waitFor(1));
  for (unsigned long const level : {PCRealDebug::Error, PCRealDebug::Warning}) {
    EXPECT_EQ(log.count(level), 0) << log.dump();
  }
}

TEST_F(UserControllerTest, GoesOnAfterASubscriberHasThrown) {
  RecordingUserCallback callback([](Testing::HeardInput const&) { throw 1; });
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver(inputOf("Key", "1"));
  deliver(inputOf("Key", "2"));
  EXPECT_TRUE(callback.waitFor(2));
  controller.reset();
}

TEST_F(UserControllerTest, TellsNobodyWhoHasUnsubscribed) {
  RecordingUserCallback callback;
  RecordingUserCallback other;
  GUID const id = controller->subscribeUser("Key", &callback);
  controller->subscribeUser("Key", &other);
  controller->initialize();
  controller->unsubscribeUser(id);
  deliver(inputOf("Key", "1"));
  ASSERT_TRUE(other.waitFor(1));
  EXPECT_EQ(callback.count(), 0U);
  controller->unsubscribeUser(id);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "UserInputSubscriptionManager::removeSubscription: Subscription not "
                          "found!"));
}

TEST_F(UserControllerTest, LetsASubscriberSubscribeAndUnsubscribe) {
  RecordingUserCallback later;
  GUID id;
  RecordingUserCallback callback([&](Testing::HeardInput const& aInput) {
    controller->subscribeUser("Key", &later);
    controller->unsubscribeUser(aInput.id);
  });
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver(inputOf("Key", "1"));
  deliver(inputOf("Key", "2"));
  deliver(inputOf("Key", "3"));
  ASSERT_TRUE(later.waitFor(2));
  EXPECT_THAT(callback.values(), ElementsAre("1"));
  EXPECT_THAT(later.values(), ElementsAre("2", "3"));
}

// The lock guards the queue and the answers; a subscriber may wait for threads that need it.
TEST_F(UserControllerTest, LeavesEverythingFreeWhileASubscriberIsTold) {
  refuseService();
  RecordingUserCallback other;
  RecordingUserCallback callback([&](Testing::HeardInput const&) {
    std::jthread([&] {
      controller->unsubscribeUser(controller->subscribeUser("Text", &other));
      deliver(inputOf("Other", "2"));
      tree.answer(requestOf(cAddressPath), "192.0.2.7");
    }).join();
  });
  GUID const id = controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver(inputOf("Key", "1"));
  ASSERT_TRUE(callback.waitFor(1));
  controller->unsubscribeUser(id);
  EXPECT_THAT(log, Logged(PCRealDebug::Notable, cStarting));
}

// The queue.

TEST_F(UserControllerTest, KeepsTheQueueInOrderAndCountsIt) {
  EXPECT_EQ(controller->dequeueUserInput(), nullptr);
  controller->enqueueUserInput(new UserInput("Key", "1", "", ""));
  controller->enqueueUserInput(new UserInput("Key", "2", "", ""));
  EXPECT_EQ(controller->getQueueSize(), 2U);
  std::unique_ptr<UserInput> const first(controller->dequeueUserInput());
  std::unique_ptr<UserInput> const second(controller->dequeueUserInput());
  EXPECT_EQ(first->getValue(), "1");
  EXPECT_EQ(second->getValue(), "2");
  EXPECT_EQ(controller->getQueueSize(), 0U);
  EXPECT_EQ(controller->dequeueUserInput(), nullptr);
}

TEST_F(UserControllerTest, QueuesNoInputThatIsNull) {
  controller->enqueueUserInput(nullptr);
  EXPECT_EQ(controller->getQueueSize(), 0U);
  EXPECT_THAT(log.texts(PCRealDebug::Error),
              ElementsAre("UserController::onMessage: User input is NULL!n"));
}

class FullQueue : public UserControllerTest {
 protected:
  FullQueue() {
    PCRealDebug::SetLevel(PCRealDebug::Warning);
    enqueue(UserController::cMaxInputs);
  }

  void enqueue(std::size_t aCount) {
    for (std::size_t i = 0; i < aCount; ++i) {
      controller->enqueueUserInput(new UserInput("Key", std::to_string(mNext++), "", ""));
    }
  }

  std::string take() {
    std::unique_ptr<UserInput> const input(controller->dequeueUserInput());
    return input ? input->getValue() : "none";
  }

  std::vector<std::string> warnings() const { return log.texts(PCRealDebug::Warning); }

 private:
  int mNext = 0;
};

TEST_F(FullQueue, HoldsAsManyAsTheLimit) {
  EXPECT_EQ(UserController::cMaxInputs, 4096U);
  EXPECT_EQ(controller->getQueueSize(), 4096U);
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(FullQueue, DropsWhatComesOnTopWithALine) {
  enqueue(1);
  EXPECT_EQ(controller->getQueueSize(), 4096U);
  EXPECT_THAT(warnings(), ElementsAre(cFull));
  for (int i = 0; i < 4096; ++i) {
    ASSERT_EQ(take(), std::to_string(i));
  }
  EXPECT_EQ(take(), "none");
}

TEST_F(FullQueue, TellsOfAFloodOnceAndOfItsSizeWhenItHasDrained) {
  enqueue(1000);
  for (int i = 0; i < 2047; ++i) {
    take();
  }
  EXPECT_THAT(warnings(), ElementsAre(cFull));
  take();
  EXPECT_THAT(warnings(), ElementsAre(cFull,
                                      "UserController::dequeueUserInput: 1000 inputs were "
                                      "dropped."));
  enqueue(2048);
  EXPECT_EQ(controller->getQueueSize(), 4096U);
  EXPECT_THAT(warnings(), SizeIs(2));
  enqueue(1);
  EXPECT_THAT(warnings(), SizeIs(3));
}

TEST_F(FullQueue, ServesOnOnceThereIsRoom) {
  enqueue(10);
  RecordingUserCallback callback;
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  ASSERT_TRUE(callback.waitFor(4096));
  deliver(inputOf("Key", "later"));
  ASSERT_TRUE(callback.waitFor(4097));
  EXPECT_EQ(callback.values().back(), "later");
}

// Stopping.

TEST_F(UserControllerTest, DeliversNothingThatIsQueuedAtTheEnd) {
  RecordingUserCallback callback;
  controller->subscribeUser("Key", &callback);
  deliver(inputOf("Key", "1"));
  deliver(inputOf("Key", "2"));
  controller->terminate();
  // Comes back at once, though there is input.
  controller->processUserInputs();
  EXPECT_EQ(callback.count(), 0U);
  EXPECT_EQ(controller->getQueueSize(), 2U);
}

TEST_F(UserControllerTest, LeavesTheRestWhenASubscriberEndsIt) {
  std::binary_semaphore queued{0};
  std::binary_semaphore ended{0};
  RecordingUserCallback callback([&](Testing::HeardInput const&) {
    queued.try_acquire_for(cLongEnough);
    controller->terminate();
    ended.release();
  });
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver(inputOf("Key", "1"));
  deliver(inputOf("Key", "2"));
  queued.release();
  EXPECT_TRUE(ended.try_acquire_for(cLongEnough));
  controller.reset();
  EXPECT_THAT(callback.values(), ElementsAre("1"));
}

TEST_F(UserControllerTest, WaitsAtTheEndForASubscriberThatIsBeingTold) {
  bool finished = false;
  std::binary_semaphore entered{0};
  std::binary_semaphore go{0};
  RecordingUserCallback callback([&](Testing::HeardInput const&) {
    entered.release();
    go.try_acquire_for(cLongEnough);
    finished = true;
  });
  controller->subscribeUser("Key", &callback);
  controller->initialize();
  deliver(inputOf("Key", "1"));
  ASSERT_TRUE(entered.try_acquire_for(cLongEnough));
  std::jthread const opener([&] {
    log.waitFor(PCRealDebug::Trace, "UserController::terminate: Entry.");
    go.release();
  });
  controller->terminate();
  EXPECT_TRUE(finished);
}

TEST_F(UserControllerTest, StartsNoServiceOnceItHasEnded) {
  controller->initialize();
  controller->terminate();
  tree.answer(requestOf(cAddressPath), "192.0.2.7");
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Open), 0);
}

TEST_F(UserControllerTest, TakesBackAServiceThatItNeverHad) {
  controller->terminate();
  EXPECT_THAT(log.texts(PCRealDebug::Warning),
              ElementsAre("NetworkAdapter::unregisterService: Registration not found!"));
}

TEST_F(UserControllerTest, EndsItsThreadWhenItGoes) {
  controller->initialize();
  int const id = static_cast<int>(controller->GetId());
  controller.reset();
  EXPECT_THAT(
      log, Logged(PCRealDebug::Trace, "UserController::~UserController: Destroying PCThread ID = " +
                                          std::to_string(id) + "."));
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
}

TEST_F(UserControllerTest, LogsAStatusAndNothingOfAReturn) {
  controller->onStatus(StatusInformation(std::exception()), GUID::nullGUID);
  EXPECT_THAT(log, Logged(PCRealDebug::Trace, "UserController::onStatus: Entry."));
  log.clear();
  controller->onReturn("value", GUID::nullGUID);
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
}  // namespace Zelv::Controller
