#pragma once

#include <string>

#include "zelv/interfaces/IBaseStatusCallback.h"

namespace Zelv {

/// Receives the return value of a command.
class ZELV_EXPORT IBaseCommandCallback : public virtual IBaseStatusCallback {
 public:
  ~IBaseCommandCallback() override;

  /// The command returned a value. Called on the thread of the command controller.
  ///
  /// @param aValue      what the handler returned.
  /// @param aCommandID  what executeCommand() returned.
  virtual void onReturn(std::string const& aValue, GUID const& aCommandID) = 0;
};

GUID const IID_IBaseCommandCallback("c0ddf044-1bfc-400e-9726-32283795d8f2");

}  // namespace Zelv
