#pragma once

#include <string>

#include "zelv/controller/testing/SmallDevices.h"
#include "zelv/interfaces/IAppData.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/OwnNetwork.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Controller::Testing {

/// The whole library on fresh directories, for what goes from a class to the tree through
/// InterfaceFactory. Providers and callbacks of a test MUST outlive it.
class RunningSystem {
 public:
  static constexpr char const* cFile = "<Configuration><A>1</A><B>2</B></Configuration>";

  RunningSystem() {
    directories.putReadOnly("Assets.xml", "<Assets/>");
    directories.putReadOnly("Configuration.xml", cFile);
    directories.putReadOnly("Applications.xml", "<Applications/>");
    directories.putReadOnly("Devices.xml", Zelv::Testing::cSmallDevices);
    directories.putReadOnly("Users.xml", "<Users/>");
    // What the start logs is for other tests.
    PCRealDebug::Silence();
    started = InterfaceFactory::initialize();
  }
  RunningSystem(RunningSystem const&) = delete;
  RunningSystem& operator=(RunningSystem const&) = delete;
  ~RunningSystem() {
    InterfaceFactory::terminate();
    PCRealDebug::SetLevel(PCRealDebug::Warning);
  }

  ICoreData* data() const {
    return dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
  }

  Platform::Fake::OwnNetwork network;
  Platform::Fake::TemporaryDirectories directories;
  bool started;
};

}  // namespace Zelv::Controller::Testing
