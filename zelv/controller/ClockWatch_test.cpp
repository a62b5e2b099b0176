#include "zelv/controller/ClockWatch.h"

#include <gtest/gtest.h>

#include "zelv/platform/fake/FakeClock.h"

namespace {

using Zelv::Controller::ClockWatch;
using Zelv::Platform::Fake::FakeClock;

class Clock : public testing::Test {
 protected:
  Clock() { FakeClock::Reset(); }
  ~Clock() override { FakeClock::Reset(); }

  static void jump(std::int64_t aSeconds) {
    FakeClock::SetWall(FakeClock::WallMs() / 1000 + aSeconds);
  }
};

TEST_F(Clock, SeesNothingInTimeThatPasses) {
  ClockWatch watch;
  for (int i = 0; i < 100; ++i) {
    FakeClock::Advance(733);
    EXPECT_EQ(0, watch.takeJump());
  }
}

TEST_F(Clock, TellsOfAJumpOnce) {
  ClockWatch watch;
  jump(50000);
  FakeClock::Advance(10000);
  EXPECT_NEAR(50000, watch.takeJump(), 1);
  EXPECT_EQ(0, watch.takeJump());
  jump(-3600);
  EXPECT_NEAR(-3600, watch.takeJump(), 1);
  EXPECT_EQ(0, watch.takeJump());
}

TEST_F(Clock, TakesNoNoticeOfASecond) {
  ClockWatch watch;
  jump(1);
  EXPECT_EQ(0, watch.takeJump());
  jump(-2);
  EXPECT_EQ(0, watch.takeJump());
}

TEST_F(Clock, AddsUpSmallStepsUntilTheyCount) {
  ClockWatch watch;
  std::int64_t sum = 0;
  for (int i = 0; i < 60; ++i) {
    jump(1);
    sum += watch.takeJump();
  }
  EXPECT_NEAR(60, sum, 3);
}

}  // namespace
