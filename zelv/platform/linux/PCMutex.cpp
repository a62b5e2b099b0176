#include "zelv/platform/PCMutex.h"

#include <pthread.h>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/linux/LockOrder.h"

namespace {

using Zelv::Platform::LockOrder;

#ifdef ZELV_LOCK_ORDER
constexpr bool cOrderIsWatched = true;
#else
constexpr bool cOrderIsWatched = false;
#endif

// The system's own handle: no call into the kernel, never 0, and not reused while its thread lives.
unsigned long self() {
  return ::pthread_self();
}
}  // namespace

PCMutex::PCMutex() {
  mSemaphore.Create(1);
}

PCMutex::~PCMutex() {
  if constexpr (cOrderIsWatched) {
    LockOrder::Gone(this);
  }
  mSemaphore.Destroy();
}

// Only the thread itself writes its own number into mOwner, so a thread that reads its number there
// holds the lock, whatever the order of memory; what the lock guards is ordered by the semaphore.
void PCMutex::Lock() {
  if (!IsOwned()) {
    takeSemaphore();
    mOwner.store(self(), std::memory_order_relaxed);
  }
  ++mDepth;
}

void PCMutex::takeSemaphore() {
  if constexpr (cOrderIsWatched) {
    LockOrder::Taking(this);
    mSemaphore.Take();
    LockOrder::Taken(this);
  } else {
    mSemaphore.Take();
  }
}

void PCMutex::Unlock() {
  if (!IsOwned()) {
    PCRealDebug::Print(PCRealDebug::Error, "PCMutex::Unlock: the calling thread is not the owner.");
    return;
  }
  if (--mDepth == 0) {
    if constexpr (cOrderIsWatched) {
      LockOrder::Released(this);
    }
    mOwner.store(0, std::memory_order_relaxed);
    mSemaphore.Give();
  }
}

bool PCMutex::IsOwned() const {
  return mOwner.load(std::memory_order_relaxed) == self();
}
