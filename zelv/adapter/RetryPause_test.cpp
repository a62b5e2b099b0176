#include "zelv/adapter/RetryPause.h"

#include <gtest/gtest.h>

#include "zelv/platform/fake/FakeClock.h"

namespace {

using Zelv::Platform::Fake::FakeClock;

std::int64_t waited(Zelv::Adapter::RetryPause& aPause) {
  std::int64_t const before = FakeClock::MonotonicMs();
  aPause.wait();
  return FakeClock::MonotonicMs() - before;
}

TEST(RetryPause, DoublesUpToHalfASecond) {
  Zelv::Adapter::RetryPause pause;
  for (int const expected : {10, 20, 40, 80, 160, 320, 500, 500}) {
    EXPECT_EQ(expected, waited(pause));
  }
}

TEST(RetryPause, BeginsAnewAfterSuccess) {
  Zelv::Adapter::RetryPause pause;
  waited(pause);
  waited(pause);
  pause.reset();
  EXPECT_EQ(10, waited(pause));
}

}  // namespace
