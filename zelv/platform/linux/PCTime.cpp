#include "zelv/platform/PCTime.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

std::int64_t PCTime::EpochTime() {
  return std::time(nullptr);
}

std::int64_t PCTime::MonotonicMs() {
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

std::int64_t PCTime::MonotonicNs() {
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

// Moves with the kernel's tick, of which there are at least 100 a second.
std::int64_t PCTime::CoarseMs() {
  timespec now;
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void PCTime::Sleep(unsigned long aMilliseconds) {
  // A century, so that the sum cannot run over.
  constexpr unsigned long cMostSeconds = 36525UL * 86400;
  timespec until;
  ::clock_gettime(CLOCK_MONOTONIC, &until);
  until.tv_sec += static_cast<std::time_t>(std::min(aMilliseconds / 1000, cMostSeconds));
  until.tv_nsec += static_cast<long>(aMilliseconds % 1000) * 1000000;
  if (until.tv_nsec >= 1000000000) {
    until.tv_nsec -= 1000000000;
    ++until.tv_sec;
  }
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
}
