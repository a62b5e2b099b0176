#pragma once

#include <string>

#include "apps/zelvctl/KnownDevices.h"
#include "zelv/infrastructure/URL.h"

namespace ZelvCtl {

/// What a device can be asked for, and where.
struct Service {
  std::string name;
  std::string protocol;
  std::string port;  ///< where sets have it

  static Service data() { return {"DataControl", "tcp", "4446"}; }
  static Service commands() { return {"CommandControl", "tcp", "4448"}; }
  static Service input() { return {"InputControl", "udp", "4449"}; }
  static Service assets() { return {"AssetManagement", "http", "4450"}; }

  /// At an address that was given by hand.
  Zelv::Infrastructure::URL at(std::string const& aAddress) const {
    return {protocol, aAddress, port, ""};
  }

  /// As the device announces it. Throws std::runtime_error when it does not, or when what it
  /// announces leads to no one host.
  Zelv::Infrastructure::URL of(Device const& aDevice) const;
};

}  // namespace ZelvCtl
