#pragma once

namespace Zelv::Adapter {

/// The pause before a socket call is tried again that failed for a reason that passes: 10 ms at
/// first, twice as long each time, at most 500 ms.
class RetryPause {
 public:
  void wait();
  void reset() { mMilliseconds = shortest; }

 private:
  static constexpr unsigned long shortest = 10;
  static constexpr unsigned long longest = 500;

  unsigned long mMilliseconds = shortest;
};

}  // namespace Zelv::Adapter
