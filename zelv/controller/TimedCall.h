#pragma once

#include <cstdint>
#include <string>
#include <typeinfo>

#include "zelv/controller/LongestCall.h"
#include "zelv/platform/PCTime.h"

namespace Zelv::Controller {

/// One call to an object of others, timed from here to the end of the scope, however that comes
/// about: two readings of the clock, and nothing more while there was a longer call.
class TimedCall {
 public:
  /// All arguments outlive the object; the callee itself need not outlive its call, which is why it
  /// is its class that is given.
  TimedCall(LongestCall& aLongest, char const* aOperation, std::type_info const& aCallee,
            std::string const& aSubject)
      : TimedCall(aLongest, aOperation, aCallee, aSubject, PCTime::MonotonicNs()) {}

  /// @param aBegin  the end of the call before, where nothing lies between the two.
  TimedCall(LongestCall& aLongest, char const* aOperation, std::type_info const& aCallee,
            std::string const& aSubject, std::int64_t aBegin)
      : mLongest(aLongest),
        mOperation(aOperation),
        mCallee(aCallee.name()),
        mSubject(aSubject),
        mBegin(aBegin) {}
  TimedCall(TimedCall const&) = delete;
  TimedCall& operator=(TimedCall const&) = delete;
  ~TimedCall() {
    if (!mEnded) {
      end();
    }
  }

  /// Ends it before the scope does; to be called once. @return the time.
  std::int64_t end() {
    std::int64_t const now = PCTime::MonotonicNs();
    mEnded = true;
    mLongest.note(now - mBegin, mOperation, mCallee, mSubject);
    return now;
  }

 private:
  LongestCall& mLongest;
  char const* const mOperation;
  char const* const mCallee;
  std::string const& mSubject;
  std::int64_t const mBegin;
  bool mEnded = false;
};

}  // namespace Zelv::Controller
