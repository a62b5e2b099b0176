#include "zelv/platform/PCMath.h"

#include <atomic>
#include <cstdint>

namespace {

std::atomic<std::uint32_t> theState{1};

// The generator that the C standard (ISO C, rand) gives as an example.
std::uint32_t after(std::uint32_t aState) {
  return aState * 1103515245U + 12345U;
}

}  // namespace

long PCMath::Random(unsigned long aSeed) {
  if (aSeed != 0) {
    theState.store(static_cast<std::uint32_t>(aSeed), std::memory_order_relaxed);
  }
  std::uint32_t state = theState.load(std::memory_order_relaxed);
  while (!theState.compare_exchange_weak(state, after(state), std::memory_order_relaxed)) {
  }
  return static_cast<long>(after(state) >> 16 & 0x7fff);
}
