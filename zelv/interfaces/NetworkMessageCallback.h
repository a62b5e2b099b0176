#pragma once

#include <string>

#include "zelv/platform/Export.h"

namespace Zelv {

/// Receives the messages of one network service.
class ZELV_EXPORT NetworkMessageCallback {
 public:
  /// One message. Called on a thread of the network, on several at once for messages that arrive
  /// together.
  ///
  /// @param aMessage  the whole message, with its final line feed.
  /// @param aSender   the same text once more; it MUST NOT be taken for the sender.
  virtual void onMessage(std::string const& aMessage, std::string const& aSender) = 0;

 protected:
  /// Nobody deletes a receiver through this interface, which has exactly one virtual operation.
  ~NetworkMessageCallback() = default;
};

}  // namespace Zelv
