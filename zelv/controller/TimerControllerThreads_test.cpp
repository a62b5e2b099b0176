// The timers with several threads in them at once. The thread that advances the clock is the alarm
// thread meanwhile.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/controller/TimerController.h"
#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeAlarm;
using Platform::Fake::FakeClock;
using Platform::Fake::LogCapture;

constexpr std::chrono::seconds cLongEnough(20);

/// A callback that waits for the test in the middle of its run.
class GatedCallback : public IBaseTimerCallback {
 public:
  void onTimer(std::string const&, GUID aTimerID) override {
    entered.release();
    if (!go.try_acquire_for(cLongEnough)) {
      return;
    }
    if (last) {
      last(aTimerID);
    }
    finished = true;
  }

  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override {
    EXPECT_EQ(aStatus.getStatusText(), "");
    statusId = aTransactionID;
    ++statuses;
  }

  std::counting_semaphore<> entered{0};
  std::counting_semaphore<> go{0};
  std::function<void(GUID const&)> last;
  std::atomic<bool> finished{false};
  std::atomic<int> statuses{0};
  GUID statusId;
};

class TimerControllerThreads : public ::testing::Test {
 protected:
  ~TimerControllerThreads() override { Platform::Fake::ResetFakes(); }

  /// Lets the callback run on a thread of its own and comes back while it runs.
  std::jthread goOff() {
    std::jthread alarm([] { FakeClock::Advance(10); });
    EXPECT_TRUE(mCallback.entered.try_acquire_for(cLongEnough));
    return alarm;
  }

  /// Destroys the timer on a thread of its own and comes back once that is under way.
  std::jthread destroyElsewhere(GUID const& aId, std::function<void()> aBehind) {
    int const before = mLog.count(PCRealDebug::Trace, "TimerController::destroyTimer: Entry.");
    std::jthread destroyer([this, aId, behind = std::move(aBehind)] {
      mController.destroyTimer(aId, &mCallback);
      behind();
    });
    EXPECT_TRUE(
        mLog.waitFor(PCRealDebug::Trace, "TimerController::destroyTimer: Entry.", before + 1));
    return destroyer;
  }

  LogCapture mLog;
  GatedCallback mCallback;
  TimerController mController;
};

TEST_F(TimerControllerThreads, DestroyOnAnotherThreadReturnsWhenTheCallbackIsDone) {
  GUID const id = mController.createTimer(10, -1, "t", &mCallback);
  std::jthread alarm = goOff();
  bool finishedBefore = false;
  std::jthread destroyer =
      destroyElsewhere(id, [&] { finishedBefore = mCallback.finished.load(); });
  mCallback.go.release();
  destroyer.join();
  alarm.join();
  EXPECT_TRUE(finishedBefore);
  EXPECT_EQ(FakeAlarm::Created(), 0);
  EXPECT_EQ(mCallback.statuses, 0);
  FakeClock::Advance(100);
}

// The callback may be waiting for the lock under which the delivery of the tree runs.
TEST_F(TimerControllerThreads, DestroyInsideADeliveryOfTheTreeWaitsForNobody) {
  GUID const id = mController.createTimer(10, -1, "t", &mCallback);
  std::jthread alarm = goOff();
  {
    InsideDelivery const delivery;
    mController.destroyTimer(id, &mCallback);
  }
  EXPECT_FALSE(mCallback.finished);
  EXPECT_EQ(FakeAlarm::Created(), 1);
  mCallback.go.release();
  alarm.join();
  EXPECT_TRUE(mCallback.finished);
  EXPECT_EQ(FakeAlarm::Created(), 0);
  EXPECT_EQ(mCallback.statuses, 0);
  FakeClock::Advance(100);
}

TEST_F(TimerControllerThreads, TableIsFreeWhileACallbackRuns) {
  GUID const id = mController.createTimer(10, -1, "t", &mCallback);
  std::jthread alarm = goOff();
  GUID const other = mController.createTimer(1000, -1, "other", nullptr);
  mController.resetTimer(other, 500, -1);
  mController.resetTimer(id, 500, -1);
  mController.destroyTimer(other, nullptr);
  mController.destroyTimer(GUID::createGUID(), &mCallback);
  EXPECT_FALSE(mCallback.finished);
  mCallback.go.release();
  alarm.join();
  EXPECT_EQ(mCallback.statuses, 1);
  EXPECT_EQ(FakeAlarm::Created(), 1);
}

