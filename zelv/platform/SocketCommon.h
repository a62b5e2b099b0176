#pragma once

#include <cstdint>

/// Types that the socket calls share.
struct SocketCommon {
  /// An IPv4 address in network order.
  struct In_addr {
    std::uint32_t mAddress = 0;
  };

  /// The 16-byte socket address of family 2 (IPv4), laid out as the kernel has it.
  struct SockAddr {
    std::uint16_t mFamily = 0;
    std::uint16_t mPort = 0;  ///< in network order
    In_addr mAddress;
    std::uint8_t mPadding[8] = {};
  };
};

static_assert(sizeof(SocketCommon::SockAddr) == 16, "the kernel reads it as it is");
