#pragma once

#include <string>

#include "zelv/interfaces/CommandArgs.h"
#include "zelv/platform/Export.h"

namespace Zelv {

/// The way back for commands that came from another device.
///
/// What a handler returns goes to callers on this device alone. A handler that wants to answer
/// another one sends the return value itself and returns an empty string.
class ZELV_EXPORT CommandReturn {
 public:
  CommandReturn() = delete;

  /// Sends a return value to the device that the command came from. From any thread, which
  /// MUST have returned from it before the library is stopped. It happens on the calling thread,
  /// which a device that does not answer holds up for some seconds; within a handler all other
  /// commands to this device wait as long. That the value could not be sent is only logged.
  ///
  /// @param aValue  put into the message as it stands, so MUST be XML or text without markup.
  /// @param aArgs   what the handler received with the command; its replyTo MUST NOT be empty.
  /// @throws std::logic_error "The library does not run.", or when aArgs.replyTo is no URL.
  static void sendReturn(std::string const& aValue, CommandArgs const& aArgs);

  /// Ends the calls of sendReturn() that other threads are in, so that these can be waited for
  /// before the library is stopped; from then on it sends nothing until the library is started
  /// anew. Does not wait.
  static void cancel();
};

}  // namespace Zelv
