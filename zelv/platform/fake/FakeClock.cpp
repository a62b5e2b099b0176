#include "zelv/platform/fake/FakeClock.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>

#include "zelv/platform/linux/AlarmSchedule.h"

namespace Zelv::Platform::Fake {
namespace {

std::atomic<std::int64_t> theMonotonicMs{1000000};
// What the wall clock is ahead of the monotonic one.
std::atomic<std::int64_t> theWallOffsetMs{FakeClock::cStartWall * 1000 - 1000000};
std::mutex theAdvancing;

// Deadlines are whole milliseconds, since every alarm is set by this clock.
std::optional<std::int64_t> nextDeadlineMs() {
  AlarmSchedule::Lock const lock(AlarmSchedule::Get().Mutex());
  auto const deadline = AlarmSchedule::Get().NextDeadline(lock);
  return deadline ? std::optional(*deadline / 1000) : std::nullopt;
}

void raiseTo(std::int64_t aMonotonicMs) {
  std::int64_t now = theMonotonicMs;
  while (now < aMonotonicMs && !theMonotonicMs.compare_exchange_weak(now, aMonotonicMs)) {
  }
}

void runDue() {
  AlarmSchedule::Lock lock(AlarmSchedule::Get().Mutex());
  while (AlarmSchedule::Get().RunNext(lock, theMonotonicMs * 1000)) {
  }
}

}  // namespace

void FakeClock::Advance(std::int64_t aMilliseconds) {
  thread_local bool advances = false;
  std::unique_lock const alone =
      advances ? std::unique_lock<std::mutex>() : std::unique_lock(theAdvancing, std::try_to_lock);
  if (!alone.owns_lock()) {
    theMonotonicMs += aMilliseconds;
    return;
  }
  advances = true;
  std::int64_t const end = theMonotonicMs + aMilliseconds;
  for (auto next = nextDeadlineMs(); next && *next <= std::max<std::int64_t>(end, theMonotonicMs);
       next = nextDeadlineMs()) {
    raiseTo(*next);
    runDue();
  }
  raiseTo(end);
  advances = false;
}

bool FakeClock::AdvanceToNextAlarm() {
  auto const next = nextDeadlineMs();
  if (next) {
    Advance(std::max<std::int64_t>(*next - theMonotonicMs, 0));
  }
  return next.has_value();
}

void FakeClock::SetWall(std::int64_t aEpochSeconds) {
  theWallOffsetMs = aEpochSeconds * 1000 - theMonotonicMs;
}

std::int64_t FakeClock::WallMs() {
  return theMonotonicMs + theWallOffsetMs;
}

std::int64_t FakeClock::MonotonicMs() {
  return theMonotonicMs;
}

void FakeClock::Reset() {
  SetWall(cStartWall);
}

}  // namespace Zelv::Platform::Fake
