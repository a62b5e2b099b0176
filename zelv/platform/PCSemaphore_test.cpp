#include "zelv/platform/PCSemaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <thread>
#include <vector>

#include "zelv/platform/TestPlatform.h"

namespace {

using Zelv::Platform::Testing::Event;

TEST(PCSemaphore, LetsAsManyThroughAsItStartsWith) {
  PCSemaphore semaphore;
  ASSERT_NE(0, semaphore.Create(2));
  Event passed;
  std::thread taker([&] {
    for (int i = 0; i < 3; ++i) {
      semaphore.Take();
      passed.happen();
    }
  });
  EXPECT_TRUE(passed.wait());
  EXPECT_TRUE(passed.wait());
  semaphore.Give();
  EXPECT_TRUE(passed.wait());
  taker.join();
}

TEST(PCSemaphore, MakesTakersWaitUntilItIsGiven) {
  PCSemaphore semaphore;
  ASSERT_NE(0, semaphore.Create(0));
  std::atomic<bool> given{false};
  std::atomic<bool> early{false};
  std::thread taker([&] {
    semaphore.Take();
    early = !given;
  });
  for (int i = 0; i < 100; ++i) {
    std::this_thread::yield();
  }
  given = true;
  semaphore.Give();
  taker.join();
  EXPECT_FALSE(early);
}

TEST(PCSemaphore, CountsEveryGive) {
  constexpr int cThreads = 4;
  constexpr int cRounds = 5000;
  PCSemaphore semaphore;
  ASSERT_NE(0, semaphore.Create(0));
  std::vector<std::thread> threads;
  for (int i = 0; i < cThreads; ++i) {
    threads.emplace_back([&semaphore] {
      for (int round = 0; round < cRounds; ++round) {
        semaphore.Give();
      }
    });
    threads.emplace_back([&semaphore] {
      for (int round = 0; round < cRounds; ++round) {
        semaphore.Take();
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  semaphore.Give();
  semaphore.Take();
}

TEST(PCSemaphore, RefusesANegativeCount) {
  PCSemaphore semaphore;
  EXPECT_EQ(0, semaphore.Create(-1));
  EXPECT_EQ(0, semaphore.Create(INT_MIN));
  EXPECT_NE(0, semaphore.Create(0));
}

TEST(PCSemaphore, IsNotCreatedTwice) {
  PCSemaphore semaphore;
  EXPECT_NE(0, semaphore.Create(1));
  EXPECT_EQ(0, semaphore.Create(1));
}

TEST(PCSemaphore, MayBeDestroyedTwiceAndCreatedAgain) {
  PCSemaphore semaphore;
  semaphore.Destroy();
  ASSERT_NE(0, semaphore.Create(0));
  semaphore.Destroy();
  semaphore.Destroy();
  ASSERT_NE(0, semaphore.Create(1));
  semaphore.Take();
}

}  // namespace
