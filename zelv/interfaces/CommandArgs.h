#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"
#include "zelv/platform/Export.h"

namespace Zelv {

/// What a command handler receives beside the command's text.
class ZELV_EXPORT CommandArgs {
 public:
  /// Identity of this execution: for a local command what executeCommand() returned, for a received
  /// one a new identifier.
  GUID commandId;
  /// Identity of the received message; all zero for a local command.
  GUID messageId;
  /// The device that sent the message; empty for a local command.
  std::string senderId;
  /// The address that the return value goes to; empty for a local command.
  std::string replyTo;
};

}  // namespace Zelv
