#pragma once

#include <string>

#include "zelv/controller/CommandControllerTask.h"
#include "zelv/interfaces/CommandArgs.h"
#include "zelv/interfaces/IBaseCommandCallback.h"

namespace Zelv::Controller {

/// Executes a command on this device.
class ExecuteCommandTask : public CommandControllerTask {
 public:
  /// @param aCallback  not owned.
  ExecuteCommandTask(CommandController* aController, std::string const& aCommand,
                     CommandArgs const& aArgs, IBaseCommandCallback* aCallback);

  void execute() override;

 private:
  CommandArgs mArgs;
  IBaseCommandCallback* mCallback;
};

}  // namespace Zelv::Controller
