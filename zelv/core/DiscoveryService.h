#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zelv/controller/ClockWatch.h"
#include "zelv/controller/SeenMessages.h"
#include "zelv/core/AnswerSender.h"
#include "zelv/core/Core.h"
#include "zelv/core/DepartedDevices.h"
#include "zelv/core/DiscoverySettings.h"
#include "zelv/core/OutgoingMessage.h"
#include "zelv/core/RemoteDeviceList.h"
#include "zelv/core/UnresolvedDevices.h"
#include "zelv/infrastructure/HierarchicalDB.h"
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
  /// setting goes to the caller. Called again it reads the settings anew and goes through all of it
  /// with what it has: there is one listener and one timer at any time.
  void initialize();

  /// Says goodbye and stops listening. Does nothing before the first initialize().
  void terminate();

  /// @name For diagnostics
  ///
  /// Neither takes mLock: they may be asked for from within a delivery.
  /// @{
  std::vector<RemoteDevice> getDevices() { return mDevices.all(); }
  std::vector<DepartedDevices::Entry> getDeparted() const { return mDeparted.all(); }
  /// @}

 private:
  /// What a handler wants sent once the lock is released.
  using Answer = std::optional<OutgoingMessage>;
  using Message = Infrastructure::HierarchicalDB;
  using Settings = std::shared_ptr<DiscoverySettings const>;

  bool obtainInterfaces();
  void readSettings();
  std::string readSetting(char const* aXPath);
  Settings settings();
  void listen();
  void listenIfDeaf();
  void startTimer();
  void stopTimer();
  bool wasStarted();

  Answer handle(std::string const& aMessage) ZELV_REQUIRES(mLock);
  Answer handleType(std::string const& aType, Message& aMessage, std::string const& aMessageId)
      ZELV_REQUIRES(mLock);
  Answer onProbe(Message& aMessage, std::string const& aMessageId) ZELV_REQUIRES(mLock);
  Answer onResolve(Message& aMessage) ZELV_REQUIRES(mLock);
  Answer onHeartBeat(Message& aMessage) ZELV_REQUIRES(mLock);
  void onResolveMatch(Message& aMessage) ZELV_REQUIRES(mLock);
  void onBye(Message& aMessage);
  void onDescription(Message& aMessage, std::string const& aType);

  void SendProbe();
  Answer SendProbeMatch(std::string const& aMessageId, Infrastructure::URL const& aReplyUrl);
  Answer SendResolve(std::string const& aDeviceId);
  Answer SendResolveMatch(std::string const& aMessageId, Infrastructure::URL const& aReplyUrl);
  void SendHello();
  void SendBye();
  void SendHeartBeat();
  static OutgoingMessage toGroup(DiscoverySettings const& aSettings, std::string const& aText);
  void send(OutgoingMessage const& aMessage);
  void sendAnswer(OutgoingMessage aAnswer);
  std::string localName();

  bool AddDeviceToList(Message& aMessage);
  void RemoveDeviceFromList(std::string aDeviceId);
  void noteDeparture(std::string const& aDeviceId, DepartedDevices::Reason aReason);
  void CheckRemoteDeviceStatus();
  void notifyDataSubscribers(std::string const& aDeviceType);
  void notifyList(char const* aElement);
  void cleanExpiredMessages();
  void cleanUnresolvedDevices();
  bool checkDuplicateMessage(std::string aMessageId) ZELV_REQUIRES(mLock);
  std::int64_t now();
  void followClock() ZELV_REQUIRES(mLock);

  PCMutex mLock;
  MultiDevice* mMultiDevice;
  RemoteDeviceList mDevices;
  Adapter::NetworkAdapter* mNetworkAdapter = nullptr;
  ICoreData* mCoreData = nullptr;
  ICoreTimer* mCoreTimer = nullptr;
  GUID mHeartBeatTimerId ZELV_GUARDED_BY(mLock);
  GUID mServiceId ZELV_GUARDED_BY(mLock);
  std::atomic<std::int32_t> mHeartBeatInterval{0};
  Settings mSettings ZELV_GUARDED_BY(mLock);
  Controller::SeenMessages mReceivedMessages ZELV_GUARDED_BY(mLock);
  UnresolvedDevices mUnresolvedDevices ZELV_GUARDED_BY(mLock);
  std::atomic<bool> mProbeSent{false};

  /// Between initialize() and terminate(), when a listener is wanted.
  bool mListening ZELV_GUARDED_BY(mLock) = false;
  Controller::ClockWatch mClock ZELV_GUARDED_BY(mLock);
  /// The message being handled. Kept for its memory of paths: the same few are read in each.
  Message mMessage ZELV_GUARDED_BY(mLock);
  DepartedDevices mDeparted;
  /// Last, so that its thread ends before what it sends with goes.
  AnswerSender mAnswerSender;
};

}  // namespace Zelv
