#pragma once

#include <string>

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/GUID.h"
#include "zelv/interfaces/IBaseCommandCallback.h"

namespace Zelv::Controller {

/// A command that waits for the address of its device.
class PendingCommandContext : public ContextInformation {
 public:
  PendingCommandContext(GUID const& aCommandId, std::string const& aCommand,
                        std::string const& aDeviceId, IBaseCommandCallback* aCallback)
      : mCommandId(aCommandId), mCommand(aCommand), mDeviceId(aDeviceId), mCallback(aCallback) {}

  GUID const mCommandId;
  std::string const mCommand;
  std::string const mDeviceId;
  IBaseCommandCallback* mCallback;  ///< not owned; null once its owner has taken it back
};

}  // namespace Zelv::Controller
