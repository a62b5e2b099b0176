#include "zelv/controller/ProcessCommandReturnTask.h"

#include "zelv/controller/CommandController.h"

namespace Zelv::Controller {

ProcessCommandReturnTask::ProcessCommandReturnTask(CommandController* aController,
                                                   std::string const& aValue,
                                                   GUID const& aRelatesTo, CommandArgs const& aArgs)
    : CommandControllerTask(aController, aArgs.commandId, aValue),
      mArgs(aArgs),
      mRelatesTo(aRelatesTo) {}

void ProcessCommandReturnTask::execute() {
  mController->executeProcessCommandReturn(mText, mRelatesTo, mArgs);
}

}  // namespace Zelv::Controller
