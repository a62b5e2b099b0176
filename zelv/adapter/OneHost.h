#pragma once

#include <string>

#include "zelv/adapter/NetworkConnection.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/platform/CCmSocket.h"

namespace Zelv::Adapter {

/// False for an address that answers would be multiplied by, or go nowhere in particular: a group,
/// the broadcast address, and 0.0.0.0, which is this set itself. What strangers name for an answer
/// is held against it.
///
/// A number has many spellings ("0xe0.0.0.1", "0"), so it is looked at as senders will read it.
inline bool isOneHost(Infrastructure::URL const& aURL) {
  std::string const domain = aURL.getDomainName();
  // Of a text that is no number this is the broadcast address, to which nobody is allowed to send.
  std::string const address =
      CCmSocket::AddressValueToString(CCmSocket::StringToNumeric(domain.c_str()));
  return !NetworkConnection::isMulticastAddress(domain) &&
         !NetworkConnection::isMulticastAddress(address) && domain != "255.255.255.255" &&
         address != "0.0.0.0";
}

}  // namespace Zelv::Adapter
