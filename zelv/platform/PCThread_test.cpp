#include "zelv/platform/PCThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Testing::Event;

/// A thread that runs a function; derived as everybody derives.
class FunctionThread : public virtual PCThread {
 public:
  explicit FunctionThread(std::function<void()> aBody) : mBody(std::move(aBody)) {}
  ~FunctionThread() override { Destroy(); }

 protected:
  void t_Main() override { mBody(); }

 private:
  std::function<void()> mBody;
};

TEST(PCThread, RunsItsBodyOnAThreadOfItsOwn) {
  std::thread::id id = std::this_thread::get_id();
  FunctionThread thread([&id] { id = std::this_thread::get_id(); });
  EXPECT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_NE(std::this_thread::get_id(), id);
}

TEST(PCThread, WaitsInDestroyForTheEndOfTheBody) {
  std::atomic<bool> ended{false};
  FunctionThread thread([&ended] {
    for (int i = 0; i < 1000; ++i) {
      std::this_thread::yield();
    }
    ended = true;
  });
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_TRUE(ended);
}

TEST(PCThread, HasOneThreadAtATime) {
  Event goOn;
  std::atomic<int> runs{0};
  FunctionThread thread([&] {
    ++runs;
    EXPECT_TRUE(goOn.wait());
  });
  ASSERT_NE(0, thread.Create("thread", 4096));
  EXPECT_EQ(0, thread.Create("thread", 4096));
  goOn.happen();
  thread.Destroy();
  EXPECT_EQ(1, runs);
}

TEST(PCThread, CanBeCreatedAgainOnlyAfterDestroy) {
  std::atomic<int> runs{0};
  Event ran;
  FunctionThread thread([&] {
    ++runs;
    ran.happen();
  });
  ASSERT_NE(0, thread.Create("thread", 4096));
  ASSERT_TRUE(ran.wait());
  EXPECT_EQ(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_EQ(2, runs);
}

TEST(PCThread, MayBeDestroyedTwiceAndWithoutBeingCreated) {
  std::atomic<int> runs{0};
  FunctionThread thread([&runs] { ++runs; });
  thread.Destroy();
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  thread.Destroy();
  EXPECT_EQ(1, runs);
}

TEST(PCThread, ReturnsFromDestroyAtOnceOnItsOwnThread) {
  FunctionThread* self = nullptr;
  std::atomic<bool> returned{false};
  FunctionThread thread([&] {
    self->Destroy();
    returned = true;
  });
  self = &thread;
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_TRUE(returned);
}

TEST(PCThread, RefusesToStartAnewFromWithinItsBody) {
  FunctionThread* self = nullptr;
  int result = -1;
  FunctionThread thread([&] { result = self->Create("again", 4096); });
  self = &thread;
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_EQ(0, result);
}

TEST(PCThread, MayBeDestroyedByAnotherOfItsKind) {
  Event goOn;
  FunctionThread first([&goOn] { EXPECT_TRUE(goOn.wait()); });
  FunctionThread second([&] {
    goOn.happen();
    first.Destroy();
  });
  ASSERT_NE(0, first.Create("first", 4096));
  ASSERT_NE(0, second.Create("second", 4096));
  second.Destroy();
  EXPECT_EQ(0U, first.GetId());
}

TEST(PCThread, MayBeDestroyedOnTwoThreadsAtOnce) {
  for (int round = 0; round < 100; ++round) {
    std::atomic<bool> ended{false};
    FunctionThread thread([&ended] {
      std::this_thread::yield();
      ended = true;
    });
    ASSERT_NE(0, thread.Create("thread", 4096));
    std::thread other([&] {
      thread.Destroy();
      EXPECT_TRUE(ended);
    });
    thread.Destroy();
    EXPECT_TRUE(ended);
    other.join();
  }
}

TEST(PCThread, MayDeleteItsOwnObject) {
  struct Deleter {
    std::unique_ptr<FunctionThread> thread;
    Event deleted;
  } deleter;
  deleter.thread = std::make_unique<FunctionThread>([&deleter] {
    Deleter& kept = deleter;
    // The body goes with its thread; what it still needs lies outside.
    kept.thread.reset();
    kept.deleted.happen();
  });
  LogCapture log;
  ASSERT_NE(0, deleter.thread->Create("thread", 4096));
  EXPECT_TRUE(deleter.deleted.wait());
  EXPECT_EQ(0, log.count(PCRealDebug::Error)) << log.dump();
  // Only a thread that is parked or gone is surely done with the event.
  PCThread::ReleaseParked();
}

TEST(PCThread, SurvivesAnExceptionThatLeavesItsBody) {
  LogCapture log;
  FunctionThread thread([] { throw std::runtime_error("no luck"); });
  ASSERT_NE(0, thread.Create("Quorl - worker", 4096));
  thread.Destroy();
  EXPECT_TRUE(log.has(PCRealDebug::Error,
                      "PCThread::t_Main: thread 'Quorl - worker' ended by exception 'no luck'"))
      << log.dump();
}

TEST(PCThread, SurvivesAnythingElseThatLeavesItsBody) {
  LogCapture log;
  FunctionThread thread([] { throw 42; });
  ASSERT_NE(0, thread.Create("Quorl - worker", 4096));
  thread.Destroy();
  EXPECT_TRUE(log.has(PCRealDebug::Error,
                      "PCThread::t_Main: thread 'Quorl - worker' ended by an unknown exception"))
      << log.dump();
}

TEST(PCThread, CanBeCreatedAgainAfterAnException) {
  LogCapture log;
  std::atomic<int> runs{0};
  FunctionThread thread([&runs] {
    if (++runs == 1) {
      throw std::runtime_error("first");
    }
  });
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  ASSERT_NE(0, thread.Create("thread", 4096));
  thread.Destroy();
  EXPECT_EQ(2, runs);
}

TEST(PCThread, NeedsNoName) {
  std::atomic<bool> ran{false};
  FunctionThread thread([&ran] { ran = true; });
  EXPECT_NE(0, thread.Create(nullptr, 4096));
  thread.Destroy();
  EXPECT_TRUE(ran);
}

TEST(PCThread, CopiesItsName) {
  LogCapture log;
  Event goOn;
  FunctionThread thread([&goOn] {
    EXPECT_TRUE(goOn.wait());
    throw std::runtime_error("late");
  });
  {
    std::string name = "short-lived";
    ASSERT_NE(0, thread.Create(name.c_str(), 4096));
    name.assign("xxxxxxxxxxx");
  }
  goOn.happen();
  thread.Destroy();
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Error, "'short-lived'")) << log.dump();
}

