#include "zelv/platform/PCTime.h"

#include "zelv/platform/fake/FakeClock.h"

using Zelv::Platform::Fake::FakeClock;

std::int64_t PCTime::EpochTime() {
  std::int64_t const wall = FakeClock::WallMs();
  return wall >= 0 ? wall / 1000 : -((999 - wall) / 1000);
}

std::int64_t PCTime::MonotonicMs() {
  return FakeClock::MonotonicMs();
}

std::int64_t PCTime::MonotonicNs() {
  return FakeClock::MonotonicMs() * 1000000;
}

std::int64_t PCTime::CoarseMs() {
  return FakeClock::MonotonicMs();
}

void PCTime::Sleep(unsigned long aMilliseconds) {
  FakeClock::Advance(static_cast<std::int64_t>(aMilliseconds));
}
