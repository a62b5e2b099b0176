#include "zelv/platform/fake/FakeClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/platform/PCAlarm.h"
#include "zelv/platform/PCTime.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelv::Platform::Fake::FakeClock;

class FakeClockTest : public ::testing::Test {
 protected:
  struct Alarm {
    std::function<void()> action;
    PCAlarm alarm;
  };

  FakeClockTest() { FakeClock::Reset(); }
  ~FakeClockTest() override { FakeClock::Reset(); }

  std::int64_t now() const { return FakeClock::MonotonicMs() - mStart; }

  // Each time it goes off, it writes its name and the time.
  PCAlarm& add(
      std::string const& aName, unsigned aTimeMs, int aRepeat,
      std::function<void()> const& aAction = [] {}) {
    mAlarms.push_back(std::make_unique<Alarm>());
    Alarm& alarm = *mAlarms.back();
    alarm.action = [this, aName, aAction] {
      mLog.push_back(aName + '@' + std::to_string(now()));
      aAction();
    };
    EXPECT_TRUE(alarm.alarm.Create(nullptr, aTimeMs, aRepeat));
    alarm.alarm.SetEventCallback(
        0,
        [](PTEvent const*, void const* aUserData) {
          static_cast<Alarm const*>(aUserData)->action();
          return true;
        },
        nullptr, &alarm);
    return alarm.alarm;
  }

  std::int64_t const mStart = FakeClock::MonotonicMs();
  std::vector<std::unique_ptr<Alarm>> mAlarms;
  std::vector<std::string> mLog;
};

TEST_F(FakeClockTest, StandsStillByItself) {
  std::int64_t const epoch = PCTime::EpochTime();
  EXPECT_EQ(FakeClock::cStartWall, epoch);
  EXPECT_EQ(0, now());
  EXPECT_EQ(epoch, PCTime::EpochTime());
}

TEST_F(FakeClockTest, AdvancesBothClocks) {
  FakeClock::Advance(2500);
  EXPECT_EQ(2500, now());
  EXPECT_EQ(FakeClock::cStartWall + 2, PCTime::EpochTime());
  EXPECT_EQ(FakeClock::cStartWall * 1000 + 2500, FakeClock::WallMs());
  EXPECT_EQ(FakeClock::MonotonicMs(), PCTime::MonotonicMs());
}

TEST_F(FakeClockTest, AdvancesWhenSomebodySleeps) {
  PCTime::Sleep(3000);
  EXPECT_EQ(3000, now());
  EXPECT_EQ(FakeClock::cStartWall + 3, PCTime::EpochTime());
}

TEST_F(FakeClockTest, LetsTheWallClockJumpAlone) {
  FakeClock::SetWall(1000);
  EXPECT_EQ(1000, PCTime::EpochTime());
  EXPECT_EQ(0, now());
  FakeClock::Advance(1000);
  EXPECT_EQ(1001, PCTime::EpochTime());
  FakeClock::SetWall(-5);
  EXPECT_EQ(-5, PCTime::EpochTime());
  FakeClock::Advance(500);
  EXPECT_EQ(-5, PCTime::EpochTime());
}

TEST_F(FakeClockTest, StepsFromDeadlineToDeadline) {
  add("a", 30, 1);
  add("b", 10, 2);
  add("c", 20, 1);
  FakeClock::Advance(100);
  EXPECT_THAT(mLog, ElementsAre("b@10", "c@20", "b@20", "a@30"));
  EXPECT_EQ(100, now());
}

TEST_F(FakeClockTest, RunsAlarmsOfOneDeadlineInTheOrderInWhichTheyWereSet) {
  add("a", 10, 1);
  add("b", 10, 1);
  add("c", 5, 2);
  FakeClock::Advance(10);
  EXPECT_THAT(mLog, ElementsAre("c@5", "a@10", "b@10", "c@10"));
}

