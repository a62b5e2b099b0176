#include "zelv/controller/Timer.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "zelv/controller/TimerController.h"
#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeAlarm;
using Platform::Fake::FakeClock;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;

/// A timer that its controller does not know shows each trigger as a line of the log.
class TimerTest : public ::testing::Test {
 protected:
  ~TimerTest() override { Platform::Fake::ResetFakes(); }

  static std::string notFound(Timer const& aTimer) {
    return "TimerController::timerTrigger: timer '" + aTimer.getID().toString() + "' not found!";
  }

  int triggers(Timer const& aTimer) const {
    return mLog.count(PCRealDebug::Warning, notFound(aTimer));
  }

  LogCapture mLog;
  TimerController mController;
};

TEST_F(TimerTest, StartWithoutControllerThrows) {
  Timer timer(10, -1);
  try {
    timer.start(nullptr);
    FAIL() << "nothing thrown";
  } catch (std::invalid_argument const& exception) {
    EXPECT_STREQ(exception.what(), "NULL TimerController in Timer::start");
  }
}

TEST_F(TimerTest, EachHasAnIdentityOfItsOwn) {
  Timer const first(10, -1);
  Timer const second(10, -1);
  EXPECT_FALSE(first.getID() == second.getID());
  EXPECT_FALSE(first.getID() == GUID::nullGUID);
}

TEST_F(TimerTest, IsNeitherTriggeredNorMarkedAtFirst) {
  Timer timer(10, -1);
  EXPECT_FALSE(timer.isTriggered());
  EXPECT_FALSE(timer.isMarkedForDeletion());
  timer.markForDeletion();
  EXPECT_TRUE(timer.isMarkedForDeletion());
}

TEST_F(TimerTest, IsSilentUntilStarted) {
  Timer timer(10, -1);
  FakeClock::Advance(100);
  EXPECT_EQ(triggers(timer), 0);
  timer.start(&mController);
  FakeClock::Advance(100);
  EXPECT_GT(triggers(timer), 0);
}

TEST_F(TimerTest, GoesOffOncePerPeriod) {
  Timer timer(10, -1);
  timer.start(&mController);
  FakeClock::Advance(9);
  EXPECT_EQ(triggers(timer), 0);
  FakeClock::Advance(1);
  EXPECT_EQ(triggers(timer), 1);
  FakeClock::Advance(30);
  EXPECT_EQ(triggers(timer), 4);
}

TEST_F(TimerTest, IsSilentAfterStop) {
  Timer timer(10, -1);
  timer.start(&mController);
  timer.stop();
  FakeClock::Advance(100);
  EXPECT_EQ(triggers(timer), 0);
}

TEST_F(TimerTest, ResetStartsANewPeriod) {
  Timer timer(10, -1);
  timer.start(&mController);
  FakeClock::Advance(9);
  timer.reset(50, 1);
  FakeClock::Advance(49);
  EXPECT_EQ(triggers(timer), 0);
  FakeClock::Advance(500);
  EXPECT_EQ(triggers(timer), 1);
}

TEST_F(TimerTest, IsNotTriggeredAfterItsTrigger) {
  Timer timer(10, -1);
  timer.start(&mController);
  FakeClock::Advance(10);
  ASSERT_EQ(triggers(timer), 1);
  EXPECT_FALSE(timer.isTriggered());
}

TEST_F(TimerTest, AlarmWithoutTimerOrControllerIsIgnored) {
  Timer timer(10, -1);
  EXPECT_TRUE(Timer::OnAlarmCallback(nullptr, nullptr));
  EXPECT_TRUE(Timer::OnAlarmCallback(nullptr, &timer));
  EXPECT_FALSE(timer.isTriggered());
  EXPECT_EQ(triggers(timer), 0);
}

TEST_F(TimerTest, AlarmOfAStartedTimerReachesItsController) {
  Timer timer(10, -1);
  timer.start(&mController);
  EXPECT_TRUE(Timer::OnAlarmCallback(nullptr, &timer));
  EXPECT_EQ(triggers(timer), 1);
}

TEST_F(TimerTest, GivesItsAlarmBack) {
  auto timer = std::make_unique<Timer>(10U, -1);
  timer->start(&mController);
  EXPECT_EQ(FakeAlarm::Created(), 1);
  timer.reset();
  EXPECT_EQ(FakeAlarm::Created(), 0);
  FakeClock::Advance(100);
}

TEST_F(TimerTest, WithoutAnAlarmIsLoggedAndSilent) {
  FakeAlarm::FailNextCreates(1);
  Timer timer(10, -1);
  EXPECT_THAT(mLog, Logged(PCRealDebug::Error, "Timer::Timer: the platform has no alarm left."));
  timer.start(&mController);
  timer.reset(20, -1);
  FakeClock::Advance(100);
  timer.stop();
  EXPECT_EQ(triggers(timer), 0);
}

TEST_F(TimerTest, MarkedOneIsDeletedAtTheEndOfATriggerThatFindsNoEntry) {
  auto owned = std::make_unique<Timer>(10U, -1);
  Timer* const timer = owned.release();
  std::string const id = timer->getID().toString();
  timer->start(&mController);
  timer->markForDeletion();
  FakeClock::Advance(10);
  EXPECT_EQ(FakeAlarm::Created(), 0);
  EXPECT_THAT(mLog, Logged(PCRealDebug::Detail,
                           "TimerController::timerTrigger: Deleted timer '" + id + "'."));
}

}  // namespace
}  // namespace Zelv::Controller
