#pragma once

#include "zelv/platform/PCMutex.h"

/// Holds a PCMutex for a scope, so that exceptions release it.
class ZELV_THREAD_ANNOTATION(scoped_lockable) TCAutoLock {
 public:
  explicit TCAutoLock(PCMutex& aMutex) ZELV_ACQUIRE(aMutex) : mMutex(aMutex) { mMutex.Lock(); }
  TCAutoLock(TCAutoLock const&) = delete;
  TCAutoLock& operator=(TCAutoLock const&) = delete;
  ~TCAutoLock() ZELV_RELEASE() { mMutex.Unlock(); }

 private:
  PCMutex& mMutex;
};
