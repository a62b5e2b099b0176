#pragma once

#include "zelv/platform/PCMutex.h"

/// Holds a PCMutex for a scope, so that exceptions release it.
class TCAutoLock {
 public:
  explicit TCAutoLock(PCMutex& aMutex) : mMutex(aMutex) { mMutex.Lock(); }
  TCAutoLock(TCAutoLock const&) = delete;
  TCAutoLock& operator=(TCAutoLock const&) = delete;
  ~TCAutoLock() { mMutex.Unlock(); }

 private:
  PCMutex& mMutex;
};
