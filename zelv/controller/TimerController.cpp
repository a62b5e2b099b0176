#include "zelv/controller/TimerController.h"

#include <exception>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/controller/TimedCall.h"
#include "zelv/interfaces/StatusInformation.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

namespace {

/// Identifiers of detail lines are written out only when somebody reads them.
std::string textForDetail(GUID const& aTimerID) {
  return PCRealDebug::Enabled(PCRealDebug::Detail) ? aTimerID.toString() : std::string();
}

void tellStatus(IBaseTimerCallback& aCallback, StatusInformation const& aStatus,
                GUID const& aTimerID) {
  try {
    aCallback.onStatus(aStatus, aTimerID);
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "TimerController::tellStatus: timer '%s': onStatus() threw.",
                       aTimerID.toString().c_str());
  }
}

/// Whatever an application throws ends here; the alarm thread and the timer go on.
void runCallback(IBaseTimerCallback* aCallback, std::string const& aName, GUID const& aTimerID,
                 LongestCall& aLongest) {
  if (aCallback == nullptr) {
    return;
  }
  try {
    TimedCall const call(aLongest, "onTimer", typeid(*aCallback), aName);
    aCallback->onTimer(aName, aTimerID);
  } catch (std::exception const& exception) {
    tellStatus(*aCallback, StatusInformation(exception), aTimerID);
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "TimerController::timerTrigger: timer '%s': onTimer() threw something that "
                       "is no std::exception.",
                       aTimerID.toString().c_str());
  }
}

void reportUnknown(IBaseTimerCallback* aCallback, GUID const& aTimerID) {
  PCRealDebug::Print(PCRealDebug::Warning, "TimerController::destroyTimer: Timer '%s' not found.",
                     aTimerID.toString().c_str());
  if (aCallback != nullptr) {
    std::invalid_argument const unknown("Timer ID does not refer to a known timer");
    tellStatus(*aCallback, StatusInformation(unknown), aTimerID);
  }
}

}  // namespace

/// One run of a timer's callback. Its end settles what becomes of the timer, however it comes
/// about. The platform runs one alarm at a time, so a timer never has two.
class TimerController::Trigger {
 public:
  Trigger(TimerController& aController, Timer* aTimer)
      : mController(aController), mTimer(aTimer), mId(aTimer->getID()) {}
  Trigger(Trigger const&) = delete;
  Trigger& operator=(Trigger const&) = delete;
  ~Trigger();

  /// False when the timer is no longer in the table.
  bool begin();
  void run() const { runCallback(mCallback, mName, mId, mController.mLongestCallback); }

 private:
  /// True when the timer is to be deleted. From then on it belongs to this thread; when false,
  /// another thread may delete it at any time.
  bool end();

  TimerController& mController;
  Timer* mTimer;
  GUID const mId;
  IBaseTimerCallback* mCallback = nullptr;
  std::string mName;
};

bool TimerController::Trigger::begin() {
  TCAutoLock lock(mController.mMutex);
  auto const entry = mController.mTimers.find(mId);
  if (entry == mController.mTimers.end()) {
    return false;
  }
  mCallback = entry->second.callback;
  mName = entry->second.name;
  mTimer->setTriggered(true);
  entry->second.runner = std::this_thread::get_id();
  return true;
}

bool TimerController::Trigger::end() {
  TCAutoLock lock(mController.mMutex);
  auto const entry = mController.mTimers.find(mId);
  if (entry != mController.mTimers.end()) {
    entry->second.runner = std::thread::id();
  }
  mController.wakeWaiting();
  mTimer->setTriggered(false);
  return mTimer->isMarkedForDeletion();
}

TimerController::Trigger::~Trigger() {
  if (end()) {
    delete mTimer;
    PCRealDebug::Print(PCRealDebug::Detail, "TimerController::timerTrigger: Deleted timer '%s'.",
                       textForDetail(mId).c_str());
  }
}

TimerController::TimerController() = default;

TimerController::~TimerController() {
  TraceScope trace("TimerController::~TimerController");
  destroyAllTimers();
}

void TimerController::destroyAllTimers() {
  for (;;) {
    GUID next;
    {
      TCAutoLock lock(mMutex);
      if (mTimers.empty()) {
        return;
      }
      next = mTimers.begin()->first;
    }
    if (std::unique_ptr<Timer> timer = takeOut(next)) {
      timer->stop();
      deleteOrMark(std::move(timer));
    }
  }
}

