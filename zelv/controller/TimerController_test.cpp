#include "zelv/controller/TimerController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

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
using ::testing::_;
using ::testing::InSequence;
using ::testing::NiceMock;
using ::testing::Property;
using ::testing::StrictMock;
using ::testing::Throw;

class MockCallback : public IBaseTimerCallback {
 public:
  MOCK_METHOD(void, onTimer, (std::string const&, GUID), (override));
  MOCK_METHOD(void, onStatus, (StatusInformation const&, GUID const&), (override));
};

auto emptyStatus() {
  return Property(&StatusInformation::getStatusText, "");
}

class TimerControllerTest : public ::testing::Test {
 protected:
  ~TimerControllerTest() override { Platform::Fake::ResetFakes(); }

  GUID create(unsigned int aTimeMs, std::string const& aName = "name") {
    return mController->createTimer(aTimeMs, -1, aName, &mCallback);
  }

  LogCapture mLog;
  StrictMock<MockCallback> mCallback;
  std::unique_ptr<TimerController> mController = std::make_unique<TimerController>();
};

TEST_F(TimerControllerTest, TimerGoesOffEachPeriodWithItsNameAndId) {
  GUID const id = create(1000, "ping");
  FakeClock::Advance(999);
  EXPECT_CALL(mCallback, onTimer("ping", id)).Times(3);
  FakeClock::Advance(2001);
}

TEST_F(TimerControllerTest, TimerCountedByTheAlarmGoesOffThatOftenAndStaysKnown) {
  GUID const id = mController->createTimer(10, 2, "twice", &mCallback);
  EXPECT_CALL(mCallback, onTimer("twice", id)).Times(2);
  FakeClock::Advance(1000);
  ::testing::Mock::VerifyAndClearExpectations(&mCallback);
  mController->resetTimer(id, 10, 1);
  EXPECT_CALL(mCallback, onTimer("twice", id)).Times(1);
  FakeClock::Advance(1000);
}

TEST_F(TimerControllerTest, TimersOfOneNameAreDifferentTimers) {
  GUID const first = create(10, "same");
  GUID const second = create(10, "same");
  EXPECT_FALSE(first == second);
  EXPECT_CALL(mCallback, onTimer("same", first));
  EXPECT_CALL(mCallback, onTimer("same", second));
  FakeClock::Advance(10);
}

TEST_F(TimerControllerTest, NameOfAnyBytesComesBackUnchanged) {
  std::string const name = std::string("\0\xff%s]['\"<", 9) + std::string(1 << 20, 'n');
  GUID const id = create(10, name);
  EXPECT_CALL(mCallback, onTimer(name, id));
  FakeClock::Advance(10);
}

TEST_F(TimerControllerTest, DestroyedTimerNeverGoesOffAgain) {
  GUID const id = create(10);
  mController->destroyTimer(id, &mCallback);
  EXPECT_EQ(FakeAlarm::Created(), 0);
  FakeClock::Advance(100);
}

TEST_F(TimerControllerTest, DestroyLogsStoppedThenDeleted) {
  GUID const id = create(10);
  mLog.clear();
  mController->destroyTimer(id, nullptr);
  EXPECT_THAT(mLog.texts(PCRealDebug::Detail),
              ::testing::ElementsAre(
                  "TimerController::destroyTimer: Timer '" + id.toString() + "' stopped.",
                  "TimerController::destroyTimer: Timer '" + id.toString() + "' deleted."));
}

TEST_F(TimerControllerTest, CallbackThatDestroysItsOwnTimerLeavesItToTheEndOfTheTrigger) {
  GUID const id = create(10);
  EXPECT_CALL(mCallback, onTimer("name", id)).WillOnce([&](std::string const&, GUID const& aId) {
    mController->destroyTimer(aId, &mCallback);
    EXPECT_EQ(FakeAlarm::Created(), 1);
  });
  mLog.clear();
  FakeClock::Advance(100);
  EXPECT_EQ(FakeAlarm::Created(), 0);
  EXPECT_THAT(
      mLog.texts(PCRealDebug::Detail),
      ::testing::ElementsAre(
          "TimerController::destroyTimer: Timer '" + id.toString() + "' stopped.",
          "TimerController::destroyTimer: Timer '" + id.toString() + "' marked for deletion.",
          "TimerController::timerTrigger: Deleted timer '" + id.toString() + "'."));
}

