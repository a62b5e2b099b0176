#pragma once

#include <string>

#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/IBaseCommandCallback.h"
#include "zelv/interfaces/IBaseCommandHandler.h"

namespace Zelv {

/// Commands: short XML texts that one component gives to another, on this device or on a remote
/// one. All operations may be called from any thread.
class ZELV_EXPORT IBaseCommand : public virtual IBase {
 public:
  /// Sends a command.
  ///
  /// @param aCommand   an XML element; its name is the command's name.
  /// @param aDeviceID  the device that is to execute it; empty means this one.
  /// @param aCallback  receives the return value; not owned, MUST live until the value came or
  ///                   discardCommandCallback() was called.
  /// @return the command's id.
  /// @throws std::invalid_argument "aCommand parameter is empty!" or "aCallback parameter is
  /// NULL!".
  virtual GUID executeCommand(std::string const& aCommand, std::string const& aDeviceID,
                              IBaseCommandCallback* aCallback) = 0;

  /// Forgets a callback, with all its commands: when it returns, no return value comes to it any
  /// more. It waits for a call of the callback that is under way on another thread, so the caller
  /// MUST NOT hold a lock that the callback takes. From within the callback it returns at once, and
  /// so it does from within onData() of a change or of an answer from another device, which runs
  /// under the lock of the tree: there the callback may be running yet when it returns.
  ///
  /// @throws std::invalid_argument "aCallback parameter is NULL!".
  virtual void discardCommandCallback(IBaseCommandCallback* aCallback) = 0;

  /// Gives the commands of one name to a handler.
  ///
  /// @param aHandler  not owned; MUST live until it is unregistered.
  /// @return a handle for unregisterCommandHandler().
  /// @throws std::invalid_argument "aCommandName parameter is empty!"; std::logic_error "Command
  ///         handler already registered.".
  virtual GUID registerCommandHandler(std::string const& aCommandName,
                                      IBaseCommandHandler* aHandler) = 0;

  /// Takes a name back from its handler, waiting as discardCommandCallback() does. An unknown
  /// handle is only logged.
  virtual void unregisterCommandHandler(GUID const& aHandle) = 0;

  ~IBaseCommand() override;
};

GUID const IID_IBaseCommand("1e234183-9212-4689-8a32-ac21650b028c");

}  // namespace Zelv
