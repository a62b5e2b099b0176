#pragma once

#include <string>

#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/IBaseLifetimeCallback.h"
#include "zelv/interfaces/eLifetimeCommand.h"

namespace Zelv {

/// Sends lifetime commands to components.
class ZELV_EXPORT IBaseLifetime : public virtual IBase {
 public:
  /// Sends one command to one component, on the calling thread. Commands are sent one at a time,
  /// from whatever thread; a component may call back from within onLifetime().
  ///
  /// @param aComponentName  as it is registered with the environment.
  /// @param aCallback       not used; may be null.
  /// @return the transaction's id, which the component receives too; all zero when there is no
  ///         component of that name, which is logged.
  /// @throws std::runtime_error "component is NULL!", and whatever the component throws.
  virtual GUID setLifetimeState(eLifetimeCommand aCommand, std::string const& aComponentName,
                                IBaseLifetimeCallback* aCallback) = 0;

  ~IBaseLifetime() override;
};

GUID const IID_IBaseLifetime("dda44fe5-4d54-4221-a796-d63010298d7b");

}  // namespace Zelv
