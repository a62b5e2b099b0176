#include "zelv/controller/Timer.h"

#include <stdexcept>

#include "zelv/controller/TimerController.h"
#include "zelv/platform/CTaskManager.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Controller {

Timer::Timer(unsigned int aTimeMs, int aRepeat) {
  CApplication* task = g_TaskManager.GetApplication(DTV_APPLICATION_ZELV);
  if (!mAlarm.Create(task, aTimeMs, aRepeat)) {
    PCRealDebug::Print(PCRealDebug::Error, "Timer::Timer: the platform has no alarm left.");
  }
  mId = GUID::createGUID();
}

Timer::~Timer() {
  mAlarm.Destroy();
}

void Timer::start(TimerController* aController) {
  if (aController == nullptr) {
    throw std::invalid_argument("NULL TimerController in Timer::start");
  }
  mController = aController;
  mAlarm.SetEventCallback(0, OnAlarmCallback, nullptr, this);
}

void Timer::stop() {
  mAlarm.SetEventCallback(0, nullptr, nullptr, this);
}

void Timer::reset(unsigned int aTimeMs, int aRepeat) {
  mAlarm.Reset(aTimeMs, aRepeat);
}

bool Timer::OnAlarmCallback(PTEvent const* /*aEvent*/, void const* aUserData) {
  // The platform hands back, as const, the pointer that start() gave it.
  Timer* timer = const_cast<Timer*>(static_cast<Timer const*>(aUserData));
  if (timer == nullptr || timer->mController == nullptr) {
    return true;
  }
  timer->setTriggered(true);
  // The flag is cleared by the controller, under its lock: from then on another thread may delete
  // the timer, and it may be gone already when this call returns.
  timer->mController->timerTrigger(timer);
  return true;
}

}  // namespace Zelv::Controller
