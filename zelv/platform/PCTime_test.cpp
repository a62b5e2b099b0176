#include "zelv/platform/PCTime.h"

#include <gtest/gtest.h>

namespace {

TEST(PCTime, CountsSecondsSince1970) {
  // 2020-09-13, when the fake's clock starts; no host is older.
  EXPECT_GE(PCTime::EpochTime(), 1600000000);
}

TEST(PCTime, NeverGoesBackByTheMonotonicClock) {
  std::int64_t last = PCTime::MonotonicMs();
  for (int i = 0; i < 10000; ++i) {
    std::int64_t const now = PCTime::MonotonicMs();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(PCTime, CountsNanosecondsByTheMonotonicClock) {
  std::int64_t const before = PCTime::MonotonicMs();
  std::int64_t const now = PCTime::MonotonicNs();
  std::int64_t const after = PCTime::MonotonicMs();
  EXPECT_LE(before, now / 1000000);
  EXPECT_LE(now / 1000000, after);
}

TEST(PCTime, NeverGoesBackByTheCoarseClockAndLagsNoMoreThanItMay) {
  std::int64_t last = PCTime::CoarseMs();
  for (int i = 0; i < 10000; ++i) {
    std::int64_t const before = PCTime::MonotonicMs();
    std::int64_t const now = PCTime::CoarseMs();
    ASSERT_GE(now, last);
    ASSERT_LE(now, PCTime::MonotonicMs());
    ASSERT_GE(now, before - PCTime::cCoarseLagMs);
    last = now;
  }
}

TEST(PCTime, SleepsAtLeastAsLongAsTold) {
  std::int64_t const before = PCTime::MonotonicMs();
  PCTime::Sleep(2);
  EXPECT_GE(PCTime::MonotonicMs() - before, 2);
}

TEST(PCTime, MaySleepForNoTimeAtAll) {
  std::int64_t const before = PCTime::MonotonicMs();
  PCTime::Sleep(0);
  EXPECT_GE(PCTime::MonotonicMs(), before);
}

}  // namespace
