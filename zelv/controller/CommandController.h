#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zelv/adapter/SendCancel.h"
#include "zelv/controller/CallsUnderWay.h"
#include "zelv/controller/CommandControllerTask.h"
#include "zelv/controller/CommandHandlerRegistration.h"
#include "zelv/controller/CommandQueues.h"
#include "zelv/controller/CommandTasks.h"
#include "zelv/controller/LongestCall.h"
#include "zelv/controller/PendingCommands.h"
#include "zelv/controller/SeenMessages.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/interfaces/CommandArgs.h"
#include "zelv/interfaces/IAppCommand.h"
#include "zelv/interfaces/IBaseCommandCallback.h"
#include "zelv/interfaces/ICoreCommand.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/interfaces/ICoreTimerCallback.h"
#include "zelv/interfaces/NetworkMessageCallback.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/PCThread.h"

namespace Zelv::Controller {

/// Carries commands to handlers on this device and on others, and return values back.
///
/// A local command goes through a queue of tasks to this object's own thread, a remote one through
/// the queue of its device to that device's CommandControl service, where it takes the same way.
/// The service listens on port 4448, on TCP and UDP, once the address of this device is known; the
/// thread runs once its identity is known.
///
/// Threads: those of the network come to onMessage(), the data worker and whoever reports a change
/// to onData(), callers to the operations of commands; the own one runs handlers and callbacks,
/// with no lock held. Lock order: the main lock, then that of the queues; the tree is never asked
/// under either, since the tree's own lock is held by some of those that come to onData().
class CommandController : public virtual IAppCommand,
                          public virtual ICoreCommand,
                          public virtual ICoreDataCallback,
                          public virtual NetworkMessageCallback,
                          public virtual ICoreTimerCallback,
                          public virtual IBaseCommandCallback,
                          public virtual PCThread {
 public:
  /// Where the rest of the system is found.
  struct Surroundings {
    ICoreData* (*mFindCoreData)();
    ICoreTimer* (*mFindCoreTimer)();
    /// Null when there is no memory.
    std::unique_ptr<DeviceServiceQueue> (*mMakeQueue)();
  };

  /// For diagnostics.
  struct Statistics {
    std::size_t mTasks = 0;
    std::size_t mCallbacks = 0;
    std::size_t mPendingCommands = 0;
    std::size_t mSeenMessages = 0;
    std::list<CommandQueues::State> mQueues;
    LongestCall::Record mLongestCallback;
  };

  /// In the system of InterfaceFactory.
  CommandController();

  explicit CommandController(Surroundings const& aSurroundings);

  GUID executeCommand(std::string const& aCommand, std::string const& aDeviceID,
                      IBaseCommandCallback* aCallback) override;
  void discardCommandCallback(IBaseCommandCallback* aCallback) override;
  GUID registerCommandHandler(std::string const& aCommandName,
                              IBaseCommandHandler* aHandler) override;
  void unregisterCommandHandler(GUID const& aHandle) override;

  /// Deletes queued tasks without running them.
  ~CommandController() override;

  /// The address of a device could not be read; its command is dropped.
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// Takes this device's address and identity, the list of phones, and the addresses of devices
  /// that commands wait for.
  ///
  /// @throws std::logic_error "Invalid URL.", or what else parsing throws, when such an address is
  ///         none; its command is dropped then.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;

  /// Takes a command or a return value.
  ///
  /// @throws std::exception when an identifier in it is none; the network drops the message then,
  ///         with a line in the log.
  void onMessage(std::string const& aMessage, std::string const& aSender) override;

  void onTimer(std::string const& aTimerName, GUID aTimerID) override;

  /// Does nothing but log: return values of remote commands are the business of their handlers.
  void onReturn(std::string const& aValue, GUID const& aCommandID) override;

  void t_Main() override;

  /// Asks the tree who and where this device is. The answers may come while this runs.
  void initialize();

  /// Ends the services, the queues and the thread; afterwards no handler and no callback is called.
  /// Waits for the one being called, unless called from within it. What is still queued is not
  /// executed.
  void terminate();

  /// Listens for commands at the addresses that are known.
  void startService();

  /// Sends a handler's return value to the device that the command came from. On the calling
  /// thread, on TCP for up to 6 seconds; failures to send are only logged.
  ///
  /// @param aValue  put into the message as it stands, so MUST be XML or text without markup.
  /// @throws std::logic_error, or what else parsing throws, when aArgs.replyTo is no URL, as that
  ///         of a local command.
  void sendReturn(std::string const& aValue, CommandArgs const& aArgs);

  /// Ends the calls of sendReturn() under way, on whatever they wait; later ones send nothing.
  void cancelReturns();

  /// The body of a message, as it was sent; the whole text without a body element, and empty for a
  /// message that came before.
  std::string getMessage(std::string const& aMessage);

  /// The name by which a command's handler is found: the text of its first tag. Attributes, and the
  /// "/" of an element without content, are part of it.
  static std::string getCommandName(std::string const& aCommand);

  /// Calls the handler and keeps what it returns. False when there is none. Passes on what it
  /// throws.
  bool dispatchCommand(std::string const& aCommand, CommandArgs const& aArgs);

  /// @param aCallback  not used: return values go to whom the table of callbacks names.
  void executeExecuteCommand(std::string const& aCommand, CommandArgs const& aArgs,
                             IBaseCommandCallback* aCallback);
  void executeProcessCommandReturn(std::string const& aValue, GUID const& aRelatesTo,
                                   CommandArgs const& aArgs);

  static void multiStringToList(std::string const& aText, std::list<std::string>& aItems);

  /// Drops the queues of devices that are not in the list, with what they still hold.
  void terminateInactiveDeviceQueue(std::list<std::string> const& aOnlineDevices);

  /// Seconds since 1970, as text.
  static void getCurrentTime(std::string& aTime);

  /// Notes a message; true when it was noted before.
  bool checkDuplicateMessage(std::string const& aMessageID);
  void cleanExpiredMessages();

  /// Null when there is none.
  std::unique_ptr<CommandControllerTask> dequeueTask();

  /// The thread's loop.
  void processTasks();

  Statistics getStatistics() const;

 private:
  /// An answer of the tree that came before the identifiers were known to tell what it is.
  struct EarlyAnswer {
    std::string mValue;
    ContextInformation const* mContext;
    GUID mTransactionId;
  };

  void askTree(ICoreData& aCoreData, GUID& aIdentity, GUID& aAddress, GUID& aDevices);
  void admitAnswers(GUID const& aIdentity, GUID const& aAddress, GUID const& aDevices);
  void handleAnswer(std::string const& aValue, ContextInformation const* aContext,
                    GUID const& aTransactionID) ZELV_REQUIRES(mLock);
  void onLocalAddress(std::string const& aAddress) ZELV_REQUIRES(mLock);
  void onLocalIdentity(std::string const& aIdentity) ZELV_REQUIRES(mLock);
  void onDeviceList(std::string const& aDevices);
  void onServiceURL(std::string const& aValue, ContextInformation const* aContext)
      ZELV_REQUIRES(mLock);
  bool launchQueue(PendingCommandContext const& aCommand, Infrastructure::URL const& aURL,
                   std::string const& aText);
  void keepCallback(PendingCommandContext const& aCommand) ZELV_REQUIRES(mLock);

  void executeLocally(GUID const& aCommandId, std::string const& aCommand,
                      IBaseCommandCallback* aCallback) ZELV_REQUIRES(mLock);
  bool postToQueue(GUID const& aCommandId, std::string const& aCommand,
                   std::string const& aDeviceId, IBaseCommandCallback* aCallback)
      ZELV_REQUIRES(mLock);
  void requestURL(GUID const& aCommandId, std::string const& aCommand, std::string const& aDeviceId,
                  IBaseCommandCallback* aCallback);
  std::string envelope(GUID const& aCommandId, std::string const& aCommand) const
      ZELV_REQUIRES(mLock);

  std::unique_ptr<CommandControllerTask> taskOf(std::string const& aBody, CommandArgs const& aArgs,
                                                std::string const& aRelatesTo);
  bool tellCaller(GUID const& aKey, std::string const& aValue, GUID const& aCommandId);
  void queueTask(std::unique_ptr<CommandControllerTask> aTask) ZELV_REQUIRES(mLock);
  void endThread();

  std::map<std::string, CommandHandlerRegistration> mHandlers ZELV_GUARDED_BY(mLock);
  std::map<GUID, IBaseCommandCallback*> mCallbacks ZELV_GUARDED_BY(mLock);
  SeenMessages mSeenMessages ZELV_GUARDED_BY(mLock);
  CommandQueues mQueues;
  GUID mTCPService ZELV_GUARDED_BY(mLock);
  std::string mLocalDeviceId ZELV_GUARDED_BY(mLock);
  GUID mLocalDeviceTransaction ZELV_GUARDED_BY(mLock);
  GUID mLocalIPTransaction ZELV_GUARDED_BY(mLock);
  GUID mDiscoveredDevSubscription ZELV_GUARDED_BY(mLock);
  std::string mReturnValue ZELV_GUARDED_BY(mLock);
  std::unique_ptr<Infrastructure::URL> mTCPServiceURL ZELV_GUARDED_BY(mLock);
  std::string mTCPServiceText ZELV_GUARDED_BY(mLock);
  std::unique_ptr<Infrastructure::URL> mUDPServiceURL ZELV_GUARDED_BY(mLock);
  std::string mUDPServiceText ZELV_GUARDED_BY(mLock);
  GUID mUDPService ZELV_GUARDED_BY(mLock);
  mutable PCMutex mLock;
  /// One count for each task, and one for the end.
  PCSemaphore mTaskSemaphore;
  CommandTasks mTasks ZELV_GUARDED_BY(mLock);
  std::atomic<bool> mTerminate{false};

  bool mAnswersAdmitted ZELV_GUARDED_BY(mLock) = false;
  std::vector<EarlyAnswer> mEarlyAnswers ZELV_GUARDED_BY(mLock);
  PendingCommands mPending ZELV_GUARDED_BY(mLock);
  Surroundings const mSurroundings;
  CallsUnderWay mCalls;
  Adapter::SendCancel mReturns;
  LongestCall mLongestCallback;
};

}  // namespace Zelv::Controller
