#include "zelv/core/UnresolvedDevices.h"

#include "zelv/platform/PCTime.h"

namespace Zelv {

bool UnresolvedDevices::note(std::string const& aDeviceId, std::int64_t aNow) {
  if (mTimes.contains(aDeviceId) || !hasRoom(aNow) || !spendQuestion()) {
    return false;
  }
  mTimes.emplace(aDeviceId, aNow);
  return true;
}

// A set without heartbeat never tidies up, and must not stay deaf to newcomers for it.
bool UnresolvedDevices::hasRoom(std::int64_t aNow) {
  if (mTimes.size() >= MaxEntries) {
    forgetBefore(aNow - Patience, [](std::string const&, std::int64_t) {});
  }
  return mTimes.size() < MaxEntries;
}

bool UnresolvedDevices::spendQuestion() {
  std::int64_t const second = PCTime::MonotonicMs() / 1000;
  if (second != mSecond) {
    mSecond = second;
    mQuestions = 0;
  }
  return ++mQuestions <= MaxPerSecond;
}

void UnresolvedDevices::shift(std::int64_t aSeconds) {
  for (auto& entry : mTimes) {
    entry.second += aSeconds;
  }
}

}  // namespace Zelv
