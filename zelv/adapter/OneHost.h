#pragma once

#include "zelv/adapter/NetworkConnection.h"
#include "zelv/infrastructure/URL.h"

namespace Zelv::Adapter {

/// False for an address that answers would be multiplied by, or go nowhere in particular: a group,
/// the broadcast address, and 0.0.0.0. What strangers name for an answer is held against it.
inline bool isOneHost(Infrastructure::URL const& aURL) {
  std::string const domain = aURL.getDomainName();
  return !NetworkConnection::isMulticastAddress(domain) && domain != "255.255.255.255" &&
         domain != "0.0.0.0";
}

}  // namespace Zelv::Adapter
