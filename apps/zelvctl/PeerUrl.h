#pragma once

#include <optional>
#include <string>

#include "zelv/infrastructure/URL.h"

namespace ZelvCtl {

/// Addresses that others name, which lead wherever they like.
class PeerUrl {
 public:
  /// The URL in a text if it has this protocol, an address of one host and a port.
  static std::optional<Zelv::Infrastructure::URL> read(std::string const& aText,
                                                       std::string const& aProtocol);
};

}  // namespace ZelvCtl
