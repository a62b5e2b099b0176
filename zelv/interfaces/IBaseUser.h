#pragma once

#include <string>

#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/IBaseUserCallback.h"

namespace Zelv {

/// Input events that mobile devices send. All operations may be called from any thread.
class ZELV_EXPORT IBaseUser : public virtual IBase {
 public:
  /// Subscribes to the input events of one type: those whose type is the same, byte for byte. The
  /// empty type gets the events that could not be read, with empty texts.
  ///
  /// @param aCallback  not owned; MUST live until it is unsubscribed.
  /// @return the subscription's id, which every event carries.
  virtual GUID subscribeUser(std::string const& aType, IBaseUserCallback* aCallback) = 0;

  /// Ends a subscription. When it returns, its callback is not being called on another thread and
  /// will not be called any more. An unknown id is only logged. May be called from within
  /// onUserInput(), that of the subscription itself included; it then returns at once. So it does
  /// from within onData() of a change or of an answer from another device, which runs under the
  /// lock of the tree: there the callback may be running yet when it returns.
  virtual void unsubscribeUser(GUID aSubscriptionID) = 0;

  ~IBaseUser() override;
};

GUID const IID_IBaseUser("59f614ab-8a1e-4bef-a2dd-dfdc191dc6bc");

}  // namespace Zelv
