#pragma once

#include <string>

#include "zelv/controller/testing/SmallDevices.h"
#include "zelv/core/Core.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/OwnNetwork.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Testing {

/// A set with small factory files, on the fakes, with its log. The library does not run at first,
/// and is stopped at the end. Discovery is off: many of these run at a time on one machine.
class SmallSet {
 public:
  static constexpr char const* cConfiguration =
      "<Configuration><ZelvDiscovery>false</ZelvDiscovery></Configuration>";
  static constexpr char const* cApplications =
      "<Applications><ActiveApplication><Name>none</Name><Type/></ActiveApplication>"
      "</Applications>";

  static constexpr char const* cAssets = "<Assets/>";
  static constexpr char const* cUsers = "<Users/>";

  static constexpr char const* cDiscoveryPath = "/Zelv/Configuration/ZelvDiscovery/text()";
  static constexpr char const* cNamePath = "/Zelv/Applications/ActiveApplication/Name/text()";

  SmallSet() {
    directories.putReadOnly("Assets.xml", cAssets);
    directories.putReadOnly("Configuration.xml", cConfiguration);
    directories.putReadOnly("Applications.xml", cApplications);
    directories.putReadOnly("Devices.xml", cSmallDevices);
    directories.putReadOnly("Users.xml", cUsers);
  }
  SmallSet(SmallSet const&) = delete;
  SmallSet& operator=(SmallSet const&) = delete;
  ~SmallSet() { InterfaceFactory::terminate(); }

  /// Starts the library. @return null when the start failed.
  static Core* start() { return InterfaceFactory::initialize() ? Core::requestCore() : nullptr; }

  /// The ports of the services are fixed, and other sets run at the same time.
  Platform::Fake::OwnNetwork network;
  Platform::Fake::TemporaryDirectories directories;
  Platform::Fake::LogCapture log;
};

}  // namespace Zelv::Testing
