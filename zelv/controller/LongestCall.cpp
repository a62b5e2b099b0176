#include "zelv/controller/LongestCall.h"

#include <exception>

#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TypeName.h"

namespace Zelv::Controller {

// Calls are noted on their way out, where nothing may be thrown: without memory it stays unnoted.
void LongestCall::keep(std::int64_t aNanoseconds, char const* aOperation, char const* aCallee,
                       std::string const& aSubject) noexcept {
  try {
    Record record{aOperation, aCallee, aSubject.substr(0, cSubject), aNanoseconds};
    TCAutoLock lock(mLock);
    if (aNanoseconds > mRecord.nanoseconds) {
      mRecord = std::move(record);
      mLongest.store(aNanoseconds, std::memory_order_relaxed);
    }
  } catch (std::exception const&) {
    return;
  }
}

LongestCall::Record LongestCall::get() const {
  Record record;
  {
    TCAutoLock lock(mLock);
    record = mRecord;
  }
  record.callee = Platform::TypeName::Of(record.callee);
  return record;
}

}  // namespace Zelv::Controller