TEST_F(TimerControllerThreads, DestroyThatWaitedForACallbackWhichDestroyedItselfHearsSo) {
  GUID const id = mController.createTimer(10, -1, "t", &mCallback);
  mCallback.last = [this](GUID const& aId) { mController.destroyTimer(aId, nullptr); };
  std::jthread alarm = goOff();
  std::jthread destroyer = destroyElsewhere(id, [] {});
  mCallback.go.release();
  destroyer.join();
  alarm.join();
  EXPECT_EQ(mCallback.statuses, 1);
  EXPECT_EQ(mCallback.statusId, id);
  EXPECT_EQ(FakeAlarm::Created(), 0);
}

TEST_F(TimerControllerThreads, OfManyThatDestroyOneRunningTimerOneSucceeds) {
  constexpr int cThreads = 8;
  GUID const id = mController.createTimer(10, -1, "t", &mCallback);
  std::jthread alarm = goOff();
  std::vector<std::jthread> destroyers;
  destroyers.reserve(cThreads);
  for (int i = 0; i < cThreads; ++i) {
    destroyers.emplace_back([&] { mController.destroyTimer(id, nullptr); });
  }
  EXPECT_TRUE(mLog.waitFor(PCRealDebug::Trace, "TimerController::destroyTimer: Entry.", cThreads));
  mCallback.go.release();
  destroyers.clear();
  alarm.join();
  std::string const prefix = "TimerController::destroyTimer: Timer '" + id.toString();
  EXPECT_EQ(mLog.count(PCRealDebug::Detail, prefix + "' deleted."), 1);
  EXPECT_EQ(mLog.count(PCRealDebug::Warning, prefix + "' not found."), cThreads - 1);
  EXPECT_EQ(FakeAlarm::Created(), 0);
}

TEST_F(TimerControllerThreads, LockHeldByOneWhoCreatesMayBeTakenByACallback) {
  PCMutex shared;
  mController.createTimer(10, -1, "t", &mCallback);
  mCallback.last = [&](GUID const&) {
    shared.Lock();
    shared.Unlock();
  };
  shared.Lock();
  std::jthread alarm = goOff();
  mCallback.go.release();
  GUID const other = mController.createTimer(1000, -1, "other", nullptr);
  mController.resetTimer(other, 10, -1);
  EXPECT_FALSE(mCallback.finished);
  shared.Unlock();
  alarm.join();
  EXPECT_TRUE(mCallback.finished);
}

TEST_F(TimerControllerThreads, EndWaitsForARunningCallback) {
  auto controller = std::make_unique<TimerController>();
  controller->createTimer(10, -1, "t", &mCallback);
  std::jthread alarm = goOff();
  bool finishedBefore = false;
  std::jthread ender([&] {
    controller.reset();
    finishedBefore = mCallback.finished.load();
  });
  EXPECT_TRUE(mLog.waitFor(PCRealDebug::Trace, "TimerController::~TimerController: Entry."));
  mCallback.go.release();
  ender.join();
  alarm.join();
  EXPECT_TRUE(finishedBefore);
  EXPECT_EQ(FakeAlarm::Created(), 0);
}

/// Finds calls that come after its timer was destroyed.
class WatchfulCallback : public IBaseTimerCallback {
 public:
  void onTimer(std::string const&, GUID) override {
    ++calls;
    if (gone) {
      ++late;
    }
  }
  void onStatus(StatusInformation const&, GUID const&) override { ++late; }

  std::atomic<bool> gone{false};
  std::atomic<int> calls{0};
  std::atomic<int> late{0};
};

TEST(TimerControllerStress, NoCallbackComesAfterItsTimerWasDestroyed) {
  constexpr int cThreads = 4;
  constexpr int cRounds = 300;
  LogCapture const log;
  TimerController controller;
  std::atomic<int> late{0};
  std::atomic<int> running{cThreads};
  std::vector<std::jthread> threads;
  threads.reserve(cThreads);
  for (int i = 0; i < cThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < cRounds; ++round) {
        WatchfulCallback callback;
        GUID const id = controller.createTimer(1, -1, "t", &callback);
        controller.resetTimer(id, round % 3, -1);
        // Every other timer is destroyed about when it goes off, the rest mostly before.
        while (round % 2 == 0 && callback.calls == 0) {
          std::this_thread::yield();
        }
        controller.destroyTimer(id, &callback);
        callback.gone = true;
        late += callback.late;
      }
      --running;
    });
  }
  while (running > 0) {
    FakeClock::Advance(1);
  }
  threads.clear();
  EXPECT_EQ(late, 0);
  EXPECT_EQ(FakeAlarm::Created(), 0);
}

}  // namespace
}  // namespace Zelv::Controller
