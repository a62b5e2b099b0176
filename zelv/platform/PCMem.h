#pragma once

#include <cstddef>

/// Copying and filling memory.
class PCMem {
 public:
  /// Copies aSize bytes. The two areas MUST NOT overlap. A size of 0 allows null pointers.
  static void Copy(void* aTo, void const* aFrom, std::size_t aSize);

  /// Fills aSize bytes with the low byte of aValue. A size of 0 allows a null pointer.
  static void Set(void* aTo, int aValue, std::size_t aSize);
};
