#pragma once

namespace Zelv::Platform {

/// Finds locks that are taken in two orders, which can end in threads that wait for each other,
/// long before two threads happen to meet there.
///
/// Notes which lock was held when which other one was taken, for each pair of locks of the process.
/// A pair that closes a circle is told to the handler. PCMutex reports to it in builds with
/// ZELV_LOCK_ORDER; others have no trace of it. All operations may be called from any thread.
class LockOrder {
 public:
  /// @param aHeld   taken before aTaken by the calling thread.
  /// @param aTaken  of which it is known that aHeld was, directly or by way of others, taken after.
  using Handler = void (*)(void const* aHeld, void const* aTaken);

  LockOrder() = delete;

  /// Before the calling thread waits for a lock that it does not hold.
  static void Taking(void const* aLock);

  /// The calling thread holds the lock from here on. So many count: the ones that a thread takes
  /// beyond 64 are not looked at.
  static void Taken(void const* aLock);

  static void Released(void const* aLock);

  /// The lock goes, and its address may become that of another one.
  static void Gone(void const* aLock);

  /// Exchanges the handler and gives the one before. The first one logs the pair and ends the
  /// process, so that whoever tests sees where it happened.
  static Handler SetHandler(Handler aHandler);
};

}  // namespace Zelv::Platform
