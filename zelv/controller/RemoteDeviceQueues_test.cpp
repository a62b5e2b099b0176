#include "zelv/controller/RemoteDeviceQueues.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/testing/RawDevice.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv::Controller {
namespace {

using Infrastructure::URL;
using Platform::Fake::FakeClock;
using Platform::Fake::FakeThreads;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Testing::RawDevice;

class RemoteDeviceQueuesTest : public ::testing::Test {
 protected:
  RemoteDeviceQueuesTest() { Adapter::NetworkAdapter::getInstance(); }
  ~RemoteDeviceQueuesTest() override {
    queues.reset();
    delete Adapter::NetworkAdapter::getInstance();
    FakeThreads::Reset();
  }

  /// Of a service that nobody has.
  static URL nowhere(int aPort) { return URL("tcp", "127.0.0.1", std::to_string(aPort), ""); }

  Zelv::Platform::Fake::OwnNetwork network;
  LogCapture log;
  std::unique_ptr<RemoteDeviceQueues> queues = std::make_unique<RemoteDeviceQueues>();
};

TEST_F(RemoteDeviceQueuesTest, SendToAServiceInTheOrderOfPosting) {
  RawDevice device;
  URL const url(device.url());
  for (int index = 0; index < 10; ++index) {
    EXPECT_TRUE(queues->post("text " + std::to_string(index), url, "phone"));
  }
  for (int index = 0; index < 10; ++index) {
    EXPECT_EQ(device.take(), "text " + std::to_string(index));
  }
  EXPECT_EQ(queues->size(), 1U);
}

TEST_F(RemoteDeviceQueuesTest, MakeOneForEachTextOfAUrl) {
  queues->post("a", nowhere(1), "one");
  queues->post("a", nowhere(2), "one");
  queues->post("a", nowhere(2), "two");
  EXPECT_EQ(queues->size(), 2U);
  EXPECT_EQ(log.countContaining(PCRealDebug::Error, "deviceServiceQueue launched Thread ID="), 2);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          ::testing::MatchesRegex(
                              "RemoteDataController::sendToDeviceServiceQueue: deviceServiceQueue "
                              "launched Thread ID=[0-9]+. for device: one")));
}

TEST_F(RemoteDeviceQueuesTest, SayWhenThereIsNoThreadToBeHad) {
  FakeThreads::FailNext(1);
  EXPECT_FALSE(queues->post("a", nowhere(1), "phone"));
  EXPECT_EQ(queues->size(), 0U);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "RemoteDataController::sendToDeviceServiceQueue: deviceServiceQueue "
                          "initialize failed!!!!"));
  EXPECT_TRUE(queues->post("a", nowhere(1), "phone"));
}

TEST_F(RemoteDeviceQueuesTest, LetTheOneIdleForLongestGiveWayBeyondTheBound) {
  for (std::size_t index = 0; index < RemoteDeviceQueues::cQueues; ++index) {
    queues->post("a", nowhere(static_cast<int>(index) + 1), "phone");
    FakeClock::Advance(1000);
  }
  // All of them have given up by then; the first was used again.
  ASSERT_TRUE(log.waitFor(PCRealDebug::Trace, "NetworkAdapter::send: Exit.",
                          3 * static_cast<int>(RemoteDeviceQueues::cQueues)));
  FakeClock::Advance(1000);
  queues->post("b", nowhere(1), "phone");
  EXPECT_EQ(queues->size(), RemoteDeviceQueues::cQueues);
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Warning, "gives way"));
  queues->post("a", nowhere(9999), "phone");
  EXPECT_EQ(queues->size(), RemoteDeviceQueues::cQueues);
  EXPECT_EQ(log.countContaining(PCRealDebug::Warning, "gives way"), 1);
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Warning, "'tcp://127.0.0.1:1/' gives way"));
}

TEST_F(RemoteDeviceQueuesTest, LetGoOfOneWithoutADeviceThatIsIdleForTenMinutes) {
  RawDevice device;
  queues->post("a", URL(device.url()), "");
  queues->post("a", nowhere(1), "phone");
  EXPECT_EQ(device.take(), "a");
  ASSERT_TRUE(log.waitFor(PCRealDebug::Trace, "NetworkAdapter::send: Exit.", 4));
  FakeClock::Advance(RemoteDeviceQueues::cIdleMs - 60000);
  queues->post("b", nowhere(1), "phone");
  EXPECT_EQ(queues->size(), 2U);
  // The thread notes the end of a send a little later than its line is logged.
  for (int minutes = 0; minutes < 12 && queues->size() == 2; ++minutes) {
    FakeClock::Advance(60000);
    queues->post("b", nowhere(1), "phone");
  }
  EXPECT_EQ(queues->size(), 1U);
  queues->post("b", URL(device.url()), "");
  EXPECT_EQ(device.take(), "b");
}

