#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "zelv/controller/DataControllerTask.h"
#include "zelv/controller/DataSubscriptionManager.h"
#include "zelv/controller/DataTasks.h"
#include "zelv/controller/LocalDataController.h"
#include "zelv/controller/RemoteDataHandler.h"
#include "zelv/controller/UnreachableDataHandler.h"
#include "zelv/interfaces/IAppData.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/PCThread.h"

namespace Zelv::Controller {

/// The front of the tree: turns each request into a task for the one data worker, and passes
/// changes on to the subscribers.
///
/// Two locks, both recursive. The subscription manager's is the outer one: subscribers of a changed
/// path run under it, and call back in here. This object's own guards the queue and the device id,
/// is held for single steps only, and never while anything else runs. The worker holds neither
/// while it runs a task.
class DataController : public virtual IAppData,
                       public virtual ICoreData,
                       public virtual ICoreDataCallback,
                       public virtual PCThread {
 public:
  /// With a RemoteDataController as the way to other devices.
  /// @param aDeviceId  this device's identifier; empty until the device provider registers.
  explicit DataController(std::string const& aDeviceId);

  /// With another way to them, which hears of the local address as soon as the worker runs. With
  /// null there is none: what is asked of other devices is recorded and never answered.
  DataController(std::string const& aDeviceId, std::unique_ptr<RemoteDataHandler> aRemoteHandler);

  GUID setData(std::string const& aXPath, std::string const& aValue, IBaseDataCallback* aCallback,
               bool aNotifyRemoteSubscribers) override;
  GUID addData(std::string const& aXPath, std::string const& aValue, IBaseDataCallback* aCallback,
               bool aNotifyRemoteSubscribers) override;
  GUID requestData(std::string const& aXPath, ContextInformation const* aContext,
                   IBaseDataCallback* aCallback) override;
  GUID subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                     IBaseDataCallback* aCallback) override;
  void unsubscribeData(GUID aSubscriptionID) override;

  /// Deletes queued tasks without running them.
  ~DataController() override;

 protected:
  void t_Main() override;

 public:
  void registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) override;
  void unregisterDataProvider(std::string const& aXPath) override;
  void unsubscribeForAllData(std::string const& aDeviceID) override;
  void updateSubscriberStatus(GUID aSubscriptionID, std::string const& aStatus) override;
  void notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                             GUID const& aTransactionID) override;
  void notifyDataSubscriber(GUID const& aSubscriptionID, std::string const& aValue) override;
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// Takes the list of discovered devices, for which this object is subscribed itself.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;

  /// Starts the worker. What was queued before runs then, in order.
  void initialize();

  /// Stops the worker and waits for the task that it is running, so that providers and callbacks
  /// may go afterwards; on the worker itself it does not wait. What is still queued never runs.
  void terminate();

  /// Queued tasks, for diagnostics.
  std::size_t getQueueSize() const;

  /// True for a path of this device: "/Zelv/..." or "/Zelv[@DeviceId='ID']/..." with the own id in
  /// either kind of quotes. All else counts as remote, "/Zelv" alone included.
  bool isLocalXPath(std::string const& aXPath) const;

  /// The path without its device predicate.
  /// @throws std::out_of_range when no step stands behind the predicate.
  static std::string convertToLocalXPath(std::string const& aXPath);

  /// The device that a path names; empty if it names none. Without a closing quote it is the rest
  /// of the path.
  static std::string getDeviceIdFromXPath(std::string const& aXPath);

  /// @throws std::runtime_error "Invalid XPath." when the path holds a line feed.
  static void validateXPath(std::string const& aXPath);

  /// What decides on a change of this path, for each subscription.
  std::vector<DeliveryExplanation> explain(std::string const& aXPath) {
    return mSubscriptionManager.explain(aXPath, mRemoteHandler.get());
  }

  /// @name For diagnostics
  /// @{
  DataSubscriptionManager& getSubscriptions() { return mSubscriptionManager; }
  LocalDataController const& getLocalHandler() const { return *mLocalHandler; }
  /// Null where there is no way to other devices.
  RemoteDataHandler const* getRemoteHandler() const { return mRemoteHandler.get(); }
  /// @}

 private:
  void queueFirstRequests();
  GUID queueSetData(std::string const& aXPath, std::string const& aValue, bool aAdd,
                    IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers);
  void queue(std::unique_ptr<DataControllerTask> aTask);
  std::unique_ptr<DataControllerTask> takeTask();
  void readIdentity(IDataProvider* aProvider);
  void processTasks();
  void stopWorker();
  DataTaskHandler* remoteHandler();

  std::unique_ptr<LocalDataController> mLocalHandler;
  /// Null where there is no way to other devices.
  std::unique_ptr<RemoteDataHandler> mRemoteHandler;
  UnreachableDataHandler mUnreachableHandler;
  DataSubscriptionManager mSubscriptionManager;
  DataTasks mTasks ZELV_GUARDED_BY(mMutex);
  std::atomic<std::size_t> mQueueSize{0};
  std::string mLocalDeviceId ZELV_GUARDED_BY(mMutex);
  /// Constant after construction.
  GUID mDiscoveredDevSubscription;
  std::atomic<bool> mTerminate{false};
  mutable PCMutex mMutex;
  PCSemaphore mTaskSemaphore;
};

}  // namespace Zelv::Controller
