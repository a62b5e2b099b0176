#include "apps/zelvctl/Loop.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

class LoopTest : public testing::Test {
 protected:
  Bell mStop;
  Loop mLoop{mStop.descriptor()};
  Loop::Clock::time_point const mPast = Loop::Clock::now();
};

TEST_F(LoopTest, EndsAtOnceWhenAllIsDone) {
  EXPECT_EQ(mLoop.run(mPast, [] { return true; }), Loop::Done);
}

TEST_F(LoopTest, EndsWhenTheTimeIsOver) {
  EXPECT_EQ(mLoop.run(mPast, [] { return false; }), Loop::TimeOver);
}

TEST_F(LoopTest, EndsAtTheSignalToStop) {
  mStop.ring();
  EXPECT_EQ(mLoop.run(Loop::Forever, [] { return false; }), Loop::Stopped);
  EXPECT_EQ(mLoop.run(Loop::Forever, [] { return false; }), Loop::Stopped) << "it stays given";
}

TEST_F(LoopTest, PassesOverTheSignalWhileEndingInOrder) {
  mStop.ring();
  mLoop.ignoreStop();
  mLoop.bell().ring();
  int asked = 0;
  EXPECT_EQ(mLoop.run(Loop::Forever, [&] { return ++asked == 2; }), Loop::Done);
}

TEST_F(LoopTest, LooksAgainWhenTheBellRings) {
  int asked = 0;
  EXPECT_EQ(mLoop.run(Loop::Forever,
                      [&] {
                        mLoop.bell().ring();
                        return ++asked == 3;
                      }),
            Loop::Done);
}

TEST_F(LoopTest, ServesTheDescriptorThatIsReadable) {
  Bell other;
  int served = 0;
  mLoop.serve(other.descriptor(), [&] {
    other.answer();
    ++served;
  });
  other.ring();
  EXPECT_EQ(mLoop.run(Loop::Forever, [&] { return served == 1; }), Loop::Done);
}

TEST_F(LoopTest, TicksWhenTheIntervalIsOver) {
  int ticks = 0;
  mLoop.every(Loop::Clock::duration::zero(), [&] { ++ticks; });
  EXPECT_EQ(mLoop.run(Loop::Forever, [&] { return ticks == 3; }), Loop::Done);
}

TEST_F(LoopTest, DoesNotTickBeforeTheIntervalIsOver) {
  int ticks = 0;
  mLoop.every(std::chrono::hours(1), [&] { ++ticks; });
  EXPECT_EQ(mLoop.run(mPast, [] { return false; }), Loop::TimeOver);
  EXPECT_EQ(ticks, 0);
}

}  // namespace
}  // namespace ZelvCtl