TEST_F(FakeClockTest, RunsWhatIsDueAtTheVeryEndAndNothingLater) {
  add("a", 10, -1);
  FakeClock::Advance(9);
  EXPECT_THAT(mLog, IsEmpty());
  FakeClock::Advance(1);
  EXPECT_THAT(mLog, ElementsAre("a@10"));
  FakeClock::Advance(0);
  EXPECT_THAT(mLog, ElementsAre("a@10"));
  FakeClock::Advance(20);
  EXPECT_THAT(mLog, ElementsAre("a@10", "a@20", "a@30"));
}

TEST_F(FakeClockTest, TakesAPeriodOfZeroForOneMillisecond) {
  add("a", 0, -1);
  FakeClock::Advance(3);
  EXPECT_THAT(mLog, ElementsAre("a@1", "a@2", "a@3"));
}

TEST_F(FakeClockTest, StartsAnAlarmAnewThatIsReset) {
  PCAlarm& alarm = add("a", 10, -1);
  FakeClock::Advance(9);
  alarm.Reset(20, 2);
  FakeClock::Advance(100);
  EXPECT_THAT(mLog, ElementsAre("a@29", "a@49"));
}

TEST_F(FakeClockTest, RunsAlarmsThatCallbacksSetWithinTheSameStep) {
  add("a", 10, 1, [this] { add("b", 5, 1, [this] { add("c", 5, 1); }); });
  FakeClock::Advance(20);
  EXPECT_THAT(mLog, ElementsAre("a@10", "b@15", "c@20"));
}

TEST_F(FakeClockTest, OnlyMovesTheTimeWhenACallbackSleeps) {
  add("a", 10, 1, [this] {
    PCTime::Sleep(15);
    mLog.push_back("woke@" + std::to_string(now()));
  });
  add("b", 20, 1);
  FakeClock::Advance(12);
  EXPECT_THAT(mLog, ElementsAre("a@10", "woke@25", "b@25"));
  EXPECT_EQ(25, now());
}

TEST_F(FakeClockTest, DoesNotMakeUpForPeriodsThatACallbackSleptThrough) {
  bool first = true;
  add("a", 10, -1, [&first] {
    if (first) {
      first = false;
      PCTime::Sleep(35);
    }
  });
  FakeClock::Advance(60);
  EXPECT_THAT(mLog, ElementsAre("a@10", "a@45", "a@50", "a@60"));
}

TEST_F(FakeClockTest, RunsCallbacksOnTheThreadThatAdvances) {
  std::thread::id id;
  add("a", 10, 1, [&id] { id = std::this_thread::get_id(); });
  std::thread other([] { PCTime::Sleep(10); });
  std::thread::id const expected = other.get_id();
  other.join();
  EXPECT_EQ(expected, id);
}

TEST_F(FakeClockTest, OnlyMovesTheTimeWhileAnotherThreadAdvances) {
  add("a", 10, 1, [this] {
    std::thread([] { PCTime::Sleep(100); }).join();
    mLog.push_back("slept@" + std::to_string(now()));
  });
  add("b", 50, 1);
  FakeClock::Advance(10);
  EXPECT_THAT(mLog, ElementsAre("a@10", "slept@110", "b@110"));
}

TEST_F(FakeClockTest, AdvancesToTheNextAlarm) {
  EXPECT_FALSE(FakeClock::AdvanceToNextAlarm());
  EXPECT_EQ(0, now());
  add("a", 25, -1);
  EXPECT_TRUE(FakeClock::AdvanceToNextAlarm());
  EXPECT_TRUE(FakeClock::AdvanceToNextAlarm());
  EXPECT_THAT(mLog, ElementsAre("a@25", "a@50"));
  EXPECT_EQ(50, now());
}

TEST_F(FakeClockTest, BringsTheWallClockBackAndNotTheOtherOne) {
  FakeClock::Advance(5000);
  FakeClock::Reset();
  EXPECT_EQ(FakeClock::cStartWall, PCTime::EpochTime());
  EXPECT_EQ(5000, now());
}

}  // namespace
