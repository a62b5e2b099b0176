#pragma once

#include <memory>

#include "zelv/platform/CTaskManager.h"

/// An event of the platform; opaque here.
struct PTEvent;

/// A periodic or counted alarm, by a clock that never jumps.
///
/// Callbacks of all alarms run one at a time on one thread of the platform, the alarm thread, in
/// the order of their deadlines and never early. Periods that pass while a callback takes its time
/// are left out, not made up for. An exception that leaves a callback MUST NOT end the process: it
/// is logged at error level and the alarm goes on. Every operation is safe on any thread.
class PCAlarm {
 public:
  /// @param aUserData  as given to SetEventCallback().
  /// @return true; the platform does not look at it.
  using EventCallback = bool (*)(PTEvent const* aEvent, void const* aUserData);

  PCAlarm();
  PCAlarm(PCAlarm const&) = delete;
  PCAlarm& operator=(PCAlarm const&) = delete;
  ~PCAlarm();

  /// Arms the alarm; it stays silent until a callback is set. Periods that pass before that do not
  /// count, so that an alarm that goes off once cannot be lost in between.
  ///
  /// @param aTask    the application that the alarm belongs to; not owned.
  /// @param aTimeMs  period in milliseconds. A period of 0 counts as 1, so that no alarm can keep
  ///                 the alarm thread busy for ever.
  /// @param aRepeat  how often it goes off; -1 means for ever, 0 counts as once.
  /// @return false when the platform has no thread or memory for it, and for an alarm that is
  ///         created already.
  bool Create(CApplication* aTask, unsigned int aTimeMs, int aRepeat);

  /// Disarms the alarm. Afterwards its callback neither runs nor will run: called on another thread
  /// while the callback runs it waits for its end, so the caller MUST NOT hold a lock that the
  /// callback takes. Called from within the callback it returns at once, and the alarm object may
  /// then be deleted before the callback returns. The second time it does nothing but this wait.
  /// Callbacks of other alarms are not waited for. Create() may be called again afterwards.
  void Destroy();

  /// Starts the period anew, with new values as for Create(), also when the alarm has gone off for
  /// the last time. Safe from within the callback. Does nothing for an alarm that is not created.
  void Reset(unsigned int aTimeMs, int aRepeat);

  /// Sets or, with a null aCallback, takes away the callback. Taking it away, or setting another
  /// one, waits as Destroy() does.
  ///
  /// @param aEvent     which event of the alarm; 0, going off, is the only one.
  /// @param aReserved  null.
  /// @param aUserData  handed to the callback; not owned, MUST live until the callback is taken
  ///                   away.
  void SetEventCallback(int aEvent, EventCallback aCallback, void* aReserved, void* aUserData);

 private:
  struct State;
  std::shared_ptr<State> mState;
};
