#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

class CommandController;

/// Something for the thread of the command controller to do.
class CommandControllerTask {
 public:
  /// @param aController  outlives the task.
  /// @param aCommandId   identity of the execution.
  /// @param aText        the command, or the return value of one.
  CommandControllerTask(CommandController* aController, GUID const& aCommandId,
                        std::string const& aText)
      : mController(aController), mCommandId(aCommandId), mText(aText) {}
  CommandControllerTask(CommandControllerTask const&) = delete;
  CommandControllerTask& operator=(CommandControllerTask const&) = delete;
  virtual ~CommandControllerTask() = default;

  virtual void execute() = 0;

  std::string const& getText() const { return mText; }

 protected:
  CommandController* mController;
  GUID mCommandId;
  std::string mText;
};

}  // namespace Zelv::Controller
