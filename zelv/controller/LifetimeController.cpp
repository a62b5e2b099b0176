#include "zelv/controller/LifetimeController.h"

#include <stdexcept>

#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

namespace {

ICoreEnvironment* obtainEnvironment() {
  return dynamic_cast<ICoreEnvironment*>(InterfaceFactory::getInterface(IID_ICoreEnvironment));
}

}  // namespace

LifetimeController::LifetimeController() : LifetimeController(obtainEnvironment) {}

LifetimeController::LifetimeController(ObtainEnvironment aObtainEnvironment)
    : mObtainEnvironment(aObtainEnvironment) {}

LifetimeController::~LifetimeController() = default;

void LifetimeController::initialize() {
  TraceScope trace("LifetimeController::initialize");
  setAllLifetimeStates(LIFETIME_INITIALISE);
  setAllLifetimeStates(LIFETIME_START);
}

void LifetimeController::terminate() {
  TraceScope trace("LifetimeController::terminate");
  setAllLifetimeStates(LIFETIME_TERMINATE);
}

GUID LifetimeController::setLifetimeState(eLifetimeCommand aCommand,
                                          std::string const& aComponentName,
                                          IBaseLifetimeCallback*) {
  TraceScope trace("LifetimeController::setLifetimeState");
  TCAutoLock lock(mMutex);
  ICoreEnvironment* const environment = mObtainEnvironment();
  if (environment == nullptr) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "LifetimeController::setLifetimeState: Failed to obtain ICoreEnvironment interface.");
    throw std::runtime_error("Failed to obtain ICoreEnvironment interface");
  }
  auto const components = environment->getRegisteredComponents();
  auto const entry = components.find(aComponentName);
  if (entry == components.end()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "LifetimeController::setLifetimeState: Component not found!");
    return GUID::nullGUID;
  }
  GUID const transactionId = GUID::createGUID();
  if (entry->second == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "LifetimeController::setLifetimeState: component is NULL.");
    throw std::runtime_error("component is NULL!");
  }
  entry->second->onLifetime(aCommand, transactionId);
  return transactionId;
}

void LifetimeController::setAllLifetimeStates(eLifetimeCommand aCommand) {
  TraceScope trace("LifetimeController::setAllLifetimeStates");
  TCAutoLock lock(mMutex);
  ICoreEnvironment* const environment = mObtainEnvironment();
  if (environment == nullptr) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "LifetimeController::setAllLifetimeStates: Failed to obtain ICoreEnvironment interface.");
    return;
  }
  // A copy: components may register others while they are brought up.
  auto const components = environment->getRegisteredComponents();
  for (auto const& [name, component] : components) {
    if (component == nullptr) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "LifetimeController::setAllLifetimeStates: component pointer is NULL.");
      throw std::runtime_error("component pointer is NULL!");
    }
    component->onLifetime(aCommand, GUID::createGUID());
  }
}

}  // namespace Zelv::Controller
