#include "zelv/platform/TCAutoLock.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Out of the analysis: a recursive lock is what it warns of.
void lockTwice(PCMutex& aMutex) ZELV_NO_THREAD_SAFETY_ANALYSIS {
  TCAutoLock const outer(aMutex);
  {
    TCAutoLock const inner(aMutex);
    EXPECT_TRUE(aMutex.IsOwned());
  }
  EXPECT_TRUE(aMutex.IsOwned());
}

void lockAndThrow(PCMutex& aMutex) {
  TCAutoLock const lock(aMutex);
  throw std::runtime_error("out");
}

TEST(TCAutoLock, HoldsTheLockForAScope) {
  PCMutex mutex;
  {
    TCAutoLock const lock(mutex);
    EXPECT_TRUE(mutex.IsOwned());
  }
  EXPECT_FALSE(mutex.IsOwned());
}

TEST(TCAutoLock, ReleasesTheLockWhenAnExceptionLeavesTheScope) {
  PCMutex mutex;
  EXPECT_THROW(lockAndThrow(mutex), std::runtime_error);
  EXPECT_FALSE(mutex.IsOwned());
}

TEST(TCAutoLock, ReleasesOnlyItsOwnLevel) {
  PCMutex mutex;
  lockTwice(mutex);
  EXPECT_FALSE(mutex.IsOwned());
}

}  // namespace
