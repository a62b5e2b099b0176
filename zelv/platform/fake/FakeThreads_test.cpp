#include "zelv/platform/fake/FakeThreads.h"

#include <gtest/gtest.h>

#include <atomic>

#include "zelv/platform/PCThread.h"

namespace {

using Zelv::Platform::Fake::FakeThreads;

class CountingThread : public virtual PCThread {
 public:
  ~CountingThread() override { Destroy(); }
  int count() const { return mCount; }

 protected:
  void t_Main() override { ++mCount; }

 private:
  std::atomic<int> mCount{0};
};

TEST(FakeThreads, FailsAsManyCreationsAsTold) {
  FakeThreads::FailNext(2);
  CountingThread thread;
  EXPECT_EQ(0, thread.Create("thread", 4096));
  EXPECT_EQ(0, thread.Create("thread", 4096));
  EXPECT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_EQ(1, thread.count());
}

TEST(FakeThreads, FailsThoughAFinishedThreadIsParked) {
  CountingThread thread;
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  FakeThreads::FailNext(1);
  EXPECT_EQ(0, thread.Create("thread", 4096));
  EXPECT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
}

TEST(FakeThreads, LeavesAnObjectAsItWasWhenItsThreadCannotBeHad) {
  FakeThreads::FailNext(1);
  CountingThread thread;
  EXPECT_EQ(0, thread.Create("thread", 4096));
  EXPECT_EQ(0U, thread.GetId());
  thread.Destroy();
  EXPECT_EQ(0, thread.count());
}

TEST(FakeThreads, TakesTheFaultAway) {
  FakeThreads::FailNext(5);
  FakeThreads::Reset();
  CountingThread thread;
  EXPECT_NE(0, thread.Create("thread", 4096));
}

}  // namespace
