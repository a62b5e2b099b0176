#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "zelv/controller/UserInput.h"
#include "zelv/controller/UserInputSubscriptionManager.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/IAppUser.h"
#include "zelv/interfaces/ICoreCommand.h"
#include "zelv/interfaces/ICoreCommandCallback.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/interfaces/ICoreUser.h"
#include "zelv/interfaces/NetworkMessageCallback.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/PCThread.h"

namespace Zelv::Controller {

/// Input from other devices: takes the datagrams of UDP port 4449 and tells the subscribers of each
/// event, one event at a time and in the order of arrival, on a thread of its own.
///
/// Whoever can reach the port provides input. Nothing is answered, and an event that comes twice is
/// two events.
///
/// Four threads come here: the reader's in onMessage(), the data worker in onData(), the
/// controller's own, and whoever subscribes. None of the locks is held while a subscriber is told.
class UserController : public virtual IAppUser,
                       public virtual ICoreUser,
                       public virtual ICoreDataCallback,
                       public virtual NetworkMessageCallback,
                       public virtual ICoreCommandCallback,
                       public virtual PCThread {
 public:
  /// Where the other interfaces are found; gives null when there is none.
  using FindInterface = IBase* (*)(GUID aInterfaceID);

  /// So many events wait at most; those that come on top are dropped.
  static constexpr std::size_t cMaxInputs = 4096;

  /// With the interfaces of InterfaceFactory.
  UserController();

  explicit UserController(FindInterface aFindInterface);
  UserController(UserController const&) = delete;
  UserController& operator=(UserController const&) = delete;

  /// See IBaseUser. A null aCallback is never told.
  GUID subscribeUser(std::string const& aType, IBaseUserCallback* aCallback) override;

  /// When it returns, no call of the subscriber is under way on another thread, and none will come.
  void unsubscribeUser(GUID aSubscriptionID) override;

  /// Ends the thread, if terminate() has not. What is still queued is never delivered.
  ~UserController() override;

  void t_Main() override;

  /// Does nothing but log.
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// The answers to what initialize() asked. The local address starts the service.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;

  /// One datagram: an envelope, or what would stand in its body. aSender tells nothing.
  void onMessage(std::string const& aMessage, std::string const& aSender) override;
  void onReturn(std::string const& aValue, GUID const& aCommandID) override;

  /// Starts the thread and asks the tree for this device's identity and address.
  void initialize();

  /// Ends the service and the thread, so that subscribers may go afterwards; on the thread itself
  /// it does not wait. What is still queued is never delivered.
  void terminate();

  /// Listens at the URL that the local address gave.
  void startService();

  /// What stands in the body of an envelope; the whole text if there is no body to be cut out.
  static std::string getMessage(std::string const& aMessage);

  /// Takes over aUserInput. Null is logged, and so is the first of those that there is no room for.
  void enqueueUserInput(UserInput* aUserInput);

  /// The oldest event, which the caller then owns; null when there is none.
  UserInput* dequeueUserInput();

  /// Delivers events until terminate().
  void processUserInputs();

  /// Events that wait for delivery, for diagnostics.
  std::size_t getQueueSize() const;

  LongestCall const& getLongestCallback() const { return mSubscriptions.getLongestCallback(); }

 private:
  struct Answer {
    std::string value;
    GUID transaction;
  };

  void requestSettings(ICoreData& aCoreData);
  void take(Answer const& aAnswer) ZELV_REQUIRES(mLock);
  void deliver(UserInput const& aInput);
  void stopThread();

  std::deque<std::unique_ptr<UserInput>> mInputs ZELV_GUARDED_BY(mLock);
  UserInputSubscriptionManager mSubscriptions;
  /// Kept, as callers of the tree have always seen it asked for; nothing needs it.
  std::string mLocalDeviceId ZELV_GUARDED_BY(mLock);
  GUID mLocalDeviceTransaction ZELV_GUARDED_BY(mLock);
  GUID mLocalIPTransaction ZELV_GUARDED_BY(mLock);
  std::unique_ptr<Infrastructure::URL> mServiceURL ZELV_GUARDED_BY(mLock);
  GUID mServiceHandle ZELV_GUARDED_BY(mLock);
  std::atomic<bool> mTerminate{false};
  ICoreCommand* mCoreCommand = nullptr;
  PCMutex mLock;
  PCSemaphore mSemaphore;

  FindInterface const mFindInterface;
  /// Answers may come before the requests have returned the ids that they are told by.
  bool mAsked ZELV_GUARDED_BY(mLock) = false;
  std::vector<Answer> mEarlyAnswers ZELV_GUARDED_BY(mLock);
  std::atomic<std::size_t> mQueueSize{0};
  /// Since the queue was full, until it is half empty.
  std::size_t mDropped ZELV_GUARDED_BY(mLock) = 0;
};

}  // namespace Zelv::Controller
