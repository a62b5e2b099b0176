#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "zelv/controller/LongestCall.h"
#include "zelv/platform/PCTime.h"

namespace Zelv::Controller {

/// Times the deliveries of one change.
///
/// A few are timed one by one. Of many, two readings of the clock each would cost several times
/// what the deliveries cost, so they are timed together, by a clock that is nearly free; and only
/// when they took long the deliveries of the next changes are timed one by one, to see whose fault
/// it is.
class TimedDeliveries {
 public:
  /// So many at most are always timed one by one.
  static constexpr std::size_t cFew = 4;
  /// For so many changes all are, after one that took long.
  static constexpr int cSuspicious = 8;

  /// @param aSuspicious  for how many changes more; kept by the caller between them.
  TimedDeliveries(LongestCall& aLongest, std::size_t aCount, std::string const& aPath,
                  int& aSuspicious)
      : mLongest(aLongest),
        mCount(aCount),
        mPath(aPath),
        mSuspicious(aSuspicious),
        mOneByOne(aCount <= cFew || aSuspicious > 0),
        mBegin(mOneByOne ? 0 : PCTime::CoarseMs()) {
    if (mSuspicious > 0) {
      --mSuspicious;
    }
  }
  TimedDeliveries(TimedDeliveries const&) = delete;
  TimedDeliveries& operator=(TimedDeliveries const&) = delete;
  ~TimedDeliveries() {
    if (!mOneByOne) {
      std::int64_t const took = PCTime::CoarseMs() - mBegin;
      if (took > 0) {
        noteTogether(took);
      }
    }
  }

  /// Where each delivery is to be noted; null when they are timed together.
  LongestCall* each() const { return mOneByOne ? &mLongest : nullptr; }

 private:
  void noteTogether(std::int64_t aTook);

  LongestCall& mLongest;
  std::size_t const mCount;
  std::string const& mPath;
  int& mSuspicious;
  bool const mOneByOne;
  std::int64_t const mBegin;
};

}  // namespace Zelv::Controller
