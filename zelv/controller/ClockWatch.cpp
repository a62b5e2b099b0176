#include "zelv/controller/ClockWatch.h"

#include <cstdlib>

#include "zelv/platform/PCTime.h"

namespace Zelv::Controller {

namespace {

constexpr std::int64_t tolerance = 2;

}  // namespace

ClockWatch::ClockWatch() : mDifference(difference()) {}

std::int64_t ClockWatch::difference() const {
  return PCTime::EpochTime() - PCTime::MonotonicMs() / 1000;
}

// Small differences, of rounding or of a clock being slewed, are left to add up until they count.
std::int64_t ClockWatch::takeJump() {
  std::int64_t const jump = difference() - mDifference;
  if (std::llabs(jump) <= tolerance) {
    return 0;
  }
  mDifference += jump;
  return jump;
}

}  // namespace Zelv::Controller
