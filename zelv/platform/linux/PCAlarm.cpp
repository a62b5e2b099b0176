#include "zelv/platform/PCAlarm.h"

#include "zelv/platform/linux/AlarmSchedule.h"

using Zelv::Platform::AlarmSchedule;

struct PCAlarm::State : Zelv::Platform::AlarmEntry {};

PCAlarm::PCAlarm() : mState(std::make_shared<State>()) {}

PCAlarm::~PCAlarm() {
  Destroy();
}

bool PCAlarm::Create(CApplication*, unsigned int aTimeMs, int aRepeat) {
  return AlarmSchedule::Get().Add(mState, aTimeMs, aRepeat);
}

// Each operation holds the state itself: within a callback the alarm object may go at any time.
void PCAlarm::Destroy() {
  std::shared_ptr<State> const state = mState;
  AlarmSchedule::Get().Remove(state);
}

void PCAlarm::Reset(unsigned int aTimeMs, int aRepeat) {
  AlarmSchedule::Get().Restart(*mState, aTimeMs, aRepeat);
}

void PCAlarm::SetEventCallback(int aEvent, EventCallback aCallback, void*, void* aUserData) {
  if (aEvent == 0) {
    std::shared_ptr<State> const state = mState;
    AlarmSchedule::Get().SetCallback(state, aCallback, aUserData);
  }
}
