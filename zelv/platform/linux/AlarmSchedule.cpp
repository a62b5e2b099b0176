#include "zelv/platform/linux/AlarmSchedule.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/linux/AlarmDriver.h"

namespace Zelv::Platform {
namespace {

// Tells threads apart by an address that each has for itself.
void const* self() {
  thread_local char mark;
  return &mark;
}

void call(PCAlarm::EventCallback aCallback, void const* aUserData) {
  try {
    aCallback(nullptr, aUserData);
  } catch (std::exception const& exception) {
    PCRealDebug::Print(PCRealDebug::Error, "PCAlarm: a callback was left by exception '%s'",
                       exception.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error, "PCAlarm: a callback was left by an unknown exception");
  }
}

// The first multiple of the period that lies ahead: what was missed while a callback took its time
// is not made up for, so that a short period cannot pile up work.
std::int64_t nextDeadline(std::int64_t aDeadline, std::int64_t aPeriod, std::int64_t aNow) {
  return aNow + aPeriod - (aNow - aDeadline) % aPeriod;
}

}  // namespace

// Never destroyed: alarms of the host may be destroyed after the static objects.
AlarmSchedule& AlarmSchedule::Get() {
  static auto& schedule = *new AlarmSchedule;
  return schedule;
}

bool AlarmSchedule::Add(std::shared_ptr<AlarmEntry> const& aEntry, unsigned int aTimeMs,
                        int aRepeat) {
  Lock const lock(mMutex);
  if (aEntry->created) {
    return false;
  }
  try {
    if (!AlarmDriver::Admit(lock)) {
      return false;
    }
    aEntry->spare = mQueue.extract(mQueue.emplace(0, aEntry));
  } catch (std::bad_alloc const&) {
    return false;
  }
  aEntry->created = true;
  ++mCreated;
  arm(*aEntry, aTimeMs, aRepeat);
  AlarmDriver::Changed(lock);
  return true;
}

void AlarmSchedule::Restart(AlarmEntry& aEntry, unsigned int aTimeMs, int aRepeat) {
  Lock const lock(mMutex);
  if (aEntry.created) {
    dequeue(aEntry);
    arm(aEntry, aTimeMs, aRepeat);
    AlarmDriver::Changed(lock);
  }
}

void AlarmSchedule::SetCallback(std::shared_ptr<AlarmEntry> const& aEntry,
                                PCAlarm::EventCallback aCallback, void* aUserData) {
  Lock lock(mMutex);
  aEntry->callback = aCallback;
  aEntry->userData = aUserData;
  awaitCallback(lock, *aEntry);
}

void AlarmSchedule::Remove(std::shared_ptr<AlarmEntry> const& aEntry) {
  Lock lock(mMutex);
  bool const wasCreated = aEntry->created;
  if (wasCreated) {
    dequeue(*aEntry);
    aEntry->spare = {};
    aEntry->created = false;
    aEntry->callback = nullptr;
    --mCreated;
  }
  awaitCallback(lock, *aEntry);
  if (wasCreated && mCreated == 0) {
    AlarmDriver::End(lock);
  }
}

void AlarmSchedule::arm(AlarmEntry& aEntry, unsigned int aTimeMs, int aRepeat) {
  aEntry.periodUs = std::max<std::int64_t>(aTimeMs, 1) * 1000;
  aEntry.remaining = aRepeat < 0 ? -1 : std::max(aRepeat, 1);
  enqueue(aEntry, AlarmDriver::NowUs() + aEntry.periodUs);
}

void AlarmSchedule::enqueue(AlarmEntry& aEntry, std::int64_t aDeadlineUs) {
  aEntry.spare.key() = aDeadlineUs;
  aEntry.place = mQueue.insert(std::move(aEntry.spare));
  aEntry.queued = true;
}

void AlarmSchedule::dequeue(AlarmEntry& aEntry) {
  if (aEntry.queued) {
    aEntry.spare = mQueue.extract(aEntry.place);
    aEntry.queued = false;
  }
}

std::optional<std::int64_t> AlarmSchedule::NextDeadline(Lock const&) const {
  if (mQueue.empty()) {
    return std::nullopt;
  }
  return mQueue.begin()->first;
}

// The next deadline stands before the callback runs: so the callback may destroy or reset the alarm
// like anybody else, and nothing is touched afterwards that it may have destroyed.
bool AlarmSchedule::RunNext(Lock& aLock, std::int64_t aNowUs) {
  if (mQueue.empty() || mQueue.begin()->first > aNowUs) {
    return false;
  }
  std::int64_t const deadline = mQueue.begin()->first;
  std::shared_ptr<AlarmEntry> const entry = mQueue.begin()->second;
  dequeue(*entry);
  // A period that passes before there is a callback does not count, so that an alarm that goes off
  // once cannot be lost between Create() and SetEventCallback().
  bool const goesOff = entry->callback != nullptr;
  if (goesOff && entry->remaining > 0) {
    --entry->remaining;
  }
  if (entry->remaining != 0) {
    enqueue(*entry, nextDeadline(deadline, entry->periodUs, aNowUs));
  }
  if (goesOff) {
    goOff(aLock, entry);
  }
  return true;
}

void AlarmSchedule::goOff(Lock& aLock, std::shared_ptr<AlarmEntry> const& aEntry) {
  PCAlarm::EventCallback const callback = aEntry->callback;
  void const* const userData = aEntry->userData;
  mRunning = aEntry;
  mRunner = self();
  ++mRuns;
  aLock.unlock();
  call(callback, userData);
  aLock.lock();
  mRunning.reset();
  mRunner = nullptr;
  mCallbackEnded.notify_all();
}

void AlarmSchedule::awaitCallback(Lock& aLock, AlarmEntry const& aEntry) {
  if (mRunning.get() != &aEntry || mRunner == self()) {
    return;
  }
  unsigned long const run = mRuns;
  mCallbackEnded.wait(aLock, [this, run] { return !mRunning || mRuns != run; });
}

void AlarmSchedule::ForgetOtherThreads(Lock const&) {
  if (mRunner != self()) {
    mRunning.reset();
    mRunner = nullptr;
  }
}

}  // namespace Zelv::Platform
