#include "zelv/platform/PCThread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/platform/PCAlarm.h"
#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/linux/ProcessProbe.h"
#include "zelv/platform/linux/ThreadPool.h"

namespace {

using Zelv::Platform::ThreadPool;
using Zelv::Platform::Testing::Event;
using Zelv::Platform::Testing::ProcessProbe;

class FunctionThread : public virtual PCThread {
 public:
  explicit FunctionThread(std::function<void()> aBody) : mBody(std::move(aBody)) {}
  ~FunctionThread() override { Destroy(); }

 protected:
  void t_Main() override { mBody(); }

 private:
  std::function<void()> mBody;
};

void runOnThread(char const* aName, unsigned long aStack, std::function<void()> const& aBody) {
  FunctionThread thread(aBody);
  ASSERT_NE(0, thread.Create(aName, aStack));
  thread.Destroy();
}

/// Starts with no thread parked, and leaves none.
class PCThreadOnLinux : public ::testing::Test {
 protected:
  PCThreadOnLinux() { PCThread::ReleaseParked(); }
  ~PCThreadOnLinux() override { PCThread::ReleaseParked(); }
};

TEST_F(PCThreadOnLinux, TakesAFinishedSystemThreadAgain) {
  pid_t first = 0;
  pid_t second = 0;
  runOnThread("first", 4096, [&first] { first = ::gettid(); });
  runOnThread("second", 4096, [&second] { second = ::gettid(); });
  EXPECT_NE(0, first);
  EXPECT_EQ(first, second);
}

TEST_F(PCThreadOnLinux, DoesNotTakeAThreadWhoseStackIsTooSmall) {
  pid_t first = 0;
  pid_t second = 0;
  runOnThread("first", 4096, [&first] { first = ::gettid(); });
  runOnThread("second", 8 * 1024 * 1024, [&second] { second = ::gettid(); });
  EXPECT_NE(first, second);
}

TEST_F(PCThreadOnLinux, GivesEveryThreadAtLeast512KiBOfStack) {
  for (unsigned long const asked : {0UL, 1UL, 4096UL, 512UL * 1024, 2UL * 1024 * 1024}) {
    std::size_t size = 0;
    runOnThread("stack", asked, [&size] {
      pthread_attr_t attributes;
      ASSERT_EQ(0, ::pthread_getattr_np(::pthread_self(), &attributes));
      ::pthread_attr_getstacksize(&attributes, &size);
      ::pthread_attr_destroy(&attributes);
    });
    EXPECT_GE(size, std::max<std::size_t>(asked, 512 * 1024));
  }
}

TEST_F(PCThreadOnLinux, FailsWhenNoSuchStackCanBeHad) {
  FunctionThread thread([] {});
  EXPECT_EQ(0, thread.Create("giant", 1UL << 62));
  EXPECT_EQ(0U, thread.GetId());
  EXPECT_NE(0, thread.Create("small", 4096));
}

TEST_F(PCThreadOnLinux, ShowsTheFirst15CharactersOfItsName) {
  std::string names[2];
  for (std::string& name : names) {
    char const* const whole = &name == &names[0] ? "Quorl - DataController::initialize" : "short";
    runOnThread(whole, 4096, [&name] {
      char buffer[16];
      ::pthread_getname_np(::pthread_self(), buffer, sizeof buffer);
      name = buffer;
    });
  }
  EXPECT_EQ("Quorl - DataCon", names[0]);
  EXPECT_EQ("short", names[1]);
}

TEST_F(PCThreadOnLinux, LeavesTheSignalsOfTheHostToTheHost) {
  sigset_t blocked;
  runOnThread("signals", 4096, [&blocked] { ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked); });
  for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGPIPE, SIGUSR1, SIGALRM}) {
    EXPECT_EQ(1, ::sigismember(&blocked, signal)) << signal;
  }
  for (int const fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
    EXPECT_EQ(0, ::sigismember(&blocked, fault)) << fault;
  }
  sigset_t ours;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &ours);
  EXPECT_EQ(0, ::sigismember(&ours, SIGINT));
}