TEST_F(TimerControllerTest, CallbackThatDestroysItsOwnTimerTwiceHearsThatItIsUnknown) {
  GUID const id = create(10);
  EXPECT_CALL(mCallback, onTimer(_, id)).WillOnce([&](std::string const&, GUID const& aId) {
    mController->destroyTimer(aId, &mCallback);
    mController->destroyTimer(aId, &mCallback);
  });
  EXPECT_CALL(mCallback, onStatus(emptyStatus(), id));
  FakeClock::Advance(10);
  EXPECT_EQ(FakeAlarm::Created(), 0);
}

TEST_F(TimerControllerTest, CallbackThatDestroysItsOwnTimerAndThrowsLeavesNothingBehind) {
  GUID const id = create(10);
  EXPECT_CALL(mCallback, onTimer(_, id)).WillOnce([&](std::string const&, GUID const& aId) {
    mController->destroyTimer(aId, nullptr);
    throw std::runtime_error("lost");
  });
  EXPECT_CALL(mCallback, onStatus(emptyStatus(), id));
  FakeClock::Advance(100);
  EXPECT_EQ(FakeAlarm::Created(), 0);
  EXPECT_THAT(mLog, Logged(PCRealDebug::Detail, "TimerController::timerTrigger: Deleted timer '" +
                                                    id.toString() + "'."));
}

TEST_F(TimerControllerTest, CallbackMayDestroyAnotherTimerThatIsDueAtTheSameTime) {
  GUID ids[2] = {create(10, "a"), create(10, "b")};
  EXPECT_CALL(mCallback, onTimer(_, _)).WillOnce([&](std::string const&, GUID const& aId) {
    mController->destroyTimer(aId == ids[0] ? ids[1] : ids[0], &mCallback);
  });
  FakeClock::Advance(10);
  EXPECT_EQ(FakeAlarm::Created(), 1);
}

TEST_F(TimerControllerTest, CallbackMayCreateATimer) {
  GUID inner;
  GUID const outer = create(10, "outer");
  EXPECT_CALL(mCallback, onTimer("outer", outer))
      .WillOnce([&](std::string const&, GUID const& aId) {
        inner = create(5, "inner");
        mController->destroyTimer(aId, nullptr);
      });
  EXPECT_CALL(mCallback, onTimer("inner", _)).WillOnce([&](std::string const&, GUID const& aId) {
    EXPECT_EQ(aId, inner);
  });
  FakeClock::Advance(19);
}

TEST_F(TimerControllerTest, CallbackMayResetItsOwnTimer) {
  GUID const id = create(10);
  EXPECT_CALL(mCallback, onTimer("name", id)).WillOnce([&](std::string const&, GUID const& aId) {
    mController->resetTimer(aId, 1000, -1);
  });
  FakeClock::Advance(1009);
  ::testing::Mock::VerifyAndClearExpectations(&mCallback);
  EXPECT_CALL(mCallback, onTimer("name", id));
  FakeClock::Advance(1);
}

TEST_F(TimerControllerTest, ResetStartsANewPeriod) {
  GUID const id = create(10);
  FakeClock::Advance(9);
  mController->resetTimer(id, 100, -1);
  FakeClock::Advance(99);
  EXPECT_CALL(mCallback, onTimer("name", id));
  FakeClock::Advance(1);
}

TEST_F(TimerControllerTest, DestroyOfAnUnknownTimerTellsTheCallbackOnceWithEmptyText) {
  GUID const unknown = GUID::createGUID();
  EXPECT_CALL(mCallback, onStatus(emptyStatus(), unknown));
  mController->destroyTimer(unknown, &mCallback);
}

TEST_F(TimerControllerTest, DestroyOfAnUnknownTimerWithoutCallbackOnlyLogs) {
  GUID const unknown = GUID::createGUID();
  mController->destroyTimer(unknown, nullptr);
  EXPECT_EQ(mLog.count(PCRealDebug::Warning), 1);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 0);
}

TEST_F(TimerControllerTest, ResetOfAnUnknownTimerOnlyLogs) {
  mController->resetTimer(GUID::createGUID(), 10, -1);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 1);
  EXPECT_EQ(mLog.count(PCRealDebug::Warning), 0);
}

