#include "zelv/platform/PCAlarm.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "zelv/platform/CTaskManager.h"
#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Testing::Event;
using Zelv::Platform::Testing::LetPass;
using Zelv::Platform::Testing::LetPassUntil;

constexpr unsigned cHour = 3600000;

/// An alarm that counts how often it goes off, and does something each time.
class CountingAlarm {
 public:
  explicit CountingAlarm(std::function<void()> aAction = [] {}) : mAction(std::move(aAction)) {}

  bool create(unsigned aTimeMs, int aRepeat) {
    return mAlarm->Create(g_TaskManager.GetApplication(DTV_APPLICATION_ZELV), aTimeMs, aRepeat);
  }
  void listen() { mAlarm->SetEventCallback(0, &CountingAlarm::onAlarm, nullptr, this); }
  void ignore() { mAlarm->SetEventCallback(0, nullptr, nullptr, this); }
  void start(unsigned aTimeMs, int aRepeat) {
    ASSERT_TRUE(create(aTimeMs, aRepeat));
    listen();
  }
  PCAlarm& alarm() { return *mAlarm; }
  void deleteAlarm() { mAlarm.reset(); }
  int count() const { return mCount; }
  void setAction(std::function<void()> aAction) { mAction = std::move(aAction); }

 private:
  static bool onAlarm(PTEvent const*, void const* aUserData) {
    auto* self = static_cast<CountingAlarm*>(const_cast<void*>(aUserData));
    ++self->mCount;
    self->mAction();
    return true;
  }

  std::function<void()> mAction;
  std::atomic<int> mCount{0};
  std::unique_ptr<PCAlarm> mAlarm = std::make_unique<PCAlarm>();
};

// Long enough for a thread that does not wait to be found out; not needed by one that does.
void yieldOften() {
  for (int i = 0; i < 1000; ++i) {
    std::this_thread::yield();
  }
}

TEST(PCAlarm, GoesOffOnceWhenToldToGoOffOnce) {
  CountingAlarm alarm;
  alarm.start(2, 1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
  LetPass(10);
  EXPECT_EQ(1, alarm.count());
}

TEST(PCAlarm, TakesARepeatOfZeroForOnce) {
  CountingAlarm alarm;
  alarm.start(2, 0);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
  LetPass(10);
  EXPECT_EQ(1, alarm.count());
}

TEST(PCAlarm, GoesOffAsOftenAsTold) {
  CountingAlarm alarm;
  alarm.start(1, 3);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 3; }));
  LetPass(10);
  EXPECT_EQ(3, alarm.count());
}

TEST(PCAlarm, GoesOnForEverWithARepeatOfMinusOne) {
  CountingAlarm alarm;
  alarm.start(1, -1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() >= 50; }));
}

TEST(PCAlarm, TakesAPeriodOfZeroForOneMillisecond) {
  CountingAlarm alarm;
  CountingAlarm other;
  alarm.start(0, -1);
  other.start(1, -1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() >= 5 && other.count() >= 5; }));
}

TEST(PCAlarm, StaysSilentUntilACallbackIsSetAndDoesNotCountThePeriodsBefore) {
  CountingAlarm alarm;
  ASSERT_TRUE(alarm.create(1, 1));
  LetPass(10);
  EXPECT_EQ(0, alarm.count());
  alarm.listen();
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
}

TEST(PCAlarm, IsSilentOnceTheCallbackIsTakenAway) {
  CountingAlarm alarm;
  alarm.start(1, -1);
  ASSERT_TRUE(LetPassUntil([&] { return alarm.count() >= 1; }));
  alarm.ignore();
  int const count = alarm.count();
  LetPass(10);
  EXPECT_EQ(count, alarm.count());
}

TEST(PCAlarm, KnowsNoOtherEventThanGoingOff) {
  CountingAlarm alarm;
  ASSERT_TRUE(alarm.create(1, -1));
  alarm.alarm().SetEventCallback(
      1, [](PTEvent const*, void const*) -> bool { throw std::logic_error("called"); }, nullptr,
      nullptr);
  LogCapture log;
  LetPass(10);
  EXPECT_EQ(0, log.count(PCRealDebug::Error)) << log.dump();
}

TEST(PCAlarm, IsSilentOnceDestroyed) {
  CountingAlarm alarm;
  alarm.start(1, -1);
  ASSERT_TRUE(LetPassUntil([&] { return alarm.count() >= 1; }));
  alarm.alarm().Destroy();
  int const count = alarm.count();
  LetPass(10);
  EXPECT_EQ(count, alarm.count());
}

