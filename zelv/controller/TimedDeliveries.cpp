#include "zelv/controller/TimedDeliveries.h"

#include <array>
#include <cstdio>

namespace Zelv::Controller {

// What the clock may lag is taken off, so that no call is said to have been longer than it was; the
// same call, timed by itself later, is then the longer one and replaces this note by its name.
void TimedDeliveries::noteTogether(std::int64_t aTook) {
  mSuspicious = cSuspicious;
  std::array<char, 48> callee;
  std::snprintf(callee.data(), callee.size(), "one of %zu subscribers", mCount);
  mLongest.note((aTook - PCTime::cCoarseLagMs) * 1000000, "onData", callee.data(), mPath);
}

}  // namespace Zelv::Controller
