#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "zelv/controller/ClockWatch.h"
#include "zelv/controller/SeenMessages.h"
#include "zelv/core/Core.h"
#include "zelv/core/DiscoveryMessages.h"
#include "zelv/core/RemoteDeviceList.h"
#include "zelv/core/UnresolvedDevices.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/interfaces/ICoreTimerCallback.h"
#include "zelv/interfaces/IDataProvider.h"
#include "zelv/interfaces/NetworkMessageCallback.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

namespace Adapter {
class NetworkAdapter;
}

/// The set's own discovery: text messages in datagrams on one multicast group.
///
/// Announces this set, finds televisions and phones, and keeps the list of them, which is read as
/// "/Zelv/Devices/RemoteTV" and "/Zelv/Devices/Mobile". A device that is silent for 1.2 of this
/// set's heartbeat intervals is taken for dead.
///
/// Three threads come here: the listener's in onMessage(), the alarm thread in onTimer(), the data
/// worker in onData(), getData() and setData(). Nothing is sent while mLock is held.
class Core::DiscoveryService : public virtual NetworkMessageCallback,
                               public virtual IDataProvider,
                               public virtual ICoreDataCallback,
                               public virtual ICoreTimerCallback {
 public:
  /// @param aMultiDevice  the creator, through which the local settings are read; not owned.
  explicit DiscoveryService(MultiDevice* aMultiDevice);

  /// One datagram. aSender tells nothing.
  void onMessage(std::string const& aMessage, std::string const& aSender) override;
  ~DiscoveryService() override;
  void onTimer(std::string const& aTimerName, GUID aTimerID) override;

  /// Sends a Hello, whatever the arguments: the answer shows that the tree is running, and a set
  /// announces itself only when it can serve.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// Read and write the device list. -1 when there is no such data.
  int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) override;
  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;
  int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;
  int onSubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  int onUnsubscribe(std::string const& aXPath, GUID aSubscriptionID) override;

  /// Starts the protocol: listens, asks who is there, and ticks. An exception from a missing
  /// setting goes to the caller.
  void initialize();

  /// Says goodbye and stops listening.
  void terminate();

 private:
  /// What a handler wants sent once the lock is released.
  struct Outgoing {
    Infrastructure::URL mUrl;
    std::string mText;
    std::string mLocalInterface;
  };
  using Answer = std::optional<Outgoing>;
  using Message = Infrastructure::HierarchicalDB;

  void readSettings();
  std::string readSetting(char const* aXPath);
  void listen();
  void startTimer();
  bool obtainInterfaces();

  Answer handle(std::string const& aMessage);
  Answer handleType(std::string const& aType, Message& aMessage, std::string const& aMessageId);
  Answer onProbe(Message& aMessage, std::string const& aMessageId);
  Answer onResolve(Message& aMessage);
  Answer onHeartBeat(Message& aMessage);
  void onResolveMatch(Message& aMessage);
  void onBye(Message& aMessage);
  void onDescription(Message& aMessage, std::string const& aType);
  std::optional<Infrastructure::URL> replyUrl(Message& aMessage, char const* aQuestion);

  void SendProbe();
  Answer SendProbeMatch(std::string const& aMessageId, Infrastructure::URL const& aReplyUrl);
  Answer SendResolve(std::string const& aDeviceId);
  Answer SendResolveMatch(std::string const& aMessageId, Infrastructure::URL const& aReplyUrl);
  void SendHello();
  void SendBye();
  void SendHeartBeat();
  void multicast(std::string const& aText);
  void send(Outgoing const& aOutgoing);
  std::string localName();

  void AddDeviceToList(Message& aMessage);
  void RemoveDeviceFromList(std::string aDeviceId);
  void CheckRemoteDeviceStatus();
  void notifyDataSubscribers(std::string const& aDeviceType);
  void notifyList(char const* aElement);
  void cleanExpiredMessages();
  void cleanUnresolvedDevices();
  void followClock();
  bool checkDuplicateMessage(std::string aMessageId);

  PCMutex mLock;
  MultiDevice* mMultiDevice;
  RemoteDeviceList mDevices;
  Adapter::NetworkAdapter* mNetworkAdapter = nullptr;
  ICoreData* mCoreData = nullptr;
  ICoreTimer* mCoreTimer = nullptr;
  GUID mHeartBeatTimerId;
  GUID mServiceId;
  std::int32_t mHeartBeatInterval = 0;
  std::unique_ptr<Infrastructure::URL> mMulticastSendUrl;
  std::unique_ptr<Infrastructure::URL> mMulticastListenUrl;
  std::string mMulticastGroup;
  LocalDevice mLocal;
  DiscoveryMessages mMessages;
  Controller::SeenMessages mReceivedMessages ZELV_GUARDED_BY(mLock);
  UnresolvedDevices mUnresolvedDevices ZELV_GUARDED_BY(mLock);
  Controller::ClockWatch mClock ZELV_GUARDED_BY(mLock);
  std::atomic<bool> mProbeSent{false};
};

}  // namespace Zelv
