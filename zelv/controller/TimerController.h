#pragma once

#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/LongestCall.h"
#include "zelv/controller/Timer.h"
#include "zelv/interfaces/IAppTimer.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"

namespace Zelv::Controller {

/// The named timers of applications and components.
///
/// The lock guards the table and is never held while a callback runs, nor while the platform is
/// asked to wait for one: a callback may then take any lock under which others create or reset
/// timers. Who has to wait for a callback waits for that one timer alone.
class TimerController : public virtual IAppTimer, public virtual ICoreTimer {
 public:
  TimerController();

  /// See IBaseTimer. A null aCallback makes a timer that tells nobody.
  GUID createTimer(unsigned int aTimeMs, int aRepeat, std::string const& aTimerName,
                   IBaseTimerCallback* aCallback) override;
  void destroyTimer(GUID const& aTimerID, IBaseTimerCallback* aCallback) override;
  void resetTimer(GUID const& aTimerID, unsigned int aTimeMs, int aRepeat) override;

  /// Stops and deletes every timer, waiting for running callbacks. MUST NOT be called from within
  /// one.
  ~TimerController() override;

  void initialize();
  void terminate();

  /// What the destructor does to the timers, for when those whom they would tell go before it.
  void destroyAllTimers();

  /// A timer's alarm went off. Runs the timer's callback on the calling thread and contains
  /// whatever it throws. Deletes the timer when it was marked meanwhile, so aTimer may be gone
  /// afterwards.
  /// @throws std::invalid_argument "NULL pointer in TimerController::timerTriggered".
  void timerTrigger(Timer* aTimer);

  LongestCall const& getLongestCallback() const { return mLongestCallback; }

 private:
  class Trigger;

  struct TimerData {
    std::unique_ptr<Timer> timer;
    IBaseTimerCallback* callback = nullptr;
    std::string name;
    /// The thread that the callback runs on, while it runs.
    std::thread::id runner;
  };

  using Table = std::map<GUID, TimerData>;

  /// The timer's entry, once its callback runs on no thread but this one, inside a delivery of the
  /// tree at once; the table's end when it is not there. Lets go of the lock while it waits.
  Table::iterator findIdle(GUID const& aTimerID) ZELV_REQUIRES(mMutex);
  void wakeWaiting() ZELV_REQUIRES(mMutex);

  /// Null when there is no such timer.
  std::unique_ptr<Timer> takeOut(GUID const& aTimerID);

  /// False when the timer's callback still runs: its end deletes the timer then.
  bool deleteOrMark(std::unique_ptr<Timer> aTimer);

  Table mTimers ZELV_GUARDED_BY(mMutex);
  PCMutex mMutex;
  /// One semaphore for each thread that waits for the end of a callback, on that thread's stack.
  std::vector<PCSemaphore*> mWaiting ZELV_GUARDED_BY(mMutex);
  LongestCall mLongestCallback;
};

}  // namespace Zelv::Controller
