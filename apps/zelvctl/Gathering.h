#pragma once

#include <algorithm>
#include <chrono>

namespace ZelvCtl {

/// Decides how long answers are waited for: until nothing new has come for a moment, and no longer
/// than the time that was given.
class Gathering {
 public:
  using Clock = std::chrono::steady_clock;

  /// Sets answer at once; this leaves room for a busy one.
  static constexpr std::chrono::milliseconds Moment{500};

  Gathering(Clock::time_point aStart, Clock::duration aTimeout)
      : mDeadline(aStart + aTimeout), mEnd(mDeadline) {}

  /// Something new has come.
  void heard(Clock::time_point aNow) { mEnd = std::min(mDeadline, aNow + Moment); }

  /// The time left; zero when it is over.
  Clock::duration left(Clock::time_point aNow) const {
    return std::max(Clock::duration::zero(), mEnd - aNow);
  }

 private:
  Clock::time_point const mDeadline;
  Clock::time_point mEnd;
};

}  // namespace ZelvCtl
