#pragma once

#include <cstdint>
#include <string>

namespace Zelv {

/// What diagnostics tell of a device in the list of remote devices.
struct RemoteDevice {
  /// "TV" or "MOBILE".
  std::string type;
  std::string id;
  std::string name;
  /// When it was last heard, in seconds since 1970.
  std::int64_t stamp;
};

}  // namespace Zelv
