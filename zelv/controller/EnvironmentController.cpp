#include "zelv/controller/EnvironmentController.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "zelv/core/AssetProvider.h"
#include "zelv/core/GenericDataProvider.h"
#include "zelv/core/MultiAccount.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

using Infrastructure::ZelvFileUtil;
using Platform::Directories;

struct EnvironmentController::Standard {
  char const* name;
  char const* baseXPath;
  char const* file;
  char const* noFile;
  char const* noComponent;
};

namespace {

IBaseLifetimeCallback* makeGenericDataProvider(std::string const& aBaseXPath,
                                               std::string const& aDataFileName) {
  return new (std::nothrow) Core::GenericDataProvider(aBaseXPath, aDataFileName, true);
}

IBaseLifetimeCallback* makeMultiAccount() {
  return new (std::nothrow) Core::MultiAccount;
}

IBaseLifetimeCallback* makeMultiDevice() {
  return new (std::nothrow) Core::MultiDevice;
}

IBaseLifetimeCallback* makeAssetProvider() {
  return new (std::nothrow) Core::AssetProvider;
}

}  // namespace

EnvironmentController::EnvironmentController()
    : EnvironmentController(
          Makers{makeGenericDataProvider, makeMultiAccount, makeMultiDevice, makeAssetProvider}) {}

EnvironmentController::EnvironmentController(Makers const& aMakers) : mMakers(aMakers) {}

EnvironmentController::~EnvironmentController() {
  TCAutoLock lock(mMutex);
  for (auto const& entry : EnvironmentController::getRegisteredComponents()) {
    PCRealDebug::Print(PCRealDebug::Trace,
                       "EnvironmentController::~EnvironmentController: Removing component '%s' "
                       "from Environment List",
                       entry.first.c_str());
    std::unique_ptr<IBaseLifetimeCallback> component;
    takeOut(entry.first, component);
  }
}

GUID EnvironmentController::registerComponent(std::string const& aComponentName,
                                              IBaseLifetimeCallback* aComponent) {
  TraceScope trace("EnvironmentController::registerComponent");
  TCAutoLock lock(mMutex);
  if (aComponent == nullptr) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "EnvironmentController::registerComponent: Component callback pointer is NULL.");
    throw std::runtime_error("aCallback is NULL!");
  }
  insert(aComponentName, aComponent);
  return GUID::createGUID();
}

void EnvironmentController::unregisterComponent(std::string const& aComponentName) {
  TraceScope trace("EnvironmentController::unregisterComponent");
  // Goes after the lock is released: its end may wait for a thread that asks for components.
  std::unique_ptr<IBaseLifetimeCallback> component;
  TCAutoLock lock(mMutex);
  if (!takeOut(aComponentName, component)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "EnvironmentController::unregisterComponent: Component not found!");
  }
}

EnvironmentController::Table EnvironmentController::getRegisteredComponents() {
  TCAutoLock lock(mMutex);
  TCAutoLock tableLock(mTableMutex);
  return mComponents;
}

IBaseLifetimeCallback* EnvironmentController::getComponent(std::string aComponentName) {
  TCAutoLock tableLock(mTableMutex);
  auto const entry = mComponents.find(aComponentName);
  return entry == mComponents.end() ? nullptr : entry->second;
}

std::size_t EnvironmentController::getNumComponents() {
  TCAutoLock lock(mMutex);
  TCAutoLock tableLock(mTableMutex);
  return mComponents.size();
}

void EnvironmentController::clearEnvironment() {
  TCAutoLock lock(mMutex);
  TCAutoLock tableLock(mTableMutex);
  mComponents.clear();
}

void EnvironmentController::initialize() {
  TraceScope trace("EnvironmentController::createEnvironment");
  TCAutoLock lock(mMutex);
  createProvider({"ConfigurationManager", "/Zelv/Configuration", "Configuration.xml",
                  "in EnvironmentController::initialize: Failed to load Configuration file and "
                  "could not restore!",
                  "EnvironmentController::createEnvironment: failed to create "
                  "GenericDataProvider for /Zelv/Configuration"});
  createProvider({"ApplicationsManager", "/Zelv/Applications", "Applications.xml",
                  "in EnvironmentController::initialize: Failed to load Applications file and "
                  "could not restore!",
                  "EnvironmentController::createEnvironment: failed to create "
                  "GenericDataProvider for /Zelv/Applications"});
  take("MultiAccount", std::unique_ptr<IBaseLifetimeCallback>(mMakers.multiAccount()),
       "EnvironmentController::createEnvironment: failed to create MultiAccount.");
  take("MultiDevice", std::unique_ptr<IBaseLifetimeCallback>(mMakers.multiDevice()),
       "EnvironmentController::createEnvironment: failed to create MultiDevice.");
  take("AssetProvider", std::unique_ptr<IBaseLifetimeCallback>(mMakers.assetProvider()),
       "EnvironmentController::createEnvironment: failed to create AssetProvider.");
}

void EnvironmentController::createProvider(Standard const& aStandard) {
  std::string const& directory = Directories::Writable();
  if (ZelvFileUtil::checkIsFileAvailable(aStandard.file, directory, true) != 0) {
    throw std::runtime_error(aStandard.noFile);
  }
  take(aStandard.name,
       std::unique_ptr<IBaseLifetimeCallback>(
           mMakers.provider(aStandard.baseXPath, directory + aStandard.file)),
       aStandard.noComponent);
}

void EnvironmentController::take(char const* aName,
                                 std::unique_ptr<IBaseLifetimeCallback> aComponent,
                                 char const* aMissing) {
  if (aComponent == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error, "%s", aMissing);
    throw std::runtime_error("component is NULL!");
  }
  if (insert(aName, aComponent.get())) {
    static_cast<void>(aComponent.release());
  }
}

bool EnvironmentController::insert(std::string const& aName, IBaseLifetimeCallback* aComponent) {
  TCAutoLock tableLock(mTableMutex);
  return mComponents.emplace(aName, aComponent).second;
}

bool EnvironmentController::takeOut(std::string const& aName,
                                    std::unique_ptr<IBaseLifetimeCallback>& aComponent) {
  TCAutoLock tableLock(mTableMutex);
  auto const taken = mComponents.extract(aName);
  if (taken.empty()) {
    return false;
  }
  IBaseLifetimeCallback* const component = taken.mapped();
  bool const heldElsewhere =
      std::any_of(mComponents.begin(), mComponents.end(),
                  [component](auto const& aEntry) { return aEntry.second == component; });
  if (!heldElsewhere) {
    aComponent.reset(component);
  }
  return true;
}

}  // namespace Zelv::Controller
