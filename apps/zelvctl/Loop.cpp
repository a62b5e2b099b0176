#include "apps/zelvctl/Loop.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace ZelvCtl {

void Loop::serve(int aDescriptor, std::function<void()> aReady) {
  mServed = aDescriptor;
  mReady = std::move(aReady);
}

void Loop::every(Clock::duration aInterval, std::function<void()> aTick) {
  mInterval = aInterval;
  mNextTick = Clock::now() + aInterval;
  mTick = std::move(aTick);
}

void Loop::tickIfDue() {
  if (Clock::now() >= mNextTick) {
    mTick();
    mNextTick = Clock::now() + mInterval;
  }
}

Loop::End Loop::run(Clock::time_point aUntil, std::function<bool()> const& aDone) {
  for (;;) {
    if (aDone()) {
      return Done;
    }
    tickIfDue();
    if (Clock::now() >= aUntil) {
      return TimeOver;
    }
    if (isStoppedBy(std::min(aUntil, mNextTick))) {
      return Stopped;
    }
  }
}

bool Loop::isStoppedBy(Clock::time_point aUntil) {
  // A descriptor of -1 is passed over.
  std::array<pollfd, 3> descriptors{
      {{mStopDescriptor, POLLIN, 0}, {mBell.descriptor(), POLLIN, 0}, {mServed, POLLIN, 0}}};
  auto const wait = std::clamp<Clock::duration>(aUntil - Clock::now(), Clock::duration::zero(),
                                                std::chrono::minutes(1));
  auto const milliseconds = std::chrono::ceil<std::chrono::milliseconds>(wait).count();
  ::poll(descriptors.data(), descriptors.size(), static_cast<int>(milliseconds));
  mBell.answer();
  if (descriptors[2].revents != 0) {
    mReady();
  }
  return descriptors[0].revents != 0;
}

}  // namespace ZelvCtl
