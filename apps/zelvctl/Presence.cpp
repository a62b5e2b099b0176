#include "apps/zelvctl/Presence.h"

namespace ZelvCtl {

void Presence::follow(std::string const& aId, std::string const& aAddress) {
  std::lock_guard const lock(mLock);
  mId = aId;
  mAddress = aAddress;
}

bool Presence::isMeant(Device const& aDevice) const {
  return mId.empty() ? !mAddress.empty() && aDevice.address == mAddress : aDevice.id == mId;
}

void Presence::note(bool aArrived, Device const& aDevice) {
  std::lock_guard const lock(mLock);
  if (!isMeant(aDevice) || aArrived != mIsAway) {
    return;
  }
  mIsAway = !aArrived;
  mReturns += aArrived ? 1U : 0U;
}

bool Presence::isAway() const {
  std::lock_guard const lock(mLock);
  return mIsAway;
}

unsigned Presence::returns() const {
  std::lock_guard const lock(mLock);
  return mReturns;
}

}  // namespace ZelvCtl
