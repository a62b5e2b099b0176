// The data worker: its start, its end, and what gets in its way.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/DataController.h"
#include "zelv/controller/testing/Elsewhere.h"
#include "zelv/controller/testing/FakeProvider.h"
#include "zelv/controller/testing/MockRemoteDataHandler.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeThreads;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Testing::Elsewhere;
using Testing::FakeProvider;
using Testing::Heard;
using ::testing::IsEmpty;
using Testing::MockRemoteDataHandler;
using ::testing::NiceMock;
using Testing::RecordingCallback;
using ::testing::SizeIs;

class DataControllerWorkerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    inside.Create(0);
    leave.Create(0);
    controller = std::make_unique<DataController>("", nullptr);
    controller->registerDataProvider("/Zelv/A", &provider);
  }

  void TearDown() override {
    controller.reset();
    FakeThreads::Reset();
  }

  FakeProvider provider;
  RecordingCallback callback;
  RecordingCallback second;
  PCSemaphore inside;
  PCSemaphore leave;
  LogCapture log;
  std::unique_ptr<DataController> controller;
};

TEST_F(DataControllerWorkerTest, GoesOnAfterACallbackThatThrows) {
  callback.reaction = [](Heard const& aHeard) {
    if (aHeard.path == "/Zelv/A/2") {
      throw 5;
    }
    throw std::runtime_error("out of sorts");
  };
  controller->requestData("/Zelv/A/1", nullptr, &callback);
  controller->requestData("/Zelv/A/2", nullptr, &callback);
  controller->requestData("/Zelv/A/3", nullptr, &second);
  controller->initialize();
  EXPECT_TRUE(second.waitFor(1));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DataController::processTasks: Exception in a task: out of sorts"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DataController::processTasks: Unknown exception in a task."));
}

TEST_F(DataControllerWorkerTest, GoesOnAfterAProviderThatThrowsWhatIsNoException) {
  provider.get = [](std::string const& aXPath, std::string&, GUID const&) -> int {
    if (aXPath == "/Zelv/A/1") {
      throw 5;
    }
    return 0;
  };
  provider.set = [](std::string const&, std::string const&, GUID const&) -> int { throw "no"; };
  controller->requestData("/Zelv/A/1", nullptr, &callback);
  controller->setData("/Zelv/A/1", "v", &callback, false);
  controller->requestData("/Zelv/A/2", nullptr, &second);
  controller->initialize();
  EXPECT_TRUE(second.waitFor(1));
  EXPECT_EQ(callback.count(), 2U);
  EXPECT_EQ(
      log.count(PCRealDebug::Error, "DataController::processTasks: Unknown exception in a task."),
      2)
      << log.dump();
}

TEST_F(DataControllerWorkerTest, HoldsNoLockWhileATaskRuns) {
  callback.reaction = [this](Heard const&) {
    inside.Give();
    leave.Take();
  };
  controller->initialize();
  controller->requestData("/Zelv/A/1", nullptr, &callback);
  inside.Take();
  // All of these return although the worker stands still.
  GUID const id = controller->subscribeData("/Zelv/A/2", nullptr, &second);
  controller->setData("/Zelv/A/3", "v", nullptr, true);
  controller->notifyDataSubscribers("/Zelv/A/2", "new", GUID::createGUID());
  controller->unsubscribeData(id);
  controller->unregisterDataProvider("/Zelv/A");
  EXPECT_EQ(second.count(), 1U);
  leave.Give();
  controller->requestData("/Zelv/Nowhere", nullptr, &second);
  EXPECT_TRUE(second.waitFor(3));
}