TEST(PCAlarm, MayBeDestroyedTwiceAndWithoutBeingCreated) {
  PCAlarm alarm;
  alarm.Destroy();
  EXPECT_TRUE(alarm.Create(nullptr, cHour, -1));
  alarm.Destroy();
  alarm.Destroy();
  EXPECT_TRUE(alarm.Create(nullptr, cHour, -1));
}

TEST(PCAlarm, IsNotCreatedTwice) {
  PCAlarm alarm;
  EXPECT_TRUE(alarm.Create(nullptr, cHour, -1));
  EXPECT_FALSE(alarm.Create(nullptr, cHour, -1));
}

TEST(PCAlarm, CanBeCreatedAgainAfterDestroy) {
  CountingAlarm alarm;
  alarm.start(cHour, 1);
  alarm.alarm().Destroy();
  alarm.start(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
}

TEST(PCAlarm, StartsAnewWithNewValuesAfterReset) {
  CountingAlarm alarm;
  alarm.start(cHour, 1);
  alarm.alarm().Reset(1, 2);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 2; }));
  LetPass(10);
  EXPECT_EQ(2, alarm.count());
}

TEST(PCAlarm, GoesOffAgainAfterResetThoughItHadGoneOffForTheLastTime) {
  CountingAlarm alarm;
  alarm.start(1, 1);
  ASSERT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
  alarm.alarm().Reset(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 2; }));
}

TEST(PCAlarm, StaysDestroyedWhenItIsReset) {
  CountingAlarm alarm;
  alarm.start(cHour, 1);
  alarm.alarm().Destroy();
  alarm.alarm().Reset(1, -1);
  LetPass(10);
  EXPECT_EQ(0, alarm.count());
}

TEST(PCAlarm, MayBeResetWithinItsCallback) {
  CountingAlarm alarm;
  alarm.setAction([&alarm] {
    if (alarm.count() < 5) {
      alarm.alarm().Reset(1, 1);
    }
  });
  alarm.start(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 5; }));
  LetPass(10);
  EXPECT_EQ(5, alarm.count());
}

