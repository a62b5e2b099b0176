#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "zelv/platform/Export.h"

/// A thread object. A class derives from it virtually and overrides t_Main().
///
/// Ownership: the object that starts a thread ends it. Whoever derives MUST call Destroy() before
/// its own members go, at the latest first thing in its destructor; ~PCThread() is too late for
/// that: it reports a thread that was not destroyed at error level, and waits for it.
///
/// A child made by fork() has none of its parent's threads and MUST NOT destroy their objects.
class ZELV_EXPORT PCThread {
 public:
  PCThread();
  PCThread(PCThread const&) = delete;
  PCThread& operator=(PCThread const&) = delete;
  virtual ~PCThread();

  /// Runs t_Main() on a thread of its own.
  ///
  /// @param aName   name for debuggers and logs; copied. The platform may show only its first
  ///                characters.
  /// @param aStack  the stack asked for, in bytes. The platform MUST give at least 512 KiB,
  ///                whatever is asked.
  /// @return 0 when no thread could be had, or when this object already has one, be it finished;
  ///         non-zero otherwise.
  ///
  /// A finished system thread may be taken again. An exception that leaves t_Main() MUST NOT end
  /// the process: it is logged at error level and the thread ends in order.
  int Create(char const* aName, unsigned long aStack);

  /// Waits until t_Main() has returned; then Create() may be called again. Does nothing when no
  /// thread was started, and when it was waited for already. A thread that calls it on its own
  /// object returns at once, since it cannot wait for itself.
  ///
  /// MUST NOT be called while a lock is held that t_Main() takes.
  void Destroy();

  /// A number that tells running threads apart, for the log; 0 before Create() and after Destroy().
  unsigned long GetId() const;

  /// Ends the system threads that are parked for reuse and waits for them. For hosts that must give
  /// everything back, and for tests that count threads.
  static void ReleaseParked();

  /// The names of the threads that run at this moment, those of the platform itself included; those
  /// of the host are not. For diagnostics.
  static std::vector<std::string> Running();

  /// How many threads are parked for reuse.
  static std::size_t Parked();

 protected:
  /// The body of the thread. It ends by returning, never by the system's own means, since the
  /// system thread goes on. Signals of the host are blocked in it.
  virtual void t_Main() = 0;

 private:
  struct State;
  std::shared_ptr<State> mState;
};
