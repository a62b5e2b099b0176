#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// Writes the messages of commands. They are put together as text, nothing is escaped, and peers
/// read the very form and order that stand here.
class CommandEnvelope {
 public:
  /// @param aCommandId  becomes the MessageID, by which the return finds its caller.
  static std::string command(GUID const& aCommandId, std::string const& aSenderId,
                             std::string const& aReplyTo, std::string const& aCommand);

  /// The return value of the command that came as message aRelatesTo.
  static std::string reply(std::string const& aSenderId, GUID const& aRelatesTo,
                           std::string const& aValue);
};

}  // namespace Zelv::Controller
