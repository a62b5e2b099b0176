#pragma once

#include <semaphore.h>

#include "zelv/platform/Export.h"

/// A counting semaphore.
///
/// Create() MUST come before any other call. Destroy() MUST NOT be called while a thread waits in
/// Take(). A Take() that needs not wait, and a Give() that wakes nobody, cost no system call.
class ZELV_EXPORT PCSemaphore {
 public:
  PCSemaphore() = default;
  PCSemaphore(PCSemaphore const&) = delete;
  PCSemaphore& operator=(PCSemaphore const&) = delete;
  ~PCSemaphore();

  /// @param aInitial  the count to start with, 0 or more.
  /// @return non-zero on success, 0 on failure, for a negative count, and for a semaphore that is
  ///         created already.
  int Create(int aInitial);

  /// Waits until the count is above 0 and lowers it by one. Signals do not end the wait.
  void Take();

  /// Raises the count by one. Safe from any thread.
  void Give();

  /// Gives the semaphore's resources back. Does nothing the second time.
  void Destroy();

 private:
  sem_t mSemaphore{};
  bool mCreated = false;
};
