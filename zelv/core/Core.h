#pragma once

#include <map>
#include <string>

#include "zelv/controller/CommandController.h"
#include "zelv/controller/DataController.h"
#include "zelv/controller/EnvironmentController.h"
#include "zelv/controller/LifetimeController.h"
#include "zelv/controller/TimerController.h"
#include "zelv/controller/UserController.h"
#include "zelv/interfaces/CommandArgs.h"
#include "zelv/interfaces/Event.h"
#include "zelv/interfaces/IAppCommand.h"
#include "zelv/interfaces/IAppData.h"
#include "zelv/interfaces/IAppEnvironment.h"
#include "zelv/interfaces/IAppLifetime.h"
#include "zelv/interfaces/IAppTimer.h"
#include "zelv/interfaces/IAppUser.h"
#include "zelv/interfaces/ICoreCommand.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/interfaces/ICoreEnvironment.h"
#include "zelv/interfaces/ICoreLifetime.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/interfaces/ICoreUser.h"
#include "zelv/platform/CTaskManager.h"
#include "zelv/platform/Export.h"

namespace Zelv {

namespace Adapter {
class NetworkAdapter;
}

class CoreDiagnosis;

/// The one object behind all interfaces. It owns the controllers and passes each call on,
/// unchanged, to the one that it concerns.
///
/// InterfaceFactory starts and stops it. getCore() takes no lock: the first call MUST be made
/// before other threads use the library, and nothing may be called while or after the object is
/// deleted. In between, the operations of the interfaces may be called from any thread.
class ZELV_EXPORT Core : public virtual ICoreData,
                         public virtual IAppData,
                         public virtual ICoreEnvironment,
                         public virtual IAppEnvironment,
                         public virtual ICoreLifetime,
                         public virtual IAppLifetime,
                         public virtual ICoreCommand,
                         public virtual IAppCommand,
                         public virtual ICoreTimer,
                         public virtual IAppTimer,
                         public virtual ICoreUser,
                         public virtual IAppUser,
                         public virtual ICoreDataCallback {
 public:
  class AssetProvider;
  class AssetServer;
  class DiscoveryService;
  class GenericDataProvider;
  class MultiAccount;
  class MultiDevice;

  /// The instance, made and started on first use. What comes out of its start leaves here; the
  /// instance then exists all the same, for InterfaceFactory::terminate() to take down.
  static Core* getCore();

  /// The instance, or null when there is none.
  static Core* requestCore();

  Core(Core const&) = delete;
  Core& operator=(Core const&) = delete;

  /// From here on there is no instance, so that the next getCore() makes a new one. A component
  /// whose destructor asks InterfaceFactory for an interface would therefore start a second system:
  /// components let go of the library in their last lifetime command.
  ~Core() override;

  /// Seeds the writable directory, makes the components, sends them the commands 0 and 1, and only
  /// then starts the data worker: what was asked of the tree before runs afterwards, in order.
  void initialize();

  /// Sends the components command 3 and stops the workers. What a component throws there leaves
  /// here, once everything has stopped.
  void terminate();

  /// Fills the writable directory from the read-only one, unless "Devices.xml" stands there: that
  /// one file stands for all of them. @return 1, whatever came of it.
  int copyDataDirectoryFiles();

  /// The application object of the platform; not owned, null where there is none.
  CApplication* getZelvApp();

  /// Does nothing but log.
  void raiseEvent(Event* aEvent);

  /// @name What CommandReturn does for applications
  /// @{
  void sendReturn(std::string const& aValue, CommandArgs const& aArgs);
  void cancelReturns();
  /// @}

  GUID setData(std::string const& aXPath, std::string const& aValue, IBaseDataCallback* aCallback,
               bool aNotifyRemoteSubscribers) override;
  GUID addData(std::string const& aXPath, std::string const& aValue, IBaseDataCallback* aCallback,
               bool aNotifyRemoteSubscribers) override;
  GUID requestData(std::string const& aXPath, ContextInformation const* aContext,
                   IBaseDataCallback* aCallback) override;
  GUID subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                     IBaseDataCallback* aCallback) override;
  void unsubscribeData(GUID aSubscriptionID) override;
  void registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) override;
  void unregisterDataProvider(std::string const& aXPath) override;
  void notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                             GUID const& aTransactionID) override;
  void notifyDataSubscriber(GUID const& aSubscriptionID, std::string const& aValue) override;

  GUID registerComponent(std::string const& aComponentName,
                         IBaseLifetimeCallback* aComponent) override;
  std::map<std::string, IBaseLifetimeCallback*> getRegisteredComponents() override;
  IBaseLifetimeCallback* getComponent(std::string aComponentName) override;

  GUID setLifetimeState(eLifetimeCommand aCommand, std::string const& aComponentName,
                        IBaseLifetimeCallback* aCallback) override;

  GUID executeCommand(std::string const& aCommand, std::string const& aDeviceID,
                      IBaseCommandCallback* aCallback) override;
  void discardCommandCallback(IBaseCommandCallback* aCallback) override;
  GUID registerCommandHandler(std::string const& aCommandName,
                              IBaseCommandHandler* aHandler) override;
  void unregisterCommandHandler(GUID const& aHandle) override;

  GUID createTimer(unsigned int aTimeMs, int aRepeat, std::string const& aTimerName,
                   IBaseTimerCallback* aCallback) override;
  void destroyTimer(GUID const& aTimerID, IBaseTimerCallback* aCallback) override;
  void resetTimer(GUID const& aTimerID, unsigned int aTimeMs, int aRepeat) override;

  GUID subscribeUser(std::string const& aType, IBaseUserCallback* aCallback) override;
  void unsubscribeUser(GUID aSubscriptionID) override;

  /// @name Deliberately not passed on
  ///
  /// These log a warning and return; a component that was once registered stays until the end.
  /// @{
  void unregisterComponent(std::string const& aComponentName) override;
  void updateSubscriberStatus(GUID aSubscriptionID, std::string const& aStatus) override;
  void unsubscribeForAllData(std::string const& aDeviceID) override;
  /// @}

  /// Empty: nothing is requested in the name of this object.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

 private:
  /// Looks at all of the parts.
  friend class CoreDiagnosis;

  Core();

  void endNetwork();

  static Core* theCore;

  // In reverse order they go: the components, with the environment, before the registry of
  // providers that they stand in, with the data controller.
  Controller::DataController mDataController;
  Controller::TimerController mTimerController;
  Controller::EnvironmentController mEnvironmentController;
  Controller::LifetimeController mLifetimeController;
  Controller::CommandController mCommandController;
  Controller::UserController mUserController;
  /// The singleton; deleted by terminate().
  Adapter::NetworkAdapter* mNetworkAdapter = nullptr;
};

}  // namespace Zelv
