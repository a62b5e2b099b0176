#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "zelv/platform/PCMutex.h"

namespace Zelv {

/// The devices that left the list lately and why, for diagnostics. The oldest gives way to the
/// newest.
///
/// The lock is a leaf.
class DepartedDevices {
 public:
  static constexpr std::size_t cMost = 64;

  enum class Reason { Bye, Silence };

  struct Entry {
    /// "TV" or "MOBILE".
    std::string type;
    std::string id;
    std::string name;
    Reason reason;
    /// By PCTime::MonotonicMs().
    std::int64_t left;
  };

  /// A device that left before is noted anew.
  void note(Entry const& aEntry);

  /// The one that left last comes first.
  std::vector<Entry> all() const;

 private:
  mutable PCMutex mLock;
  std::deque<Entry> mEntries ZELV_GUARDED_BY(mLock);
};

}  // namespace Zelv
