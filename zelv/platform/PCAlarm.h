#pragma once

#include <memory>

#include "zelv/platform/CTaskManager.h"

/// An event of the platform; opaque here.
struct PTEvent;

/// A periodic or counted alarm. Callbacks of all alarms run one at a time on one thread of the
/// platform, the alarm thread.
class PCAlarm {
 public:
  /// @param aUserData  as given to SetEventCallback().
  /// @return true; the platform does not look at it.
  using EventCallback = bool (*)(PTEvent const* aEvent, void const* aUserData);

  PCAlarm();
  PCAlarm(PCAlarm const&) = delete;
  PCAlarm& operator=(PCAlarm const&) = delete;
  ~PCAlarm();

  /// Arms the alarm; it stays silent until a callback is set.
  ///
  /// @param aTask    the application that the alarm belongs to; not owned.
  /// @param aTimeMs  period in milliseconds. A period of 0 counts as 1, so that no alarm can keep
  /// the
  ///                 alarm thread busy for ever.
  /// @param aRepeat  how often it goes off; -1 means for ever, 0 counts as once.
  /// @return false when the platform has no thread or memory for it.
  bool Create(CApplication* aTask, unsigned int aTimeMs, int aRepeat);

  /// Disarms the alarm. Afterwards its callback neither runs nor will run: called on another thread
  /// while the callback runs it waits for its end, so the caller MUST NOT hold a lock that the
  /// callback takes. Called from within the callback it returns at once, and the alarm object may
  /// then be deleted before the callback returns. Does nothing the second time.
  void Destroy();

  /// Starts the period anew, with new values as for Create(). Safe from within the callback.
  void Reset(unsigned int aTimeMs, int aRepeat);

  /// Sets or, with a null aCallback, takes away the callback. Taking it away waits as Destroy()
  /// does.
  ///
  /// @param aEvent     which event of the alarm; 0, going off, is the only one.
  /// @param aReserved  null.
  /// @param aUserData  handed to the callback; not owned, MUST live until the callback is taken
  /// away.
  void SetEventCallback(int aEvent, EventCallback aCallback, void* aReserved, void* aUserData);

 private:
  struct State;
  std::shared_ptr<State> mState;
};
