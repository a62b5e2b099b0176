#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The longest of all calls of one kind, with its name, for diagnostics. A call that is not the
/// longest so far costs no more than a comparison.
///
/// The lock is a leaf.
class LongestCall {
 public:
  struct Record {
    /// Of the callee, as "getData".
    std::string operation;
    /// The class of the callee.
    std::string callee;
    /// What it was about: a path, the name of a command or timer, a type of input. Only the first
    /// bytes of a long one.
    std::string subject;
    /// 0 when there was no call yet.
    std::int64_t nanoseconds = 0;
  };

  static constexpr std::size_t cSubject = 1024;

  /// @param aCallee  the class as std::type_info names it, or a text for readers.
  void note(std::int64_t aNanoseconds, char const* aOperation, char const* aCallee,
            std::string const& aSubject) {
    if (aNanoseconds > mLongest.load(std::memory_order_relaxed)) {
      keep(aNanoseconds, aOperation, aCallee, aSubject);
    }
  }

  Record get() const;

 private:
  void keep(std::int64_t aNanoseconds, char const* aOperation, char const* aCallee,
            std::string const& aSubject) noexcept;

  std::atomic<std::int64_t> mLongest{0};
  mutable PCMutex mLock;
  Record mRecord ZELV_GUARDED_BY(mLock);
};

}  // namespace Zelv::Controller
