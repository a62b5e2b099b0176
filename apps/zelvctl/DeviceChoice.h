#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/zelvctl/KnownDevices.h"

namespace ZelvCtl {

/// Which device a word of the command line means: an identifier means one, a name those that are
/// called so.
class DeviceChoice {
 public:
  explicit DeviceChoice(std::string const& aText);

  /// The one of this identifier, in whatever form that was written.
  std::optional<Device> byId(std::vector<Device> const& aDevices) const;

  /// Those of this name, byte by byte.
  std::vector<Device> byName(std::vector<Device> const& aDevices) const;

  /// The one that is meant. Throws std::runtime_error that tells what to do when there is none, or
  /// more than one.
  Device among(std::vector<Device> const& aDevices) const;

 private:
  std::string const mText;
  std::string const mId;
};

}  // namespace ZelvCtl