TEST(PCAlarm, MayBeDestroyedWithinItsCallback) {
  CountingAlarm alarm;
  alarm.setAction([&alarm] { alarm.alarm().Destroy(); });
  alarm.start(1, -1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
  LetPass(10);
  EXPECT_EQ(1, alarm.count());
}

TEST(PCAlarm, MayBeDeletedWithinItsCallback) {
  CountingAlarm alarm;
  alarm.setAction([&alarm] { alarm.deleteAlarm(); });
  alarm.start(1, -1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
  LetPass(10);
  EXPECT_EQ(1, alarm.count());
}

TEST(PCAlarm, MayLoseItsCallbackWithinItsCallback) {
  CountingAlarm alarm;
  alarm.setAction([&alarm] { alarm.ignore(); });
  alarm.start(1, -1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
  LetPass(10);
  EXPECT_EQ(1, alarm.count());
}

TEST(PCAlarm, MayBeDestroyedWithinTheCallbackOfAnother) {
  CountingAlarm victim;
  victim.start(cHour, -1);
  CountingAlarm alarm([&victim] { victim.alarm().Destroy(); });
  alarm.start(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
}

TEST(PCAlarm, MayBeCreatedWithinTheCallbackOfAnother) {
  CountingAlarm second;
  CountingAlarm first([&second] { second.start(1, 1); });
  first.start(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return second.count() == 1; }));
}

TEST(PCAlarm, MayBeReplacedByANewOneWithinTheCallbackOfTheLast) {
  CountingAlarm second;
  CountingAlarm first;
  first.setAction([&] {
    first.deleteAlarm();
    second.start(1, 1);
  });
  first.start(1, -1);
  EXPECT_TRUE(LetPassUntil([&] { return second.count() == 1; }));
  EXPECT_EQ(1, first.count());
}

TEST(PCAlarm, RunsTheCallbacksOfAllAlarmsOneAtATime) {
  std::atomic<int> inside{0};
  std::atomic<int> most{0};
  auto const action = [&] {
    most = std::max<int>(most, ++inside);
    std::this_thread::yield();
    --inside;
  };
  std::vector<std::unique_ptr<CountingAlarm>> alarms;
  for (int i = 0; i < 10; ++i) {
    alarms.push_back(std::make_unique<CountingAlarm>(action));
    alarms.back()->start(1, -1);
  }
  for (auto const& alarm : alarms) {
    EXPECT_TRUE(LetPassUntil([&] { return alarm->count() >= 5; }));
  }
  EXPECT_EQ(1, most);
}

TEST(PCAlarm, RunsTheCallbacksOfAllAlarmsOnOneThread) {
  std::set<std::thread::id> threads;
  auto const action = [&threads] { threads.insert(std::this_thread::get_id()); };
  CountingAlarm first(action);
  CountingAlarm second(action);
  first.start(1, 3);
  second.start(1, 3);
  EXPECT_TRUE(LetPassUntil([&] { return first.count() == 3 && second.count() == 3; }));
  first.alarm().Destroy();
  second.alarm().Destroy();
  EXPECT_EQ(1U, threads.size());
}

/// An alarm whose callback is under way on another thread and goes on only when told to.
class RunningCallback {
 public:
  RunningCallback() {
    mAlarm.setAction([this] {
      mEntered.happen();
      EXPECT_TRUE(mGoOn.wait());
      yieldOften();
      mEnded = true;
    });
    mAlarm.start(1, 1);
    mTime = std::thread([] { LetPass(5); });
    EXPECT_TRUE(mEntered.wait());
  }
  RunningCallback(RunningCallback const&) = delete;
  RunningCallback& operator=(RunningCallback const&) = delete;
  ~RunningCallback() { mTime.join(); }

  CountingAlarm& alarm() { return mAlarm; }
  void goOn() { mGoOn.happen(); }
  bool hasEnded() const { return mEnded; }

 private:
  CountingAlarm mAlarm;
  Event mEntered;
  Event mGoOn;
  std::atomic<bool> mEnded{false};
  std::thread mTime;
};

TEST(PCAlarm, WaitsInDestroyForACallbackThatRunsOnAnotherThread) {
  RunningCallback callback;
  callback.goOn();
  callback.alarm().alarm().Destroy();
  EXPECT_TRUE(callback.hasEnded());
}

TEST(PCAlarm, WaitsForARunningCallbackAlsoInASecondDestroy) {
  RunningCallback callback;
  std::thread first([&] { callback.alarm().alarm().Destroy(); });
  callback.goOn();
  callback.alarm().alarm().Destroy();
  EXPECT_TRUE(callback.hasEnded());
  first.join();
}

TEST(PCAlarm, WaitsForARunningCallbackWhenItIsTakenAway) {
  RunningCallback callback;
  callback.goOn();
  callback.alarm().ignore();
  EXPECT_TRUE(callback.hasEnded());
}

TEST(PCAlarm, DoesNotWaitForTheCallbackOfAnotherAlarm) {
  CountingAlarm other;
  other.start(cHour, 1);
  RunningCallback callback;
  other.alarm().Destroy();
  other.ignore();
  EXPECT_FALSE(callback.hasEnded());
  callback.goOn();
}

// Its own callback took the alarm out of the count of those that live, yet runs on: the last of the
// others must not wait for it.
TEST(PCAlarm, DoesNotWaitForTheCallbackOfAnAlarmThatDestroyedItself) {
  Event entered;
  Event goOn;
  CountingAlarm suicide;
  suicide.setAction([&] {
    suicide.alarm().Destroy();
    entered.happen();
    EXPECT_TRUE(goOn.wait());
  });
  suicide.start(1, 1);
  std::thread time([&] { EXPECT_TRUE(LetPassUntil([&] { return suicide.count() == 1; })); });
  EXPECT_TRUE(entered.wait());
  {
    CountingAlarm last;
    last.start(cHour, 1);
  }
  goOn.happen();
  time.join();
  suicide.alarm().Destroy();
}

TEST(PCAlarm, GoesOnAfterAnExceptionThatLeftTheCallback) {
  LogCapture log;
  CountingAlarm alarm([] { throw std::runtime_error("what a day"); });
  alarm.start(1, 2);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 2; }));
  alarm.alarm().Destroy();
  EXPECT_EQ(2,
            log.count(PCRealDebug::Error, "PCAlarm: a callback was left by exception 'what a day'"))
      << log.dump();
}

TEST(PCAlarm, GoesOnAfterAnythingElseThatLeftTheCallback) {
  LogCapture log;
  CountingAlarm alarm([] { throw 42; });
  alarm.start(1, 2);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 2; }));
  alarm.alarm().Destroy();
  EXPECT_EQ(2,
            log.count(PCRealDebug::Error, "PCAlarm: a callback was left by an unknown exception"))
      << log.dump();
}

TEST(PCAlarm, MayBeCreatedResetAndDestroyedOnManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 100; ++round) {
        CountingAlarm alarm;
        alarm.start(1, -1);
        alarm.alarm().Reset(1, 3);
        if (round % 10 == 0) {
          LetPass(1);
        }
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  CountingAlarm alarm;
  alarm.start(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return alarm.count() == 1; }));
}

}  // namespace