void TimerController::initialize() {
  TraceScope trace("TimerController::initialize");
}

void TimerController::terminate() {
  TraceScope trace("TimerController::terminate");
}

GUID TimerController::createTimer(unsigned int aTimeMs, int aRepeat, std::string const& aTimerName,
                                  IBaseTimerCallback* aCallback) {
  TraceScope trace("TimerController::createTimer");
  auto owned = std::make_unique<Timer>(aTimeMs, aRepeat);
  Timer* const timer = owned.get();
  GUID const id = timer->getID();
  TimerData data{std::move(owned), aCallback, aTimerName, {}};
  {
    TCAutoLock lock(mMutex);
    mTimers.emplace(id, std::move(data));
  }
  timer->start(this);
  return id;
}

void TimerController::destroyTimer(GUID const& aTimerID, IBaseTimerCallback* aCallback) {
  TraceScope trace("TimerController::destroyTimer");
  std::unique_ptr<Timer> timer = takeOut(aTimerID);
  if (!timer) {
    reportUnknown(aCallback, aTimerID);
    return;
  }
  // Waits for an alarm that went off but has not looked into the table yet. Inside a delivery the
  // callback may be running, and need the lock that the delivery holds: it is left alone.
  if (!InsideDelivery::isThisThread() || !timer->isTriggered()) {
    timer->stop();
  }
  std::string const id = textForDetail(aTimerID);
  PCRealDebug::Print(PCRealDebug::Detail, "TimerController::destroyTimer: Timer '%s' stopped.",
                     id.c_str());
  if (deleteOrMark(std::move(timer))) {
    PCRealDebug::Print(PCRealDebug::Detail, "TimerController::destroyTimer: Timer '%s' deleted.",
                       id.c_str());
  } else {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "TimerController::destroyTimer: Timer '%s' marked for deletion.",
                       id.c_str());
  }
}

void TimerController::resetTimer(GUID const& aTimerID, unsigned int aTimeMs, int aRepeat) {
  TraceScope trace("TimerController::resetTimer");
  {
    TCAutoLock lock(mMutex);
    auto const entry = mTimers.find(aTimerID);
    if (entry != mTimers.end()) {
      entry->second.timer->reset(aTimeMs, aRepeat);
      return;
    }
  }
  PCRealDebug::Print(PCRealDebug::Error, "TimerController::resetTimer: Timer '%s' not found.",
                     aTimerID.toString().c_str());
}

void TimerController::timerTrigger(Timer* aTimer) {
  TraceScope trace("TimerController::timerTrigger");
  if (aTimer == nullptr) {
    throw std::invalid_argument("NULL pointer in TimerController::timerTriggered");
  }
  Trigger trigger(*this, aTimer);
  if (trigger.begin()) {
    trigger.run();
  } else {
    PCRealDebug::Print(PCRealDebug::Warning, "TimerController::timerTrigger: timer '%s' not found!",
                       aTimer->getID().toString().c_str());
  }
}

TimerController::Table::iterator TimerController::findIdle(GUID const& aTimerID) {
  for (;;) {
    auto const entry = mTimers.find(aTimerID);
    if (entry == mTimers.end()) {
      return entry;
    }
    std::thread::id const runner = entry->second.runner;
    if (runner == std::thread::id() || runner == std::this_thread::get_id() ||
        InsideDelivery::isThisThread()) {
      return entry;
    }
    PCSemaphore ended;
    ended.Create(0);
    mWaiting.push_back(&ended);
    mMutex.Unlock();
    ended.Take();
    mMutex.Lock();
  }
}

void TimerController::wakeWaiting() {
  for (PCSemaphore* ended : mWaiting) {
    ended->Give();
  }
  mWaiting.clear();
}

std::unique_ptr<Timer> TimerController::takeOut(GUID const& aTimerID) {
  TCAutoLock lock(mMutex);
  auto const entry = findIdle(aTimerID);
  if (entry == mTimers.end()) {
    return nullptr;
  }
  std::unique_ptr<Timer> timer = std::move(entry->second.timer);
  mTimers.erase(entry);
  return timer;
}

bool TimerController::deleteOrMark(std::unique_ptr<Timer> aTimer) {
  {
    TCAutoLock lock(mMutex);
    if (aTimer->isTriggered()) {
      aTimer.release()->markForDeletion();
      return false;
    }
  }
  aTimer.reset();
  return true;
}

}  // namespace Zelv::Controller
