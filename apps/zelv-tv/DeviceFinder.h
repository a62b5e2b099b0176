#pragma once

#include <stdexcept>
#include <string>

#include "apps/zelv-tv/DeviceWatch.h"
#include "apps/zelv-tv/Self.h"

namespace ZelvTv {

/// Finds the device that somebody means: by its ID, and otherwise by its name or address.
class DeviceFinder {
 public:
  /// Nobody is meant, or several are, or one that cannot be served.
  class NotFound : public std::runtime_error {
    using std::runtime_error::runtime_error;
  };

  /// All arguments outlive the object.
  DeviceFinder(Self const& aSelf, DeviceWatch const& aDevices) : mSelf(aSelf), mDevices(aDevices) {}

  /// Who commands may go to: this set, also as "-", or a mobile device. The library finds the
  /// address of no other, and would say nothing.
  ///
  /// @return the ID. Throws NotFound.
  std::string ForCommand(std::string const& aText) const;

 private:
  DeviceWatch::Entry find(std::string const& aText) const;

  Self const& mSelf;
  DeviceWatch const& mDevices;
};

}  // namespace ZelvTv
