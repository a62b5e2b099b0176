#pragma once

#include <cstdint>

namespace Zelv::Platform::Fake {

/// The clocks behind PCTime and PCAlarm, owned by the test. Time passes only by the calls below and
/// by PCTime::Sleep(), which is Advance().
class FakeClock {
 public:
  /// Where the wall clock stands after Reset(), in seconds since 1970.
  static constexpr std::int64_t cStartWall = 1600000000;

  /// Lets time pass on both clocks, stepping from deadline to deadline: every alarm that comes due,
  /// those due at the very end included, runs its callback on the calling thread, which counts as
  /// the alarm thread meanwhile. Called from within a callback, or while another thread advances,
  /// it only moves the time, as a thread that sleeps beside the real alarm thread would; what came
  /// due runs in the Advance() under way.
  static void Advance(std::int64_t aMilliseconds);

  /// Advances to the next deadline of any alarm. @return false, with nothing done, when there is
  /// none.
  static bool AdvanceToNextAlarm();

  /// Lets the wall clock jump; the monotonic one and the alarms do not notice.
  static void SetWall(std::int64_t aEpochSeconds);

  /// Milliseconds since 1970 by the wall clock.
  static std::int64_t WallMs();

  /// Milliseconds by the monotonic clock.
  static std::int64_t MonotonicMs();

  /// Brings the wall clock back to cStartWall. The monotonic clock never goes back.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
