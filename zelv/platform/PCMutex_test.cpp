#include "zelv/platform/PCMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Testing::Event;

// The tests take and release the lock in ways that the compiler's analysis rightly dislikes.
void lock(PCMutex& aMutex) ZELV_NO_THREAD_SAFETY_ANALYSIS {
  aMutex.Lock();
}
void unlock(PCMutex& aMutex) ZELV_NO_THREAD_SAFETY_ANALYSIS {
  aMutex.Unlock();
}

TEST(PCMutex, IsOwnedBetweenLockAndUnlock) {
  PCMutex mutex;
  EXPECT_FALSE(mutex.IsOwned());
  lock(mutex);
  EXPECT_TRUE(mutex.IsOwned());
  unlock(mutex);
  EXPECT_FALSE(mutex.IsOwned());
}

TEST(PCMutex, IsOwnedByOneThreadAlone) {
  PCMutex mutex;
  lock(mutex);
  bool owned = true;
  std::thread([&] { owned = mutex.IsOwned(); }).join();
  EXPECT_FALSE(owned);
  unlock(mutex);
}

TEST(PCMutex, MayBeTakenAgainByItsOwnerAndIsFreeAfterTheLastUnlock) {
  constexpr int cDepth = 1000;
  PCMutex mutex;
  for (int i = 0; i < cDepth; ++i) {
    lock(mutex);
  }
  std::atomic<bool> free{false};
  std::atomic<bool> early{false};
  Event taken;
  std::thread other([&] {
    lock(mutex);
    early = !free;
    taken.happen();
    unlock(mutex);
  });
  for (int i = 0; i < cDepth - 1; ++i) {
    unlock(mutex);
    EXPECT_TRUE(mutex.IsOwned());
  }
  free = true;
  unlock(mutex);
  EXPECT_TRUE(taken.wait());
  other.join();
  EXPECT_FALSE(early);
}

TEST(PCMutex, LetsOneThreadInAtATimeThoughAllGoInSeveralTimes) {
  constexpr int cThreads = 4;
  constexpr int cRounds = 2500;
  PCMutex mutex;
  int counter = 0;
  std::vector<std::thread> threads;
  threads.reserve(cThreads);
  for (int i = 0; i < cThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < cRounds; ++round) {
        lock(mutex);
        lock(mutex);
        ++counter;
        unlock(mutex);
        ++counter;
        unlock(mutex);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(2 * cThreads * cRounds, counter);
}

TEST(PCMutex, StaysTakenWhenAnotherThreadReleasesItAndReportsIt) {
  LogCapture log;
  PCMutex mutex;
  lock(mutex);
  std::thread([&] { unlock(mutex); }).join();
  EXPECT_TRUE(mutex.IsOwned());
  EXPECT_TRUE(log.has(PCRealDebug::Error, "PCMutex::Unlock: the calling thread is not the owner."))
      << log.dump();
  unlock(mutex);
}

TEST(PCMutex, StaysFreeWhenItIsReleasedOnceTooOften) {
  LogCapture log;
  PCMutex mutex;
  unlock(mutex);
  EXPECT_EQ(1, log.count(PCRealDebug::Error));
  lock(mutex);
  std::atomic<bool> inside{false};
  std::thread other([&] {
    lock(mutex);
    inside = true;
    unlock(mutex);
  });
  for (int i = 0; i < 100; ++i) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(inside);
  unlock(mutex);
  other.join();
  EXPECT_TRUE(inside);
}

}  // namespace
