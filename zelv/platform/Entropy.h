#pragma once

#include <cstddef>

namespace Zelv::Platform {

/// The set's source of random bytes that nobody can guess.
class Entropy {
 public:
  /// Fills aSize bytes, at most 256. @return false when the source gives none; the buffer's content
  /// is then not defined. Does not wait once the set is up, and may be called from any thread.
  static bool Fill(void* aBuffer, std::size_t aSize);
};

}  // namespace Zelv::Platform