TEST_F(RemoteDeviceQueuesTest, LeaveWithTheirDevices) {
  queues->post("a", nowhere(1), "one");
  queues->post("a", nowhere(2), "");
  queues->post("a", nowhere(3), "two");
  log.clear();
  queues->terminateInactive({"zero", "two", "three"});
  EXPECT_EQ(queues->size(), 2U);
  EXPECT_THAT(
      log.texts(PCRealDebug::Detail),
      ::testing::ElementsAre(
          "RemoteDataController::terminateInactiveDeviceQueue: mOnlineDevIDList.size=3",
          "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'zero'",
          "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'two'",
          "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'three'",
          "RemoteDataController::terminateInactiveDeviceQueue: Device ID: 'one', not present in "
          "the updated list.",
          "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'zero'",
          "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'two'",
          "RemoteDataController::terminateInactiveDeviceQueue: Device ID: 'two', found."));
}

TEST_F(RemoteDeviceQueuesTest, LeaveAllTogether) {
  queues->post("a", nowhere(1), "one");
  queues->post("a", nowhere(2), "");
  queues->removeAll();
  EXPECT_EQ(queues->size(), 0U);
  EXPECT_EQ(log.count(PCRealDebug::Detail,
                      "RemoteDataController::removeAllRemoteDeviceService: Remote Device List "
                      "empty, remove everything."),
            2);
  EXPECT_TRUE(queues->post("a", nowhere(1), "one"));
}

TEST_F(RemoteDeviceQueuesTest, GoAlthoughTheyCouldNotBeToldTo) {
  queues = std::make_unique<RemoteDeviceQueues>([](DeviceServiceQueue&) { return false; });
  queues->post("a", nowhere(1), "one");
  queues->terminateInactive({"two"});
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "RemoteDataController::terminateInactiveDeviceQueue: Device Service "
                          "Queue termination failed."));
  queues->post("a", nowhere(1), "one");
  queues->removeAll();
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "RemoteDataController::removeAllRemoteDeviceService: Device Service "
                          "Queue termination failed."));
  queues->post("a", nowhere(1), "one");
  queues->terminate();
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error,
                     "RemoteDataController::terminate: Device Service Queue termination failed."));
  EXPECT_EQ(queues->size(), 0U);
  EXPECT_EQ(queues->getPending(), 0U);
}

TEST_F(RemoteDeviceQueuesTest, AreMadeNoMoreWhileTooManyHaveNotEnded) {
  auto const fill = [this](std::size_t aCount) {
    for (std::size_t index = 0; index < aCount; ++index) {
      EXPECT_TRUE(queues->post("a", nowhere(static_cast<int>(index) + 1), "phone"));
    }
  };
  auto const letGoWithoutAThread = [this] {
    FakeThreads::FailNext(static_cast<int>(RemoteDeviceQueues::cPending));
    queues->removeAll();
    FakeThreads::Reset();
  };
  fill(RemoteDeviceQueues::cPending - 1);
  letGoWithoutAThread();
  EXPECT_EQ(queues->getPending(), RemoteDeviceQueues::cPending - 1);
  fill(1);
  letGoWithoutAThread();
  EXPECT_EQ(queues->getPending(), RemoteDeviceQueues::cPending);
  EXPECT_FALSE(queues->post("a", nowhere(1), "phone"));
  EXPECT_EQ(queues->size(), 0U);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "RemoteDataController::sendToDeviceServiceQueue: Too many queues are "
                          "ending, no new one."));
  // They end as soon as there is a thread for it again.
  ASSERT_TRUE(log.waitFor(PCRealDebug::Trace, "QueueReaper::t_Main: Entry."));
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (queues->getPending() > 0 && std::chrono::steady_clock::now() < end) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(queues->post("a", nowhere(1), "phone"));
}

TEST_F(RemoteDeviceQueuesTest, EndWhileDevicesKeepThemWaiting) {
  // Connected by the kernel, and nobody ever reads.
  RawDevice silent[10];
  for (RawDevice& device : silent) {
    queues->post("a", URL(device.url()), "phone");
    queues->post("b", URL(device.url()), "phone");
  }
  queues->terminate();
  EXPECT_EQ(queues->size(), 0U);
  EXPECT_EQ(queues->getPending(), 0U);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "RemoteDataController::terminate: terminate all Device Service Queue."));
}

TEST_F(RemoteDeviceQueuesTest, AreMadeNoMoreAfterTheEnd) {
  queues->terminate();
  EXPECT_FALSE(queues->post("a", nowhere(1), "phone"));
  EXPECT_EQ(queues->size(), 0U);
}

}  // namespace
}  // namespace Zelv::Controller
