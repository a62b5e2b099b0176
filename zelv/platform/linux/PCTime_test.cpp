#include "zelv/platform/PCTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

namespace {

TEST(PCTimeOnLinux, TellsTheTimeOfTheHost) {
  std::time_t const before = std::time(nullptr);
  std::int64_t const now = PCTime::EpochTime();
  std::time_t const after = std::time(nullptr);
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(PCTimeOnLinux, CountsMillisecondsOfTheSteadyClock) {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  using Clock = std::chrono::steady_clock;
  auto const before = duration_cast<milliseconds>(Clock::now().time_since_epoch()).count();
  std::int64_t const now = PCTime::MonotonicMs();
  auto const after = duration_cast<milliseconds>(Clock::now().time_since_epoch()).count();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

}  // namespace