TEST_F(TimerControllerTest, StdExceptionFromACallbackIsToldAsEmptyStatusAndTheTimerGoesOn) {
  GUID const id = create(10);
  {
    InSequence order;
    EXPECT_CALL(mCallback, onTimer("name", id)).WillOnce(Throw(std::runtime_error("lost text")));
    EXPECT_CALL(mCallback, onStatus(emptyStatus(), id));
    EXPECT_CALL(mCallback, onTimer("name", id));
  }
  FakeClock::Advance(20);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 0);
}

TEST_F(TimerControllerTest, AnythingElseFromACallbackIsLoggedAndTheTimerGoesOn) {
  GUID const id = create(10);
  EXPECT_CALL(mCallback, onTimer("name", id)).WillOnce(Throw(7)).WillOnce(::testing::Return());
  FakeClock::Advance(20);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 1);
}

TEST_F(TimerControllerTest, ExceptionFromOnStatusIsLoggedAndTheTimerGoesOn) {
  GUID const id = create(10);
  EXPECT_CALL(mCallback, onTimer("name", id))
      .WillOnce(Throw(std::bad_alloc()))
      .WillOnce(::testing::Return());
  EXPECT_CALL(mCallback, onStatus(_, id)).WillOnce(Throw(std::runtime_error("again")));
  FakeClock::Advance(20);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 1);
}

TEST_F(TimerControllerTest, ExceptionFromOnStatusDoesNotReachTheOneWhoDestroys) {
  EXPECT_CALL(mCallback, onStatus(_, _)).WillOnce(Throw(std::runtime_error("no")));
  EXPECT_NO_THROW(mController->destroyTimer(GUID::createGUID(), &mCallback));
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 1);
}

TEST_F(TimerControllerTest, TimerWithoutCallbackGoesOffUnheard) {
  GUID const id = mController->createTimer(10, -1, "silent", nullptr);
  FakeClock::Advance(100);
  EXPECT_EQ(FakeAlarm::Armed(), 1);
  mController->destroyTimer(id, nullptr);
  EXPECT_EQ(FakeAlarm::Created(), 0);
}

TEST_F(TimerControllerTest, TimerForWhichThereIsNoAlarmCanBeResetAndDestroyed) {
  FakeAlarm::FailNextCreates(1);
  GUID const id = create(10);
  FakeClock::Advance(100);
  mController->resetTimer(id, 10, -1);
  FakeClock::Advance(100);
  mController->destroyTimer(id, &mCallback);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 1);
}

TEST_F(TimerControllerTest, TriggerWithoutTimerThrows) {
  try {
    mController->timerTrigger(nullptr);
    FAIL() << "nothing thrown";
  } catch (std::invalid_argument const& exception) {
    EXPECT_STREQ(exception.what(), "NULL pointer in TimerController::timerTriggered");
  }
}

TEST_F(TimerControllerTest, TimersGoOnAfterTerminate) {
  mController->initialize();
  GUID const id = create(10);
  mController->terminate();
  EXPECT_CALL(mCallback, onTimer("name", id));
  FakeClock::Advance(10);
}

TEST_F(TimerControllerTest, InitializeAndTerminateOnlyTrace) {
  mLog.clear();
  mController->initialize();
  mController->terminate();
  std::vector<Platform::Fake::LogLine> const expected{
      {PCRealDebug::Trace, "TimerController::initialize: Entry."},
      {PCRealDebug::Trace, "TimerController::initialize: Exit."},
      {PCRealDebug::Trace, "TimerController::terminate: Entry."},
      {PCRealDebug::Trace, "TimerController::terminate: Exit."}};
  EXPECT_EQ(mLog.lines(), expected);
}

TEST_F(TimerControllerTest, EndStopsAndDeletesEveryTimer) {
  for (int i = 0; i < 100; ++i) {
    create(10);
  }
  EXPECT_EQ(FakeAlarm::Created(), 100);
  mController.reset();
  EXPECT_EQ(FakeAlarm::Created(), 0);
  FakeClock::Advance(100);
}

TEST_F(TimerControllerTest, IsReachedFromTheRootThroughBothFamilies) {
  IBase* const base = mController.get();
  EXPECT_NE(dynamic_cast<IAppTimer*>(base), nullptr);
  EXPECT_NE(dynamic_cast<ICoreTimer*>(base), nullptr);
}

