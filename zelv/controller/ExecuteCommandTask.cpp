#include "zelv/controller/ExecuteCommandTask.h"

#include "zelv/controller/CommandController.h"

namespace Zelv::Controller {

ExecuteCommandTask::ExecuteCommandTask(CommandController* aController, std::string const& aCommand,
                                       CommandArgs const& aArgs, IBaseCommandCallback* aCallback)
    : CommandControllerTask(aController, aArgs.commandId, aCommand),
      mArgs(aArgs),
      mCallback(aCallback) {}

void ExecuteCommandTask::execute() {
  mController->executeExecuteCommand(mText, mArgs, mCallback);
}

}  // namespace Zelv::Controller
