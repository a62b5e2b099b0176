#pragma once

#include <atomic>

#include "zelv/interfaces/GUID.h"
#include "zelv/platform/PCAlarm.h"

namespace Zelv::Controller {

class TimerController;

/// One timer: an alarm of the platform with an identity.
///
/// Its two flags settle who deletes it. While the alarm's callback runs, the callback may still
/// touch the timer, so whoever wants it gone only marks it, and the callback's end deletes it. The
/// controller decides by both under its lock.
class Timer {
 public:
  /// Makes the alarm, silent until start(). Values as for PCAlarm::Create(). When the platform has
  /// no alarm to give, that is logged and the timer never goes off.
  Timer(unsigned int aTimeMs, int aRepeat);
  Timer(Timer const&) = delete;
  Timer& operator=(Timer const&) = delete;

  /// Takes the alarm back. As for PCAlarm::Destroy(), no lock may be held that the callback takes.
  virtual ~Timer();

  /// Lets the alarm call aController, which is not owned.
  /// @throws std::invalid_argument "NULL TimerController in Timer::start".
  void start(TimerController* aController);

  /// Takes the alarm's callback away. When it returns, the callback neither runs nor will run,
  /// unless it is the callback that calls. No lock may be held that the callback takes.
  void stop();

  /// Starts the period anew.
  void reset(unsigned int aTimeMs, int aRepeat);

  GUID const& getID() const { return mId; }

  /// True while the alarm's callback runs.
  bool isTriggered() const { return mTriggered; }

  /// The controller's, which ends a trigger under its lock.
  void setTriggered(bool aTriggered) { mTriggered = aTriggered; }

  bool isMarkedForDeletion() const { return mMarkedForDeletion; }

  /// Leaves the deletion to the end of the running trigger.
  void markForDeletion() { mMarkedForDeletion = true; }

  /// What the platform calls, on its alarm thread. @param aUserData the Timer. @return true.
  static bool OnAlarmCallback(PTEvent const* aEvent, void const* aUserData);

 private:
  TimerController* mController = nullptr;
  PCAlarm mAlarm;
  GUID mId;
  std::atomic<bool> mTriggered{false};
  std::atomic<bool> mMarkedForDeletion{false};
};

}  // namespace Zelv::Controller
