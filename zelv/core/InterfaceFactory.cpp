#include "zelv/interfaces/InterfaceFactory.h"

#include <exception>
#include <memory>
#include <typeinfo>

#include "zelv/core/Core.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

namespace {

Core* startedCore(char const* aFailure) {
  try {
    return Core::getCore();
  } catch (std::exception const& exception) {
    PCRealDebug::Print(PCRealDebug::Error, "%s", aFailure);
    PCRealDebug::Print(PCRealDebug::Error, "Error: %s: %s", typeid(exception).name(),
                       exception.what());
  }
  InterfaceFactory::terminate();
  return nullptr;
}

}  // namespace

bool InterfaceFactory::initialize() {
  return startedCore("InterfaceFactory::initialize() An error ocurred in initialization:") !=
         nullptr;
}

// Applications are linked against the identifier by value.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
IBase* InterfaceFactory::getInterface(GUID) {
  return startedCore("InterfaceFactory::getInterface() An error ocurred in getInterface:");
}

void InterfaceFactory::terminate() {
  // Deleted also when a component throws on its way out.
  std::unique_ptr<Core> const core(Core::requestCore());
  if (core != nullptr) {
    core->terminate();
  }
}

}  // namespace Zelv
