#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>

#include "zelv/controller/GetDataContext.h"
#include "zelv/controller/RemoteDataContexts.h"
#include "zelv/controller/RemoteDataHandler.h"
#include "zelv/controller/RemoteDataMessages.h"
#include "zelv/controller/RemoteDeviceQueues.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/NetworkMessageCallback.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

class DataController;
class RemoteDataReader;

/// The trees of other devices: asks them for what the data tasks want, and answers what they ask of
/// the tree of this one. Messages go both ways over TCP at port 4446.
///
/// The data worker comes in executeGetData(), onData() and onStatus(); threads of the network in
/// onMessage(), several at once; and whoever reports a change in onData() and in the three
/// operations for devices that leave, under the lock of the subscriptions.
///
/// The locks in here are leaves, of which no two are held together: that of the contexts, that of
/// the queues, that of the messages, and that of the service, under which alone something else is
/// locked, the network adapter. None of them is held while the tree is called, since the tree calls
/// back in here under a lock of its own.
class RemoteDataController : public virtual RemoteDataHandler,
                             public virtual NetworkMessageCallback {
 public:
  /// Where the tree is found; null when there is none.
  using FindCoreData = ICoreData* (*)();

  /// While so many data tasks wait, nothing that other devices ask for is added to them.
  static constexpr std::size_t cDataTasks = 16384;

  /// @param aOwner  not used before it is constructed.
  explicit RemoteDataController(DataController* aOwner);

  /// With another tree than that of InterfaceFactory.
  RemoteDataController(DataController* aOwner, FindCoreData aFindCoreData);

  /// Asks the other device, once its address has been read from this device's tree. The answer goes
  /// to the subscription that has this transaction's id, so that context and callback are of no use
  /// here.
  void executeGetData(GUID const& aTransactionID, std::string const& aXPath,
                      ContextInformation const* aContext, IBaseDataCallback* aCallback,
                      bool aOneTime) override;

  /// Nothing: what another device has is written by nobody but itself.
  void executeSetData(GUID const& aTransactionID, std::string const& aXPath,
                      std::string const& aValue, bool aAdd, IBaseDataCallback* aCallback,
                      bool aNotifyRemoteSubscribers) override;
  ~RemoteDataController() override;

  /// Of a request that failed the other device hears nothing.
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// An answer of this device's tree.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;

  /// One message of another device. What cannot be made sense of is dropped with a line in the log.
  void onMessage(std::string const& aMessage, std::string const& aSender) override;

  void initialize() override;

  /// Listens for other devices, at the address that is known by then.
  void startService();

  /// Takes the service down and waits for the queues. MUST NOT be called under a lock.
  void terminate() override;

  /// Build a message and queue it. Where there is no queue to be had it is lost.
  void sendRequestData(Infrastructure::URL const& aServiceEndPoint, GetDataContext const* aContext);
  void sendSubscribeData(Infrastructure::URL const& aServiceEndPoint,
                         GetDataContext const* aContext);
  void sendUnsubscribeData(Infrastructure::URL const& aServiceEndPoint, GUID const& aSubscriptionID,
                           std::string const& aDeviceID);
  void sendOnData(GUID const& aSubscriptionID, Infrastructure::URL const& aRemoteEndPoint,
                  std::string const& aValue, std::string const& aDeviceID);

  /// @return false when there is no queue to be had.
  bool sendToDeviceServiceQueue(std::string const& aMessage, Infrastructure::URL const& aURL,
                                std::string const& aDeviceID);

  static std::list<std::string> multiStringToList(std::string const& aText);

  void removeAllRemoteDeviceService() override;
  void terminateInactiveDeviceQueue(std::list<std::string> const& aOnlineDevices) override;
  void removeInactiveDeviceSubscription(std::list<std::string> const& aOnlineDevices) override;

  /// For diagnostics.
  RemoteDataContexts const& getContexts() const { return mContexts; }
  RemoteDeviceQueues const& getQueues() const { return mQueues; }

 private:
  using Subscription = RemoteDataContexts::Subscription;

  void onAddress(std::string const& aAddress);
  void onServiceUrl(GetDataContext const& aContext, std::string const& aValue);
  void answer(RemoteDataSubscriptionContext const& aContext, std::string const& aValue);

  void handleMessage(std::string const& aMessage);
  void handleType(RemoteDataReader& aMessage, ICoreData& aCoreData);
  void handleOnData(RemoteDataReader& aMessage, ICoreData& aCoreData);
  void handleQuestion(RemoteDataReader& aMessage, bool aOneTime, ICoreData& aCoreData);
  void ask(Subscription const& aContext, ICoreData& aCoreData);
  void handleUnsubscribe(RemoteDataReader& aMessage, ICoreData& aCoreData);
  void handleSetData(RemoteDataReader& aMessage, ICoreData& aCoreData);
  bool isBusy() const;

  void takeBack(RemoteDataSubscriptionContext const& aContext, ICoreData& aCoreData);

  std::unique_ptr<Infrastructure::URL> mServiceUrl ZELV_GUARDED_BY(mServiceLock);
  GUID mServiceHandle ZELV_GUARDED_BY(mServiceLock);
  /// Set before the data worker runs.
  GUID mLocalDeviceTransaction;
  RemoteDataMessages mMessages;
  DataController* const mOwner;
  RemoteDataContexts mContexts;
  RemoteDeviceQueues mQueues;
  PCMutex mServiceLock;
  bool mTerminated ZELV_GUARDED_BY(mServiceLock) = false;
  FindCoreData const mFindCoreData;
};

}  // namespace Zelv::Controller
