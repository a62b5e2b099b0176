#include "zelv/platform/fake/FakeAlarm.h"

#include <gtest/gtest.h>

#include "zelv/platform/PCAlarm.h"
#include "zelv/platform/fake/FakeClock.h"

namespace {

using Zelv::Platform::Fake::FakeAlarm;
using Zelv::Platform::Fake::FakeClock;

TEST(FakeAlarm, FailsAsManyCreatesAsTold) {
  FakeAlarm::FailNextCreates(2);
  PCAlarm alarm;
  EXPECT_FALSE(alarm.Create(nullptr, 10, 1));
  EXPECT_FALSE(alarm.Create(nullptr, 10, 1));
  EXPECT_EQ(0, FakeAlarm::Created());
  EXPECT_TRUE(alarm.Create(nullptr, 10, 1));
}

TEST(FakeAlarm, LeavesAnAlarmWithoutEffectThatCouldNotBeCreated) {
  FakeAlarm::FailNextCreates(1);
  bool called = false;
  PCAlarm alarm;
  EXPECT_FALSE(alarm.Create(nullptr, 10, 1));
  alarm.SetEventCallback(
      0,
      [](PTEvent const*, void const* aCalled) {
        return *static_cast<bool*>(const_cast<void*>(aCalled)) = true;
      },
      nullptr, &called);
  alarm.Reset(10, -1);
  FakeClock::Advance(100);
  EXPECT_FALSE(called);
}

TEST(FakeAlarm, TakesTheFaultAway) {
  FakeAlarm::FailNextCreates(5);
  FakeAlarm::Reset();
  PCAlarm alarm;
  EXPECT_TRUE(alarm.Create(nullptr, 10, 1));
}

TEST(FakeAlarm, CountsAlarmsThatAreCreatedAndThoseThatWillGoOff) {
  EXPECT_EQ(0, FakeAlarm::Created());
  {
    PCAlarm once;
    PCAlarm always;
    ASSERT_TRUE(once.Create(nullptr, 10, 1));
    ASSERT_TRUE(always.Create(nullptr, 10, -1));
    once.SetEventCallback(
        0, [](PTEvent const*, void const*) { return true; }, nullptr, nullptr);
    EXPECT_EQ(2, FakeAlarm::Created());
    EXPECT_EQ(2, FakeAlarm::Armed());
    FakeClock::Advance(10);
    EXPECT_EQ(2, FakeAlarm::Created());
    EXPECT_EQ(1, FakeAlarm::Armed());
    once.Destroy();
    EXPECT_EQ(1, FakeAlarm::Created());
  }
  EXPECT_EQ(0, FakeAlarm::Created());
  EXPECT_EQ(0, FakeAlarm::Armed());
}

}  // namespace
