#pragma once

#include <net/if.h>

#include <string>
#include <vector>

#include "zelv/platform/SocketCommon.h"

namespace Zelv::Platform {

/// The kernel's list of interfaces with an IPv4 address, one entry an address.
class InterfaceRequests {
 public:
  /// Asks the kernel. @return false on failure, with errno set.
  bool read(int aSocket);

  /// For tests: takes the list as given.
  void take(std::vector<ifreq> const& aRequests) { mRequests = aRequests; }

  /// Appends the addresses of the interface of exactly this name; aliases have names of their own.
  void addressesOf(std::string const& aName, std::vector<SocketCommon::In_addr>& aAddresses) const;

 private:
  std::vector<ifreq> mRequests;
};

}  // namespace Zelv::Platform
