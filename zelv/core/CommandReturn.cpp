#include "zelv/interfaces/CommandReturn.h"

#include <stdexcept>

#include "zelv/core/Core.h"

namespace Zelv {

void CommandReturn::sendReturn(std::string const& aValue, CommandArgs const& aArgs) {
  Core* const core = Core::requestCore();
  if (core == nullptr) {
    throw std::logic_error("The library does not run.");
  }
  core->sendReturn(aValue, aArgs);
}

void CommandReturn::cancel() {
  if (Core* const core = Core::requestCore()) {
    core->cancelReturns();
  }
}

}  // namespace Zelv
