#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelv/platform/SocketCommon.h"

namespace Zelv::Platform {

/// What the kernel tells of the machine's network interfaces.
class InterfaceQuery {
 public:
  /// The names of all interfaces, in the kernel's order. Empty on failure.
  static std::vector<std::string> Names();

  /// Reads the hardware address.
  ///
  /// @param aSocket  any open socket of family 2.
  /// @param aMac     6 bytes, written on success only.
  /// @return false on failure, with errno set.
  static bool HardwareAddress(int aSocket, std::string const& aName, std::uint8_t* aMac);

  /// Appends the IPv4 addresses of the interface of exactly this name, in the kernel's order.
  /// @return false on failure, with errno set.
  static bool Addresses(int aSocket, std::string const& aName,
                        std::vector<SocketCommon::In_addr>& aAddresses);
};

}  // namespace Zelv::Platform
