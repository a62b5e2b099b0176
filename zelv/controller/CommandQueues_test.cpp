#include "zelv/controller/CommandQueues.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/testing/Phone.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace {

using testing::ElementsAre;
using Zelv::Adapter::NetworkAdapter;
using Zelv::Controller::CommandQueues;
using Zelv::Controller::DeviceServiceQueue;
using Zelv::Controller::Testing::Phone;
using Zelv::Infrastructure::URL;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;
using Zelv::Platform::Fake::ResetFakes;

class Queues : public testing::Test {
 protected:
  Queues() : mAdapter(NetworkAdapter::getInstance()) { ResetFakes(); }
  ~Queues() override {
    mQueues.removeAll();
    mQueues.drain();
    ResetFakes();
  }

  static std::unique_ptr<DeviceServiceQueue> queueTo(Phone const& aPhone) {
    auto queue = std::make_unique<DeviceServiceQueue>();
    EXPECT_TRUE(queue->initialize(URL(aPhone.url()), ""));
    return queue;
  }

  std::vector<std::string> devices() const {
    std::vector<std::string> devices;
    for (auto const& state : mQueues.states()) {
      devices.push_back(state.mDeviceId);
    }
    return devices;
  }

  /// Waits, bounded, until no queue has anything to do.
  bool allSent() const {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (;;) {
      auto const states = mQueues.states();
      if (std::all_of(states.begin(), states.end(),
                      [](auto const& aState) { return aState.mCounters.sent > 0; })) {
        return true;
      }
      if (std::chrono::steady_clock::now() > end) {
        return false;
      }
      std::this_thread::yield();
    }
  }

  Zelv::Platform::Fake::OwnNetwork mNetwork;
  std::unique_ptr<NetworkAdapter> mAdapter;
  Phone mPhone;
  CommandQueues mQueues;
};

TEST_F(Queues, TakeTextsOnlyForDevicesThatHaveOne) {
  EXPECT_FALSE(mQueues.has("a"));
  EXPECT_FALSE(mQueues.post("a", "text"));
  mQueues.add("a", queueTo(mPhone), "first");
  EXPECT_TRUE(mQueues.has("a"));
  EXPECT_TRUE(mQueues.post("a", "second"));
  ASSERT_TRUE(mPhone.waitFor(2));
  EXPECT_THAT(mPhone.texts(), ElementsAre("first\n", "second\n"));
}

TEST_F(Queues, ReplaceTheOneOfTheSameDevice) {
  Phone silent(Phone::KeepsSilent);
  mQueues.add("a", queueTo(silent), "lost");
  ASSERT_TRUE(silent.waitFor(1));
  mQueues.add("a", queueTo(mPhone), "text");
  ASSERT_TRUE(mPhone.waitFor(1));
  EXPECT_THAT(devices(), ElementsAre("a"));
}

TEST_F(Queues, LetThoseOfOtherDevicesGo) {
  for (char const* device : {"a", "b", "c", "d"}) {
    mQueues.add(device, queueTo(mPhone), "text");
  }
  std::vector<std::string> gone;
  mQueues.keepOnly({"b", "d", "e"}, [&](std::string const& aId) { gone.push_back(aId); });
  EXPECT_THAT(gone, ElementsAre("a", "c"));
  EXPECT_THAT(devices(), ElementsAre("b", "d"));
  mQueues.removeAll();
  EXPECT_THAT(devices(), ElementsAre());
}

TEST_F(Queues, GoAlthoughTheyCouldNotBeToldTo) {
  CommandQueues queues([](DeviceServiceQueue&) { return false; });
  queues.add("a", queueTo(mPhone), "text");
  LogCapture const log;
  queues.removeAll();
  queues.drain();
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "CommandController::terminate: Device Service Queue termination "
                          "failed."));
  EXPECT_FALSE(queues.has("a"));
}

TEST_F(Queues, LetTheLongestIdleGiveWayToOneTooMany) {
  for (std::size_t i = 0; i < CommandQueues::MaxQueues; ++i) {
    mQueues.add(std::to_string(i), queueTo(mPhone), "text");
  }
  ASSERT_TRUE(allSent());
  EXPECT_EQ(CommandQueues::MaxQueues, devices().size());
  Zelv::Platform::Fake::FakeClock::Advance(1000);
  for (std::size_t i = 0; i < CommandQueues::MaxQueues; ++i) {
    if (i != 77) {
      mQueues.post(std::to_string(i), "text");
    }
  }
  LogCapture const log;
  mQueues.add("new", queueTo(mPhone), "text");
  EXPECT_EQ(CommandQueues::MaxQueues, devices().size());
  EXPECT_FALSE(mQueues.has("77"));
  EXPECT_TRUE(mQueues.has("new"));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "CommandQueues::makeRoom: Too many queues, removed that of device "
                          "'77'."));
}

TEST_F(Queues, DoNotWaitForASendWhenTheyGo) {
  std::vector<std::unique_ptr<Phone>> silent;
  for (int i = 0; i < 10; ++i) {
    silent.push_back(std::make_unique<Phone>(Phone::KeepsSilent));
    mQueues.add(std::to_string(i), queueTo(*silent.back()), "text");
    ASSERT_TRUE(silent.back()->waitFor(1));
  }
  // Each would be waited for 9 seconds.
  auto const start = std::chrono::steady_clock::now();
  mQueues.removeAll();
  mQueues.drain();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(45));
}

}  // namespace
