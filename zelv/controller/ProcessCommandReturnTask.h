#pragma once

#include <string>

#include "zelv/controller/CommandControllerTask.h"
#include "zelv/interfaces/CommandArgs.h"

namespace Zelv::Controller {

/// Hands the return value of a command on another device to its caller.
class ProcessCommandReturnTask : public CommandControllerTask {
 public:
  /// @param aRelatesTo  the message that is answered, by which the caller is found.
  ProcessCommandReturnTask(CommandController* aController, std::string const& aValue,
                           GUID const& aRelatesTo, CommandArgs const& aArgs);

  void execute() override;

 private:
  CommandArgs mArgs;
  GUID mRelatesTo;
};

}  // namespace Zelv::Controller
