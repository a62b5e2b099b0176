#include "zelv/controller/UnreachableDataHandler.h"

#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Controller {

void UnreachableDataHandler::executeGetData(GUID const&, std::string const& aXPath,
                                            ContextInformation const*, IBaseDataCallback*, bool) {
  PCRealDebug::Print(PCRealDebug::Warning,
                     "UnreachableDataHandler::executeGetData: no way to the device of XPath '%s'.",
                     aXPath.c_str());
}

void UnreachableDataHandler::executeSetData(GUID const&, std::string const& aXPath,
                                            std::string const&, bool, IBaseDataCallback*, bool) {
  PCRealDebug::Print(PCRealDebug::Warning,
                     "UnreachableDataHandler::executeSetData: no way to the device of XPath '%s'.",
                     aXPath.c_str());
}

}  // namespace Zelv::Controller
