#pragma once

#include <atomic>

#include "zelv/platform/Export.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/ThreadAnnotations.h"

/// A recursive lock: a semaphore of count 1, the owning thread, and a depth.
///
/// A thread that owns it only raises the depth; the last Unlock() gives the semaphore back. Taking
/// and releasing it without contention costs no system call.
class ZELV_EXPORT ZELV_THREAD_ANNOTATION(capability("mutex")) PCMutex {
 public:
  PCMutex();
  PCMutex(PCMutex const&) = delete;
  PCMutex& operator=(PCMutex const&) = delete;
  ~PCMutex();

  /// Takes the lock, waiting as long as another thread holds it.
  void Lock() ZELV_ACQUIRE();

  /// Releases one level. MUST be called by the owner only; from others it is logged at error level
  /// and changes nothing.
  void Unlock() ZELV_RELEASE();

  /// True while the calling thread holds the lock.
  bool IsOwned() const;

 private:
  void takeSemaphore();

  PCSemaphore mSemaphore;
  std::atomic<unsigned long> mOwner{0};
  /// Touched by the owner alone.
  int mDepth = 0;
};
