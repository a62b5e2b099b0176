#include "zelv/platform/linux/ThreadPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/linux/ProcessProbe.h"

namespace {

using Zelv::Platform::ThreadJob;
using Zelv::Platform::ThreadPool;
using Zelv::Platform::Testing::Event;
using Zelv::Platform::Testing::ProcessProbe;

constexpr int cHour = 3600000;

class FunctionJob : public ThreadJob {
 public:
  explicit FunctionJob(std::function<void()> aBody) : ThreadJob("job"), mBody(std::move(aBody)) {}

 protected:
  void Run() override { mBody(); }

 private:
  std::function<void()> mBody;
};

std::shared_ptr<ThreadJob> start(ThreadPool& aPool, std::function<void()> const& aBody) {
  auto job = std::make_shared<FunctionJob>(aBody);
  EXPECT_TRUE(aPool.Start(job, 0));
  return job;
}

TEST(ThreadPool, HasTheThreadParkedWhenTheWorkIsDone) {
  ThreadPool pool(cHour);
  for (int i = 0; i < 100; ++i) {
    start(pool, [] {})->Wait();
    EXPECT_EQ(1, pool.ParkedCount());
  }
}

TEST(ThreadPool, EndsAThreadThatStaysIdle) {
  int const before = ProcessProbe::threads();
  ThreadPool pool(0);
  for (int i = 0; i < 20; ++i) {
    start(pool, [] {})->Wait();
    EXPECT_TRUE(ProcessProbe::comesTo([&pool] { return pool.ParkedCount() == 0; }));
  }
  pool.JoinEnded();
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST(ThreadPool, LosesNoWorkWhenThreadsEndAtTheMomentTheyAreCalled) {
  std::atomic<int> done{0};
  {
    ThreadPool pool(0);
    for (int i = 0; i < 500; ++i) {
      start(pool, [&done] { ++done; })->Wait();
    }
  }
  EXPECT_EQ(500, done);
}

TEST(ThreadPool, ParksNoThreadAnyMoreOnceClosed) {
  int const before = ProcessProbe::threads();
  ThreadPool pool(cHour);
  start(pool, [] {})->Wait();
  pool.Close();
  EXPECT_EQ(0, pool.ParkedCount());
  start(pool, [] {})->Wait();
  pool.JoinEnded();
  EXPECT_EQ(0, pool.ParkedCount());
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST(ThreadPool, TellsTheNamesOfWhatItsThreadsDoAndOfNoParkedOne) {
  ThreadPool pool(cHour);
  Event entered;
  Event goOn;
  auto const begin = [&] {
    return start(pool, [&] {
      entered.happen();
      EXPECT_TRUE(goOn.wait());
    });
  };
  EXPECT_TRUE(pool.Running().empty());
  // The second round is done by threads that were parked.
  for (int round = 0; round < 2; ++round) {
    auto const one = begin();
    auto const other = begin();
    EXPECT_TRUE(entered.wait());
    EXPECT_TRUE(entered.wait());
    EXPECT_EQ(pool.Running(), std::vector<std::string>(2, "job"));
    goOn.happen();
    goOn.happen();
    one->Wait();
    other->Wait();
    EXPECT_TRUE(pool.Running().empty());
    EXPECT_EQ(pool.ParkedCount(), 2);
  }
  pool.ReleaseParked();
  EXPECT_TRUE(pool.Running().empty());
}

TEST(ThreadPool, ForgetsThreadsThatEndInAnyOrder) {
  ThreadPool pool(0);
  for (int round = 0; round < 50; ++round) {
    auto const one = start(pool, [] {});
    auto const other = start(pool, [] {});
    other->Wait();
    one->Wait();
    EXPECT_TRUE(pool.Running().empty());
  }
}

TEST(ThreadPool, ReleasesParkedThreadsOnSeveralThreadsAtOnce) {
  int const before = ProcessProbe::threads();
  ThreadPool pool(cHour);
  for (int round = 0; round < 50; ++round) {
    auto const job = start(pool, [] {});
    std::thread other([&pool] { pool.ReleaseParked(); });
    pool.ReleaseParked();
    job->Wait();
    other.join();
  }
  pool.ReleaseParked();
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST(ThreadJob, IsNotDoneOnceItIsTakenBack) {
  bool done = false;
  FunctionJob job([&done] { done = true; });
  EXPECT_TRUE(job.Cancel());
  job.Perform();
  job.Finish();
  job.Wait();
  EXPECT_FALSE(done);
}

TEST(ThreadJob, CannotBeTakenBackOnceItHasBegun) {
  FunctionJob job([] {});
  job.Perform();
  EXPECT_FALSE(job.Cancel());
}

TEST(ThreadJob, IsCurrentOnTheThreadThatDoesIt) {
  bool inside = false;
  FunctionJob* self = nullptr;
  FunctionJob job([&] { inside = self->IsCurrent(); });
  self = &job;
  EXPECT_FALSE(job.IsCurrent());
  job.Perform();
  EXPECT_TRUE(inside);
  EXPECT_FALSE(job.IsCurrent());
}

TEST(ThreadJob, IsWaitedForNoLongerThanTold) {
  FunctionJob job([] {});
  EXPECT_FALSE(job.WaitFor(0));
  job.Perform();
  EXPECT_FALSE(job.WaitFor(0));
  job.Finish();
  EXPECT_TRUE(job.WaitFor(0));
}

}  // namespace