TEST(PCThread, HasANumberOnlyWhileItHasAThread) {
  FunctionThread first([] {});
  FunctionThread second([] {});
  EXPECT_EQ(0U, first.GetId());
  ASSERT_NE(0, first.Create("first", 4096));
  ASSERT_NE(0, second.Create("second", 4096));
  EXPECT_NE(0U, first.GetId());
  EXPECT_NE(0U, second.GetId());
  EXPECT_NE(first.GetId(), second.GetId());
  first.Destroy();
  EXPECT_EQ(0U, first.GetId());
}

TEST(PCThread, KnowsItsNumberInItsBody) {
  FunctionThread* self = nullptr;
  unsigned long id = 0;
  FunctionThread thread([&] { id = self->GetId(); });
  self = &thread;
  ASSERT_NE(0, thread.Create("thread", 4096));
  unsigned long const outside = thread.GetId();
  thread.Destroy();
  EXPECT_EQ(outside, id);
  EXPECT_NE(0U, id);
}

/// Breaks the rule: its destructor does not call Destroy().
class CarelessThread : public virtual PCThread {
 public:
  CarelessThread(Event& aEntered, Event& aGoOn, std::atomic<bool>& aEnded)
      : mEntered(aEntered), mGoOn(aGoOn), mEnded(aEnded) {}

 protected:
  void t_Main() override {
    Event& goOn = mGoOn;
    std::atomic<bool>& ended = mEnded;
    mEntered.happen();
    EXPECT_TRUE(goOn.wait());
    ended = true;
  }

 private:
  Event& mEntered;
  Event& mGoOn;
  std::atomic<bool>& mEnded;
};

