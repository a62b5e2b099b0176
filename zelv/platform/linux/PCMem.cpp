#include "zelv/platform/PCMem.h"

#include <cstring>

void PCMem::Copy(void* aTo, void const* aFrom, std::size_t aSize) {
  if (aSize > 0) {
    std::memcpy(aTo, aFrom, aSize);
  }
}

void PCMem::Set(void* aTo, int aValue, std::size_t aSize) {
  if (aSize > 0) {
    std::memset(aTo, aValue, aSize);
  }
}