/// A line of the log: its level, its text around the timer's id, and what brings it about.
struct LogRow {
  unsigned long level;
  char const* before;
  char const* behind;
  std::function<GUID(TimerController&, IBaseTimerCallback*)> bringAbout;
};

std::ostream& operator<<(std::ostream& aStream, LogRow const& aRow) {
  return aStream << aRow.level << " " << aRow.before << "..." << aRow.behind;
}

GUID destroyUnknown(TimerController& aController, IBaseTimerCallback*) {
  GUID const id = GUID::createGUID();
  aController.destroyTimer(id, nullptr);
  return id;
}

GUID resetUnknown(TimerController& aController, IBaseTimerCallback*) {
  GUID const id = GUID::createGUID();
  aController.resetTimer(id, 10, -1);
  return id;
}

GUID triggerUnknown(TimerController& aController, IBaseTimerCallback*) {
  Timer timer(10, -1);
  aController.timerTrigger(&timer);
  return timer.getID();
}

GUID destroy(TimerController& aController, IBaseTimerCallback* aCallback) {
  GUID const id = aController.createTimer(10, -1, "t", aCallback);
  aController.destroyTimer(id, nullptr);
  return id;
}

GUID goOff(TimerController& aController, IBaseTimerCallback* aCallback) {
  GUID const id = aController.createTimer(10, -1, "t", aCallback);
  FakeClock::Advance(10);
  return id;
}

class TimerControllerLog : public ::testing::TestWithParam<LogRow> {
 protected:
  ~TimerControllerLog() override { Platform::Fake::ResetFakes(); }
};

TEST_P(TimerControllerLog, HoldsTheTextAtItsLevel) {
  LogCapture log;
  TimerController controller;
  NiceMock<MockCallback> callback;
  ON_CALL(callback, onTimer).WillByDefault([&](std::string const&, GUID const& aId) {
    controller.destroyTimer(aId, nullptr);
    throw 7;
  });
  GUID const id = GetParam().bringAbout(controller, &callback);
  EXPECT_THAT(log, Logged(GetParam().level, GetParam().before + id.toString() + GetParam().behind));
}

INSTANTIATE_TEST_SUITE_P(
    AllTexts, TimerControllerLog,
    ::testing::Values(LogRow{PCRealDebug::Warning, "TimerController::timerTrigger: timer '",
                             "' not found!", triggerUnknown},
                      LogRow{PCRealDebug::Detail, "TimerController::timerTrigger: Deleted timer '",
                             "'.", goOff},
                      LogRow{PCRealDebug::Error, "TimerController::timerTrigger: timer '",
                             "': onTimer() threw something that is no std::exception.", goOff},
                      LogRow{PCRealDebug::Warning, "TimerController::destroyTimer: Timer '",
                             "' not found.", destroyUnknown},
                      LogRow{PCRealDebug::Detail, "TimerController::destroyTimer: Timer '",
                             "' stopped.", destroy},
                      LogRow{PCRealDebug::Detail, "TimerController::destroyTimer: Timer '",
                             "' marked for deletion.", goOff},
                      LogRow{PCRealDebug::Detail, "TimerController::destroyTimer: Timer '",
                             "' deleted.", destroy},
                      LogRow{PCRealDebug::Error, "TimerController::resetTimer: Timer '",
                             "' not found.", resetUnknown}));

TEST(TimerControllerTrace, EachOperationWritesEntryAndExit) {
  LogCapture log;
  {
    TimerController controller;
    GUID const id = controller.createTimer(10, -1, "t", nullptr);
    controller.resetTimer(id, 10, -1);
    FakeClock::Advance(10);
    controller.destroyTimer(id, nullptr);
  }
  for (std::string const operation :
       {"createTimer", "resetTimer", "timerTrigger", "destroyTimer"}) {
    EXPECT_EQ(log.count(PCRealDebug::Trace, "TimerController::" + operation + ": Entry."), 1);
    EXPECT_EQ(log.count(PCRealDebug::Trace, "TimerController::" + operation + ": Exit."), 1);
  }
}

}  // namespace
}  // namespace Zelv::Controller
