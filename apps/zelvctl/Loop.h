#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "apps/zelvctl/Bell.h"

namespace ZelvCtl {

/// Where the main thread waits: for other threads, for messages, for the time to pass, and always
/// for the signal to stop.
class Loop {
 public:
  using Clock = std::chrono::steady_clock;
  enum End { Done, TimeOver, Stopped };

  static constexpr Clock::time_point Forever = Clock::time_point::max();

  /// @param aStopDescriptor  readable once the program is to end; outlives the object.
  explicit Loop(int aStopDescriptor) : mStopDescriptor(aStopDescriptor) {}

  /// The signal has been heeded; what is done from now on belongs to ending in order.
  void ignoreStop() { mStopDescriptor = -1; }

  /// Rung from other threads, makes run() look again.
  Bell& bell() { return mBell; }

  /// Has aReady called by run() whenever the descriptor is readable. There is one such.
  void serve(int aDescriptor, std::function<void()> aReady);

  /// Has aTick called by run() in this interval. There is one such.
  void every(Clock::duration aInterval, std::function<void()> aTick);

  /// Waits until aDone holds, which is asked at the start and after whatever happens.
  End run(Clock::time_point aUntil, std::function<bool()> const& aDone);

 private:
  bool isStoppedBy(Clock::time_point aUntil);
  void tickIfDue();

  int mStopDescriptor;
  Bell mBell;
  int mServed = -1;
  std::function<void()> mReady;
  Clock::duration mInterval{};
  Clock::time_point mNextTick = Forever;
  std::function<void()> mTick;
};

}  // namespace ZelvCtl