TEST_F(DataControllerWorkerTest, LetsOthersQueueTasksWhileASubscriberIsTold) {
  controller->initialize();
  GUID const id = controller->subscribeData("/Zelv/A/1", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  callback.reaction = [this](Heard const&) {
    inside.Give();
    leave.Take();
  };
  {
    Elsewhere reporter(
        [this] { controller->notifyDataSubscribers("/Zelv/A/1", "new", GUID::createGUID()); });
    inside.Take();
    controller->requestData("/Zelv/A/2", nullptr, &second);
    controller->setData("/Zelv/A/3", "v", nullptr, true);
    EXPECT_TRUE(second.waitFor(1));
    leave.Give();
  }
  EXPECT_THAT(callback.heardOf(id), SizeIs(2));
}

TEST_F(DataControllerWorkerTest, WaitsForTheRunningTaskWhenItIsTerminated) {
  auto handler = std::make_unique<NiceMock<MockRemoteDataHandler>>();
  // The task ends only once the controller is well into its end.
  EXPECT_CALL(*handler, terminate()).WillOnce([this] { leave.Give(); });
  DataController own("", std::move(handler));
  std::atomic<bool> finished{false};
  provider.get = [&](std::string const&, std::string&, GUID const&) {
    inside.Give();
    leave.Take();
    for (int index = 0; index < 1000; ++index) {
      PCRealDebug::Print(PCRealDebug::Trace, "still at it");
    }
    finished = true;
    return 0;
  };
  own.registerDataProvider("/Zelv/A", &provider);
  own.initialize();
  own.requestData("/Zelv/A", nullptr, &callback);
  inside.Take();
  own.terminate();
  EXPECT_TRUE(finished);
  EXPECT_EQ(callback.count(), 1U);
}

TEST_F(DataControllerWorkerTest, DoesNotWaitForItselfWhenATaskTerminatesIt) {
  callback.reaction = [this](Heard const&) { controller->terminate(); };
  controller->requestData("/Zelv/A/1", nullptr, &callback);
  controller->requestData("/Zelv/A/2", nullptr, &second);
  controller->initialize();
  ASSERT_TRUE(callback.waitFor(1));
  controller->terminate();
  EXPECT_THAT(second.heard(), IsEmpty());
  EXPECT_EQ(controller->getQueueSize(), 1U);
}

TEST_F(DataControllerWorkerTest, RunsNothingThatIsQueuedAfterItsEnd) {
  controller->initialize();
  controller->requestData("/Zelv/A", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  controller->terminate();
  controller->requestData("/Zelv/A", nullptr, &second);
  controller->setData("/Zelv/A", "v", &second, true);
  EXPECT_EQ(controller->getQueueSize(), 2U);
  controller.reset();
  EXPECT_THAT(second.heard(), IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "DataController::~DataController: cleaning up 2 "
                          "tasks in task queue."));
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "DataController::~DataController: Destroying PCThread ID = 0."));
}

TEST_F(DataControllerWorkerTest, CanGoWithoutHavingRunOrBeenTerminated) {
  controller->requestData("/Zelv/A", nullptr, &callback);
  controller.reset();
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "DataController::~DataController: cleaning up 2 "
                          "tasks in task queue."));
}

TEST_F(DataControllerWorkerTest, CanGoWhileItsWorkerRuns) {
  controller->initialize();
  controller->requestData("/Zelv/A", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  unsigned long const id = controller->GetId();
  EXPECT_NE(id, 0U);
  controller.reset();
  EXPECT_THAT(
      log, Logged(PCRealDebug::Trace, "DataController::~DataController: Destroying PCThread ID = " +
                                          std::to_string(id) + "."));
}

TEST_F(DataControllerWorkerTest, CanBeTerminatedTwiceAndWithoutAStart) {
  controller->terminate();
  controller->terminate();
  controller->requestData("/Zelv/A", nullptr, &callback);
  EXPECT_EQ(controller->getQueueSize(), 2U);
}

TEST_F(DataControllerWorkerTest, LogsAThreadThatCannotBeMadeAndGoesOn) {
  FakeThreads::FailNext(1);
  controller->initialize();
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "CommandController::onData: Error creating a new thread"));
  controller->requestData("/Zelv/A", nullptr, &callback);
  EXPECT_EQ(controller->getQueueSize(), 2U);
}

TEST_F(DataControllerWorkerTest, TakesCallsFromManyThreads) {
  provider.set = [this](std::string const& aXPath, std::string const& aData, GUID const& aId) {
    controller->notifyDataSubscribers(aXPath, aData, aId);
    return 0;
  };
  controller->initialize();
  std::vector<std::unique_ptr<Elsewhere>> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.push_back(std::make_unique<Elsewhere>([this] {
      for (int round = 0; round < 100; ++round) {
        GUID const id = controller->subscribeData("/Zelv/A/x", nullptr, &callback);
        controller->setData("/Zelv/A/x", "v", nullptr, round % 2 == 0);
        controller->requestData("/Zelv/A/y", nullptr, &second);
        controller->notifyDataSubscribers("/Zelv/A/x", "n", GUID::nullGUID);
        controller->isLocalXPath("/Zelv/A");
        controller->getQueueSize();
        controller->unsubscribeData(id);
      }
    }));
  }
  threads.clear();
  EXPECT_TRUE(second.waitFor(400));
  // A first delivery and a direct one for each subscription at the least.
  EXPECT_TRUE(callback.waitFor(800));
}

}  // namespace
}  // namespace Zelv::Controller