TEST(PCThread, ReportsAnOwnerThatDidNotWaitAndWaitsInItsPlace) {
  LogCapture log;
  Event entered;
  Event goOn;
  std::atomic<bool> ended{false};
  {
    CarelessThread thread(entered, goOn, ended);
    ASSERT_NE(0, thread.Create("careless", 4096));
    ASSERT_TRUE(entered.wait());
    goOn.happen();
  }
  EXPECT_TRUE(ended);
  EXPECT_TRUE(
      log.has(PCRealDebug::Error, "PCThread::~PCThread: thread 'careless' was not destroyed"))
      << log.dump();
}

// Touches each page on the way down, as deep as it is told.
std::size_t descend(char const* aTop, std::size_t aBytes) {
  char volatile page[1024];
  page[0] = 1;
  page[sizeof page - 1] = 1;
  auto const depth = static_cast<std::size_t>(aTop - const_cast<char const*>(page));
  return depth >= aBytes ? depth : std::max(descend(aTop, aBytes), depth + page[0] - 1);
}

TEST(PCThread, HasAtLeast512KiBOfStackThoughFewerAreAsked) {
  std::size_t depth = 0;
  FunctionThread thread([&depth] {
    char top = 0;
    depth = descend(&top, 512 * 1024);
  });
  ASSERT_NE(0, thread.Create("deep", 4096));
  thread.Destroy();
  EXPECT_GE(depth, 512U * 1024U);
}

TEST(PCThread, HasAsMuchStackAsIsAsked) {
  std::size_t depth = 0;
  FunctionThread thread([&depth] {
    char top = 0;
    depth = descend(&top, 3 * 1024 * 1024);
  });
  ASSERT_NE(0, thread.Create("deeper", 4 * 1024 * 1024));
  thread.Destroy();
  EXPECT_GE(depth, 3U * 1024U * 1024U);
}

TEST(PCThread, RunsManyThreadsAtATime) {
  constexpr int cThreads = 50;
  Event entered;
  std::vector<std::unique_ptr<Event>> goOn;
  std::vector<std::unique_ptr<FunctionThread>> threads;
  for (int i = 0; i < cThreads; ++i) {
    goOn.push_back(std::make_unique<Event>());
    threads.push_back(std::make_unique<FunctionThread>([&entered, event = goOn.back().get()] {
      entered.happen();
      EXPECT_TRUE(event->wait());
    }));
    ASSERT_NE(0, threads.back()->Create("one of many", 4096));
  }
  for (int i = 0; i < cThreads; ++i) {
    EXPECT_TRUE(entered.wait());
  }
  for (auto& event : goOn) {
    event->happen();
  }
  threads.clear();
}

TEST(PCThread, TellsTheNamesOfThoseThatRun) {
  auto const running = [](std::string const& aName) {
    std::vector<std::string> const names = PCThread::Running();
    return std::count(names.begin(), names.end(), aName);
  };
  Event entered;
  Event goOn;
  FunctionThread thread([&] {
    entered.happen();
    EXPECT_TRUE(goOn.wait());
  });
  EXPECT_EQ(running("Quorl - a name of more than 15 characters"), 0);
  ASSERT_NE(0, thread.Create("Quorl - a name of more than 15 characters", 4096));
  EXPECT_TRUE(entered.wait());
  EXPECT_EQ(running("Quorl - a name of more than 15 characters"), 1);
  goOn.happen();
  thread.Destroy();
  EXPECT_EQ(running("Quorl - a name of more than 15 characters"), 0);
  PCThread::ReleaseParked();
  EXPECT_EQ(PCThread::Parked(), 0U);
}

TEST(PCThread, MayReleaseParkedThreadsWhileOthersRun) {
  Event goOn;
  std::atomic<bool> ended{false};
  FunctionThread thread([&] {
    EXPECT_TRUE(goOn.wait());
    ended = true;
  });
  ASSERT_NE(0, thread.Create("thread", 4096));
  PCThread::ReleaseParked();
  EXPECT_FALSE(ended);
  goOn.happen();
  thread.Destroy();
  EXPECT_TRUE(ended);
}

}  // namespace
