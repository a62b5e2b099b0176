#pragma once

#include <map>
#include <string>

#include "zelv/interfaces/IBase.h"
#include "zelv/interfaces/IBaseLifetimeCallback.h"

namespace Zelv {

/// The registry of components.
class ZELV_EXPORT IBaseEnvironment : public virtual IBase {
 public:
  /// Registers a component under a name. It is sent no command by this. Safe from any thread.
  ///
  /// @param aComponent  owned by the registry from now on and deleted with it. When the name is
  ///                    taken, the old entry stays, and aComponent remains the caller's.
  /// @return a new identifier, also when the name is taken.
  /// @throws std::runtime_error "aCallback is NULL!".
  virtual GUID registerComponent(std::string const& aComponentName,
                                 IBaseLifetimeCallback* aComponent) = 0;

  /// Deletes a component and its entry. Through the object that applications get it does nothing
  /// but log: a component that was once registered stays until the end.
  virtual void unregisterComponent(std::string const& aComponentName) = 0;

  /// A copy of the table, by name in ascending order; the components stay the registry's. Safe from
  /// any thread.
  virtual std::map<std::string, IBaseLifetimeCallback*> getRegisteredComponents() = 0;

  /// The component of a name, null for one that is not registered; it stays the registry's. Never
  /// waits for another operation on the registry.
  virtual IBaseLifetimeCallback* getComponent(std::string aComponentName) = 0;

  ~IBaseEnvironment() override;
};

GUID const IID_IBaseEnvironment("91f8e6b1-abc2-4f8c-81ff-9f8f5ef16571");

}  // namespace Zelv
