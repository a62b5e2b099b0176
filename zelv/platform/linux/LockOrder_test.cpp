#include "zelv/platform/linux/LockOrder.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <thread>
#include <vector>

namespace {

using Zelv::Platform::LockOrder;

std::vector<std::pair<void const*, void const*>> theCircles;

/// Locks that are numbers: nothing is waited for, so that every order can be played through.
class LockOrderTest : public ::testing::Test {
 protected:
  LockOrderTest() {
    theCircles.clear();
    mBefore = LockOrder::SetHandler(
        [](void const* aHeld, void const* aTaken) { theCircles.emplace_back(aHeld, aTaken); });
  }
  ~LockOrderTest() override {
    for (char const& lock : mLocks) {
      LockOrder::Gone(&lock);
    }
    LockOrder::SetHandler(mBefore);
  }

  void const* lock(int aNumber) const { return &mLocks[aNumber]; }

  /// Takes them one inside the other, and releases them.
  void take(std::initializer_list<int> aNumbers) const {
    for (int const number : aNumbers) {
      LockOrder::Taking(lock(number));
      LockOrder::Taken(lock(number));
    }
    for (int const number : aNumbers) {
      LockOrder::Released(lock(number));
    }
  }

 private:
  char mLocks[100] = {};
  LockOrder::Handler mBefore;
};

TEST_F(LockOrderTest, OneOrderIsFine) {
  take({1, 2, 3});
  take({1, 3});
  take({2, 3});
  take({1, 2, 3});
  EXPECT_TRUE(theCircles.empty());
}

TEST_F(LockOrderTest, TwoOrdersOfAPairAreFound) {
  take({1, 2});
  take({2, 1});
  ASSERT_EQ(theCircles.size(), 1U);
  EXPECT_EQ(theCircles[0].first, lock(2));
  EXPECT_EQ(theCircles[0].second, lock(1));
}

TEST_F(LockOrderTest, ACircleOverSeveralLocksAndThreadsIsFound) {
  std::thread([&] { take({1, 2}); }).join();
  std::thread([&] { take({2, 3}); }).join();
  EXPECT_TRUE(theCircles.empty());
  std::thread([&] { take({3, 1}); }).join();
  EXPECT_EQ(theCircles.size(), 1U);
}

TEST_F(LockOrderTest, LocksAfterEachOtherAreNoPair) {
  take({1});
  take({2});
  take({1});
  EXPECT_TRUE(theCircles.empty());
}

TEST_F(LockOrderTest, WhatWasReleasedFirstIsNoLongerHeld) {
  LockOrder::Taking(lock(1));
  LockOrder::Taken(lock(1));
  LockOrder::Taking(lock(2));
  LockOrder::Taken(lock(2));
  LockOrder::Released(lock(1));
  take({3});
  LockOrder::Released(lock(2));
  // The second one lay between the first and the third.
  LockOrder::Gone(lock(2));
  take({3, 1});
  EXPECT_TRUE(theCircles.empty());
}

TEST_F(LockOrderTest, ALockThatGoesLeavesNothingToOneAtItsAddress) {
  take({1, 2});
  LockOrder::Gone(lock(2));
  take({2, 1});
  EXPECT_TRUE(theCircles.empty());
}

TEST_F(LockOrderTest, MoreLocksThanCountAreStillReleased) {
  std::vector<int> numbers;
  for (int i = 0; i < 90; ++i) {
    LockOrder::Taking(lock(i));
    LockOrder::Taken(lock(i));
  }
  for (int i = 0; i < 90; ++i) {
    LockOrder::Released(lock(i));
  }
  take({99, 98});
  EXPECT_TRUE(theCircles.empty());
}

}  // namespace
