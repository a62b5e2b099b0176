#pragma once

#include "zelv/interfaces/GUID.h"
#include "zelv/interfaces/IBaseCommandHandler.h"

namespace Zelv::Controller {

/// A handler, by the name of its commands in the table of handlers.
struct CommandHandlerRegistration {
  GUID mHandle;
  IBaseCommandHandler* mHandler = nullptr;  ///< not owned
};

}  // namespace Zelv::Controller
