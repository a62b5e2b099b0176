#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "zelv/interfaces/IAppEnvironment.h"
#include "zelv/interfaces/ICoreEnvironment.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The registry of components, which it owns, and the maker of the standard ones.
class EnvironmentController : public virtual ICoreEnvironment, public virtual IAppEnvironment {
 public:
  using Table = std::map<std::string, IBaseLifetimeCallback*>;

  /// Makes the provider of a branch; the caller owns it. Null means that there was no memory.
  using MakeProvider = IBaseLifetimeCallback* (*)(std::string const& aBaseXPath,
                                                  std::string const& aDataFileName);

  /// Makes a component of its own class, likewise.
  using MakeComponent = IBaseLifetimeCallback* (*)();

  /// What the standard components are made by.
  struct Makers {
    MakeProvider provider;
    MakeComponent multiAccount;
    MakeComponent multiDevice;
    MakeComponent assetProvider;
  };

  EnvironmentController();

  /// With other makers than those of the system's own components.
  explicit EnvironmentController(Makers const& aMakers);

  GUID registerComponent(std::string const& aComponentName,
                         IBaseLifetimeCallback* aComponent) override;
  void unregisterComponent(std::string const& aComponentName) override;
  Table getRegisteredComponents() override;

  /// Null for a name that is not registered. Never waits for an operation that makes or deletes a
  /// component, so that a component may ask for another one from within those.
  IBaseLifetimeCallback* getComponent(std::string aComponentName) override;

  /// Deletes the components in ascending order of their names.
  ~EnvironmentController() override;

  std::size_t getNumComponents();

  /// Forgets the components without deleting them; they are the caller's from now on.
  void clearEnvironment();

  /// Makes the standard components, after making sure that the files they will load are there and
  /// can be parsed. No command is sent.
  /// @throws std::runtime_error when such a file is bad and could not be restored, or a component
  ///         could not be made. What was made before stays registered.
  void initialize();

 private:
  struct Standard;

  void createProvider(Standard const& aStandard) ZELV_REQUIRES(mMutex);

  /// Registers a component that was made; a null one is logged with aMissing and thrown.
  void take(char const* aName, std::unique_ptr<IBaseLifetimeCallback> aComponent,
            char const* aMissing) ZELV_REQUIRES(mMutex);

  /// @return false when the name is taken.
  bool insert(std::string const& aName, IBaseLifetimeCallback* aComponent) ZELV_REQUIRES(mMutex);

  /// Takes an entry out of the table. An object that is registered under two names is handed
  /// over, to be deleted, with the last of them.
  ///
  /// @return false when the name is not registered.
  bool takeOut(std::string const& aName, std::unique_ptr<IBaseLifetimeCallback>& aComponent)
      ZELV_REQUIRES(mMutex);

  Table mComponents ZELV_GUARDED_BY(mTableMutex);
  PCMutex mMutex;
  /// Inside mMutex, and held only for single steps on the table, never while anything of a
  /// component runs.
  PCMutex mTableMutex;
  Makers const mMakers;
};

}  // namespace Zelv::Controller
