#pragma once

#include "zelv/interfaces/IBaseStatusCallback.h"
#include "zelv/interfaces/eLifetimeCommand.h"

namespace Zelv {

/// A component: an object with a lifetime.
///
/// Components are the one kind of callback that is owned: the registry that a component is
/// registered with deletes it, through its virtual destructor.
class ZELV_EXPORT IBaseLifetimeCallback : public virtual IBaseStatusCallback {
 public:
  ~IBaseLifetimeCallback() override;

  /// Goes through one step of the component's lifetime. Called on the thread that starts or stops
  /// the system, or on that of setLifetimeState(), one component at a time; it may call back into
  /// the library. What it throws leaves through the call that sent the command.
  ///
  /// @param aTransactionID  a new identifier for each component and command.
  virtual void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) = 0;
};

GUID const IID_IBaseLifetimeCallback("af8af6ee-423e-4e8b-baaf-7b3c7ef35460");

}  // namespace Zelv
