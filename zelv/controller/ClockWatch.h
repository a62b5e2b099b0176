#pragma once

#include <cstdint>

namespace Zelv::Controller {

/// Notices jumps of the wall clock, by comparing it with the monotonic one. A set learns the time
/// of day from the broadcast, often minutes after its start; what it has stamped by then must not
/// look decades old.
class ClockWatch {
 public:
  ClockWatch();

  /// The seconds by which the wall clock has jumped since the last call, forward counting positive;
  /// 0 for anything up to 2 seconds.
  std::int64_t takeJump();

 private:
  std::int64_t difference() const;

  std::int64_t mDifference;
};

}  // namespace Zelv::Controller
