#pragma once

#include <cstdint>

/// The clocks of the set.
class PCTime {
 public:
  /// Seconds since 1970 by the wall clock, which may jump. 64 bits wide, so that it does not wrap
  /// in 2038.
  static std::int64_t EpochTime();

  /// Milliseconds by a clock that never jumps and never goes back; its zero means nothing.
  static std::int64_t MonotonicMs();

  /// Nanoseconds by the same clock, as finely as the platform has them.
  static std::int64_t MonotonicNs();

  /// As MonotonicMs(), but MAY lag behind it by up to cCoarseLagMs, and MUST cost no more than a
  /// few loads: for what is timed so often that the clock itself would show.
  static std::int64_t CoarseMs();

  static constexpr std::int64_t cCoarseLagMs = 10;

  /// Suspends the calling thread for at least this many milliseconds; signals do not shorten it.
  static void Sleep(unsigned long aMilliseconds);
};
