#include "zelv/controller/CallsUnderWay.h"

#include <algorithm>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv::Controller {

CallsUnderWay::Call::~Call() {
  if (mObject != nullptr) {
    mCalls.end(mObject);
  }
}

void CallsUnderWay::Call::begin(void const* aObject) {
  TCAutoLock lock(mCalls.mLock);
  mCalls.mEntries.push_back({aObject, std::this_thread::get_id()});
  mObject = aObject;
}

void CallsUnderWay::end(void const* aObject) {
  TCAutoLock lock(mLock);
  mEntries.erase(
      std::find(mEntries.begin(), mEntries.end(), Entry{aObject, std::this_thread::get_id()}));
  for (PCSemaphore* waiting : mWaiting) {
    waiting->Give();
  }
  mWaiting.clear();
}

bool CallsUnderWay::isBusyElsewhere(void const* aObject) const {
  return std::any_of(mEntries.begin(), mEntries.end(), [&](Entry const& aEntry) {
    return aEntry.mObject == aObject && aEntry.mThread != std::this_thread::get_id();
  });
}

void CallsUnderWay::waitForEnd(void const* aObject) {
  if (InsideDelivery::isThisThread()) {
    return;
  }
  PCSemaphore ended;
  ended.Create(0);
  for (;;) {
    {
      TCAutoLock lock(mLock);
      if (!isBusyElsewhere(aObject)) {
        return;
      }
      mWaiting.push_back(&ended);
    }
    ended.Take();
  }
}

}  // namespace Zelv::Controller
