#pragma once

#include <string>

#include "zelv/interfaces/IAppLifetime.h"
#include "zelv/interfaces/ICoreEnvironment.h"
#include "zelv/interfaces/ICoreLifetime.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// Drives the components of the environment through their lifetime commands, one at a time.
///
/// The lock is held while a component's onLifetime() runs: commands of several threads follow one
/// another, and a component may call back from within its own. What a component throws is not
/// caught here; it ends the pass that it stands in.
class LifetimeController : public virtual ICoreLifetime, public virtual IAppLifetime {
 public:
  /// Finds the environment; not owned, null when there is none.
  using ObtainEnvironment = ICoreEnvironment* (*)();

  LifetimeController();

  /// With another environment than the one of the running system.
  explicit LifetimeController(ObtainEnvironment aObtainEnvironment);

  /// @throws std::runtime_error "Failed to obtain ICoreEnvironment interface" as well.
  GUID setLifetimeState(eLifetimeCommand aCommand, std::string const& aComponentName,
                        IBaseLifetimeCallback* aCallback) override;

  ~LifetimeController() override;

  /// Sends command 0 to all components, then command 1 to all.
  void initialize();

  /// Sends command 3 to all components, whatever state they are in.
  void terminate();

 private:
  void setAllLifetimeStates(eLifetimeCommand aCommand);

  PCMutex mMutex;
  ObtainEnvironment const mObtainEnvironment;
};

}  // namespace Zelv::Controller
