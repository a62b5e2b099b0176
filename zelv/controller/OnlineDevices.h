#pragma once

#include <list>
#include <set>
#include <string>

#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Controller {

/// The list of devices that are there, for looking up many.
class OnlineDevices {
 public:
  /// The list MUST outlive the object.
  explicit OnlineDevices(std::list<std::string> const& aDevices)
      : mInOrder(aDevices), mIds(aDevices.begin(), aDevices.end()) {}

  bool has(std::string const& aDeviceId) const { return mIds.contains(aDeviceId); }

  /// For the log: gives each of the list up to and including aDeviceId, when details are logged at
  /// all.
  template <typename Log>
  void forEachUpTo(std::string const& aDeviceId, Log const& aLog) const {
    if (!PCRealDebug::Enabled(PCRealDebug::Detail)) {
      return;
    }
    for (std::string const& device : mInOrder) {
      aLog(device);
      if (device == aDeviceId) {
        return;
      }
    }
  }

 private:
  std::list<std::string> const& mInOrder;
  std::set<std::string> const mIds;
};

}  // namespace Zelv::Controller
