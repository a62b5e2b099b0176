#pragma once

#include <string>

#include "zelv/infrastructure/URL.h"

namespace Zelv {

/// What discovery reads of the local device at its start. Never changed afterwards: a second start
/// makes another one, and threads that are at work keep the one that they began with.
struct DiscoverySettings {
  Infrastructure::URL mMulticastSendUrl;
  Infrastructure::URL mMulticastListenUrl;
  std::string mMulticastGroup;
  std::string mMulticastPort;          ///< as text
  std::string mLocalInterfaceAddress;  ///< dotted; empty while it is not known
  std::string mLocalTvDeviceId;
  std::string mLocalTvModel;
  std::string mLocalTvLocation;
};

}  // namespace Zelv
