#include "zelv/platform/linux/AlarmDriver.h"

#include <atomic>

#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/FakeClock.h"

namespace Zelv::Platform {
namespace {
std::atomic<int> theFailing{0};
}  // namespace

std::int64_t AlarmDriver::NowUs() {
  return Fake::FakeClock::MonotonicMs() * 1000;
}

// Called under the schedule's lock, so that no two take the same fault.
bool AlarmDriver::Admit(AlarmSchedule::Lock const&) {
  if (theFailing > 0) {
    --theFailing;
    return false;
  }
  return true;
}

// The test's thread looks at the deadlines anew at each step.
void AlarmDriver::Changed(AlarmSchedule::Lock const&) {}

void AlarmDriver::End(AlarmSchedule::Lock&) {}

namespace Fake {

void FakeAlarm::FailNextCreates(int aCount) {
  theFailing = aCount;
}

int FakeAlarm::Created() {
  AlarmSchedule::Lock const lock(AlarmSchedule::Get().Mutex());
  return AlarmSchedule::Get().Created(lock);
}

int FakeAlarm::Armed() {
  AlarmSchedule::Lock const lock(AlarmSchedule::Get().Mutex());
  return AlarmSchedule::Get().Armed(lock);
}

void FakeAlarm::Reset() {
  theFailing = 0;
}

}  // namespace Fake
}  // namespace Zelv::Platform
