#pragma once

#include <cstdint>

/// Byte order of the network.
class PCNetwork {
 public:
  /// A 16-bit number from the machine's order to the network's.
  static std::uint16_t Htons(std::uint16_t aValue);
};