TEST_F(PCThreadOnLinux, ParksABoundedNumberOfThreads) {
  int const before = ProcessProbe::threads();
  Event entered;
  Event goOn;
  std::vector<std::unique_ptr<FunctionThread>> threads;
  for (int i = 0; i < 3 * ThreadPool::cMostParked; ++i) {
    threads.push_back(std::make_unique<FunctionThread>([&] {
      entered.happen();
      EXPECT_TRUE(goOn.wait());
    }));
    ASSERT_NE(0, threads.back()->Create("one of many", 4096));
  }
  for (auto& thread : threads) {
    EXPECT_TRUE(entered.wait()) << thread->GetId();
  }
  for (auto& thread : threads) {
    goOn.happen();
    EXPECT_NE(0U, thread->GetId());
  }
  threads.clear();
  EXPECT_EQ(ThreadPool::cMostParked, ThreadPool::Get().ParkedCount());
  EXPECT_TRUE(ProcessProbe::comesToThreads(before + ThreadPool::cMostParked));
  PCThread::ReleaseParked();
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST_F(PCThreadOnLinux, EndsTheThreadsThatAreTooBigToPark) {
  int const before = ProcessProbe::threads();
  runOnThread("big", 8 * 1024 * 1024, [] {});
  EXPECT_EQ(0, ThreadPool::Get().ParkedCount());
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST_F(PCThreadOnLinux, NeedsNoMoreThreadsOrMemoryAfter10000Runs) {
  auto const run = [](int aTimes) {
    for (int i = 0; i < aTimes; ++i) {
      runOnThread("again and again", 4096, [] {});
    }
  };
  run(10);
  int const threads = ProcessProbe::threads();
  long const space = ProcessProbe::addressSpace();
  run(10000);
  EXPECT_EQ(threads, ProcessProbe::threads());
  // Fewer than 64 of 10,000 stacks.
  EXPECT_LT(ProcessProbe::addressSpace() - space, 64L * 1024 * 1024);
}

TEST_F(PCThreadOnLinux, NeedsNoMoreThreadsOrMemoryAfter500ThreadsThatDoNotPark) {
  auto const run = [](int aTimes) {
    for (int i = 0; i < aTimes; ++i) {
      runOnThread("big", 2 * 1024 * 1024, [] {});
    }
  };
  run(10);
  int const threads = ProcessProbe::threads();
  long const space = ProcessProbe::addressSpace();
  run(500);
  EXPECT_TRUE(ProcessProbe::comesToThreads(threads));
  EXPECT_LT(ProcessProbe::addressSpace() - space, 128L * 1024 * 1024);
}

// The death tests below start their process anew, or fork: in both cases what is shown is that
// exit() comes to its end.
using PCThreadOnLinuxDeathTest = PCThreadOnLinux;

void exitWithParkedThreads() {
  FunctionThread thread([] {});
  thread.Create("parked", 4096);
  thread.Destroy();
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  std::exit(ThreadPool::Get().ParkedCount() == 1 ? 0 : 1);
}

TEST_F(PCThreadOnLinuxDeathTest, LetsTheProcessEndWithThreadsParked) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exitWithParkedThreads(), ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, "fast");
}

/// A thread that finishes after the static objects of the process are gone.
struct LateThread {
  LateThread() = default;
  LateThread(LateThread const&) = delete;
  LateThread& operator=(LateThread const&) = delete;
  ~LateThread() {
    goOn.happen();
    thread.Destroy();
  }

  Event goOn;
  FunctionThread thread{[this] { goOn.wait(); }};
};

void exitWithRunningThread() {
  static LateThread late;
  late.thread.Create("late", 4096);
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  std::exit(0);
}

TEST_F(PCThreadOnLinuxDeathTest, LetsTheProcessEndThoughAThreadFinishesAfterThePoolIsClosed) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exitWithRunningThread(), ::testing::ExitedWithCode(0), "");
  GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(PCThreadOnLinuxDeathTest, LetsAChildEndThatHasNoneOfItsParentsThreads) {
  PCAlarm alarm;
  ASSERT_TRUE(alarm.Create(nullptr, 3600000, -1));
  // Not destroyed before the fork: what the thread holds of it is lost in the child.
  FunctionThread thread([] {});
  ASSERT_NE(0, thread.Create("parked", 4096));
  while (ThreadPool::Get().ParkedCount() == 0) {
    std::this_thread::yield();
  }
  auto const endInChild = [&alarm] {
    alarm.Destroy();
    PCThread::ReleaseParked();
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    std::exit(0);
  };
  EXPECT_EXIT(endInChild(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
