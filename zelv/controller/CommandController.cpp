#include "zelv/controller/CommandController.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/OneHost.h"
#include "zelv/controller/CommandEnvelope.h"
#include "zelv/controller/ExecuteCommandTask.h"
#include "zelv/controller/ProcessCommandReturnTask.h"
#include "zelv/controller/TimedCall.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/XPathGate.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

using Adapter::NetworkAdapter;
using Infrastructure::HierarchicalDB;
using Infrastructure::URL;

namespace {

char const cIdentityPath[] = "/Zelv/Devices/LocalTV/@ID";
char const cAddressPath[] = "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
char const cDevicesPath[] = "/Zelv/Devices/Mobile/@ID";
char const cPort[] = "4448";

/// No one sets an interval, so whatever was not seen this very second has expired.
constexpr std::int64_t cExpiryInterval = 0;

/// Callers are told apart by their class; what they are told may be long, and is their business.
std::string const cNoSubject;

ICoreData* findCoreData() {
  return dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
}

ICoreTimer* findCoreTimer() {
  return dynamic_cast<ICoreTimer*>(InterfaceFactory::getInterface(IID_ICoreTimer));
}

std::unique_ptr<DeviceServiceQueue> makeQueue() {
  return std::unique_ptr<DeviceServiceQueue>(new (std::nothrow) DeviceServiceQueue);
}

std::string read(HierarchicalDB& aDocument, char const* aXPath) {
  std::string result;
  aDocument.getContent(aXPath, result);
  return result;
}

/// What stands between the tags in the text, whatever an XML parser would make of it.
bool cut(std::string const& aText, std::string const& aOpen, std::string const& aClose,
         std::string& aInner) {
  auto const open = aText.find(aOpen);
  if (open == std::string::npos) {
    return false;
  }
  auto const from = open + aOpen.size();
  auto const close = aText.find(aClose, from);
  if (close == std::string::npos) {
    return false;
  }
  aInner = aText.substr(from, close - from);
  return true;
}

bool isAddressForAnswers(std::string const& aText) {
  try {
    return Adapter::isOneHost(URL(aText));
  } catch (std::exception const&) {
    return false;
  }
}

/// One that could not be had does not replace one that is in use.
void keepHandle(GUID& aHandle, GUID const& aNew) {
  if (!(aNew == GUID::nullGUID)) {
    aHandle = aNew;
  }
}

URL serviceURL(std::string const& aText, std::string const& aDeviceId) {
  try {
    return URL(aText);
  } catch (std::exception const&) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::onData: no command goes to device: %s, its URL is '%s'.",
                       aDeviceId.c_str(), aText.c_str());
    throw;
  }
}

std::string textFor(unsigned long aLevel, GUID const& aId) {
  return PCRealDebug::Enabled(aLevel) ? aId.toString() : std::string();
}

}  // namespace

CommandController::CommandController()
    : CommandController(Surroundings{findCoreData, findCoreTimer, makeQueue}) {}

CommandController::CommandController(Surroundings const& aSurroundings)
    : mSurroundings(aSurroundings) {
  TraceScope trace("CommandController::CommandController");
  mTaskSemaphore.Create(0);
}

CommandController::~CommandController() {
  TraceScope trace("CommandController::~CommandController");
  PCRealDebug::Print(PCRealDebug::Trace,
                     "CommandController::~CommandController: Destroying PCThread ID = %d.",
                     static_cast<int>(GetId()));
  endThread();
  mQueues.removeAll();
  mQueues.drain();
  TCAutoLock lock(mLock);
  PCRealDebug::Print(PCRealDebug::Trace,
                     "CommandController::~CommandController: cleaning up %d tasks in task queue.",
                     static_cast<int>(mTasks.size()));
  mTasks.clear();
  mTaskSemaphore.Destroy();
}

// Start and end

void CommandController::initialize() {
  TraceScope trace("CommandController::initialize");
  GUID identity;
  GUID address;
  GUID devices;
  ICoreData* const coreData = mSurroundings.mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::initialize: Failed to obtain ICoreData interface.");
  } else if (mSurroundings.mFindCoreTimer() == nullptr) {
    // The text is shared with another class; those who watch the log look for it.
    PCRealDebug::Print(PCRealDebug::Error,
                       "DiscoveryService::initialize: Failed to obtain ICoreTimer interface.");
  } else {
    askTree(*coreData, identity, address, devices);
  }
  admitAnswers(identity, address, devices);
}

void CommandController::askTree(ICoreData& aCoreData, GUID& aIdentity, GUID& aAddress,
                                GUID& aDevices) {
  aIdentity = aCoreData.requestData(cIdentityPath, nullptr, this);
  aAddress = aCoreData.requestData(cAddressPath, nullptr, this);
  aDevices = aCoreData.subscribeData(cDevicesPath, nullptr, this);
}

// The data worker may be faster than askTree(), and without the identifiers its answers would be
// taken for those to commands, and the service never come up. No lock can keep it waiting that
// long: it comes to onData() under the lock that the requests need.
void CommandController::admitAnswers(GUID const& aIdentity, GUID const& aAddress,
                                     GUID const& aDevices) {
  TCAutoLock lock(mLock);
  mLocalDeviceTransaction = aIdentity;
  mLocalIPTransaction = aAddress;
  mDiscoveredDevSubscription = aDevices;
  mAnswersAdmitted = true;
  for (EarlyAnswer const& answer : std::exchange(mEarlyAnswers, {})) {
    try {
      handleAnswer(answer.mValue, answer.mContext, answer.mTransactionId);
    } catch (std::exception const& error) {
      PCRealDebug::Print(PCRealDebug::Error, "CommandController::initialize: Exception: %s",
                         error.what());
    }
  }
}

void CommandController::startService() {
  TraceScope trace("CommandController::startService");
  TCAutoLock lock(mLock);
  if (!mTCPServiceURL || !mUDPServiceURL) {
    return;
  }
  NetworkAdapter* const adapter = NetworkAdapter::getInstance();
  keepHandle(mTCPService, adapter->registerService(*mTCPServiceURL, this, ""));
  keepHandle(mUDPService, adapter->registerService(*mUDPServiceURL, this, ""));
}

void CommandController::terminate() {
  TraceScope trace("CommandController::terminate");
  GUID tcpService;
  GUID udpService;
  {
    TCAutoLock lock(mLock);
    mTerminate = true;
    tcpService = mTCPService;
    udpService = mUDPService;
  }
  mTaskSemaphore.Give();
  NetworkAdapter* const adapter = NetworkAdapter::getInstance();
  adapter->unregisterService(tcpService);
  adapter->unregisterService(udpService);
  mQueues.removeAll();
  mQueues.drain();
  endThread();
}

// A handler may be sending its return value to a device that has gone.
void CommandController::endThread() {
  mTerminate = true;
  mReturns.cancel();
  mTaskSemaphore.Give();
  PCThread::Destroy();
}

// The tree

void CommandController::onStatus(StatusInformation const&, GUID const& aTransactionID) {
  TraceScope trace("CommandController::onStatus");
  TCAutoLock lock(mLock);
  mPending.failed(aTransactionID);
}

void CommandController::onData(std::string const&, std::string const& aValue,
                               ContextInformation const* aContext, GUID const& aTransactionID) {
  TraceScope trace("CommandController::onData");
  TCAutoLock lock(mLock);
  if (mTerminate) {
    mPending.take(aContext);
  } else if (mAnswersAdmitted) {
    handleAnswer(aValue, aContext, aTransactionID);
  } else {
    mEarlyAnswers.push_back({aValue, aContext, aTransactionID});
  }
}

void CommandController::handleAnswer(std::string const& aValue, ContextInformation const* aContext,
                                     GUID const& aTransactionID) {
  if (aTransactionID == mLocalIPTransaction) {
    onLocalAddress(aValue);
  } else if (aTransactionID == mLocalDeviceTransaction) {
    onLocalIdentity(aValue);
  } else if (aTransactionID == mDiscoveredDevSubscription) {
    onDeviceList(aValue);
  } else {
    onServiceURL(aValue, aContext);
  }
}

void CommandController::onLocalAddress(std::string const& aAddress) {
  PCRealDebug::Print(PCRealDebug::Detail, "CommandController::onData: Local IP='%s'",
                     aAddress.c_str());
  mTCPServiceURL = std::make_unique<URL>("tcp", aAddress, cPort, "");
  mTCPServiceText = mTCPServiceURL->toString();
  PCRealDebug::Print(PCRealDebug::Notable,
                     "CommandController::onData: Add CommandControl service on '%s'",
                     mTCPServiceText.c_str());
  mUDPServiceURL = std::make_unique<URL>("udp", aAddress, cPort, "");
  mUDPServiceText = mUDPServiceURL->toString();
  PCRealDebug::Print(PCRealDebug::Notable,
                     "CommandController::onData: Add CommandControl service on '%s'",
                     mUDPServiceText.c_str());
  startService();
}

void CommandController::onLocalIdentity(std::string const& aIdentity) {
  mLocalDeviceId = aIdentity;
  PCRealDebug::Print(PCRealDebug::Detail, "CommandController::onData: mLocalDeviceId='%s'",
                     mLocalDeviceId.c_str());
  if (Create("Quorl - CommandController::onData", 4096) == 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::onData: Error creating a new thread");
  }
}

void CommandController::onDeviceList(std::string const& aDevices) {
  PCRealDebug::Print(PCRealDebug::Detail,
                     "CommandController::onData: mDiscoveredDevSubscription='%s'",
                     aDevices.c_str());
  if (aDevices.empty()) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "CommandController::terminateInactiveDeviceQueue: updated Device List "
                       "empty, remove all the service queue.");
    mQueues.removeAll();
    return;
  }
  std::list<std::string> devices;
  multiStringToList(aDevices, devices);
  terminateInactiveDeviceQueue(devices);
}

void CommandController::multiStringToList(std::string const& aText,
                                          std::list<std::string>& aItems) {
  aItems = Infrastructure::MultiString::split(aText);
}

void CommandController::terminateInactiveDeviceQueue(std::list<std::string> const& aOnlineDevices) {
  TraceScope trace("CommandController::terminateInactiveDeviceQueue");
  mQueues.keepOnly(aOnlineDevices, [](std::string const& aDeviceId) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "CommandController::terminateInactiveDeviceQueue() Device: '%s', not "
                       "present in the updated list.",
                       aDeviceId.c_str());
  });
}

// Commands that were given while the address was asked for ask each for themselves. With the first
// answer all of them go, so that none given later, which finds a queue, overtakes them.
void CommandController::onServiceURL(std::string const& aValue,
                                     ContextInformation const* aContext) {
  PCRealDebug::Print(PCRealDebug::Detail,
                     "CommandController::onData() got Remote device service URL: %s",
                     aValue.c_str());
  if (mPending.dropReleased(aContext)) {
    return;
  }
  std::unique_ptr<PendingCommandContext> const command = mPending.take(aContext);
  if (!command) {
    PCRealDebug::Print(PCRealDebug::Error, "CommandController::onData: Context is empty!!!!");
    return;
  }
  URL const url = serviceURL(aValue, command->mDeviceId);
  std::string const text = envelope(command->mCommandId, command->mCommand);
  if (!mQueues.post(command->mDeviceId, text) && !launchQueue(*command, url, text)) {
    return;
  }
  keepCallback(*command);
  for (PendingCommandContext const& later : mPending.release(command->mDeviceId)) {
    keepCallback(later);
    mQueues.post(later.mDeviceId, envelope(later.mCommandId, later.mCommand));
  }
}

void CommandController::keepCallback(PendingCommandContext const& aCommand) {
  if (aCommand.mCallback != nullptr) {
    mCallbacks[aCommand.mCommandId] = aCommand.mCallback;
  }
}

bool CommandController::launchQueue(PendingCommandContext const& aCommand, URL const& aURL,
                                    std::string const& aText) {
  std::string const& deviceId = aCommand.mDeviceId;
  std::unique_ptr<DeviceServiceQueue> queue = mSurroundings.mMakeQueue();
  if (!queue) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "CommandController::onData: failed to create deviceServiceQueue for device: %s !!!",
        deviceId.c_str());
    return false;
  }
  if (!queue->initialize(aURL, deviceId)) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "CommandController::onData: deviceServiceQueue for device: %s initialize failed!!!!",
        deviceId.c_str());
    return false;
  }
  // Nothing is wrong, but the log is watched for it at this level.
  PCRealDebug::Print(PCRealDebug::Error,
                     "CommandController::onData: deviceServiceQueue for device: %s is launched, "
                     "Thread ID=%d",
                     deviceId.c_str(), queue->getThreadID());
  mQueues.add(deviceId, std::move(queue), aText);
  return true;
}

// Giving commands

GUID CommandController::executeCommand(std::string const& aCommand, std::string const& aDeviceID,
                                       IBaseCommandCallback* aCallback) {
  TraceScope trace("CommandController::executeCommand");
  if (aCommand.empty()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::executeCommand: aCommand parameter is empty.");
    throw std::invalid_argument("aCommand parameter is empty!");
  }
  if (aCallback == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::executeCommand: aCallback parameter is NULL.");
    throw std::invalid_argument("aCallback parameter is NULL!");
  }
  GUID const commandId = GUID::createGUID();
  {
    TCAutoLock lock(mLock);
    if (aDeviceID.empty() || aDeviceID == mLocalDeviceId) {
      executeLocally(commandId, aCommand, aCallback);
      return commandId;
    }
    if (postToQueue(commandId, aCommand, aDeviceID, aCallback)) {
      return commandId;
    }
  }
  requestURL(commandId, aCommand, aDeviceID, aCallback);
  return commandId;
}

void CommandController::executeLocally(GUID const& aCommandId, std::string const& aCommand,
                                       IBaseCommandCallback* aCallback) {
  PCRealDebug::Print(PCRealDebug::Notable,
                     "CommandController::executeCommand: DeviceID is NULL; sending command to "
                     "Local Host.");
  mCallbacks[aCommandId] = aCallback;
  CommandArgs const args{aCommandId, GUID::nullGUID, "", ""};
  queueTask(std::make_unique<ExecuteCommandTask>(this, aCommand, args, aCallback));
}

bool CommandController::postToQueue(GUID const& aCommandId, std::string const& aCommand,
                                    std::string const& aDeviceId, IBaseCommandCallback* aCallback) {
  if (!mQueues.has(aDeviceId)) {
    return false;
  }
  std::string const text = envelope(aCommandId, aCommand);
  PCRealDebug::Print(PCRealDebug::Detail,
                     "CommandController::executeCommand() The created message is: %s",
                     text.c_str());
  // Before the command goes, since its return may be quick.
  mCallbacks[aCommandId] = aCallback;
  if (mQueues.post(aDeviceId, text)) {
    return true;
  }
  mCallbacks.erase(aCommandId);
  return false;
}

std::string CommandController::envelope(GUID const& aCommandId, std::string const& aCommand) const {
  return CommandEnvelope::command(aCommandId, mLocalDeviceId, mTCPServiceText, aCommand);
}

void CommandController::requestURL(GUID const& aCommandId, std::string const& aCommand,
                                   std::string const& aDeviceId, IBaseCommandCallback* aCallback) {
  PCRealDebug::Print(PCRealDebug::Detail,
                     "CommandController::executeCommand() No existing message queue and URL for "
                     "device: %s, creating new one \n",
                     aDeviceId.c_str());
  PCRealDebug::Print(PCRealDebug::Notable,
                     "CommandController::executeCommand: Requesting URL for Remote Host: %s.",
                     aDeviceId.c_str());
  ICoreData* const coreData = mSurroundings.mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::executeCommand: Failed to obtain ICoreData interface.");
    throw std::runtime_error(
        "CommandController::executeCommand: Failed to obtain ICoreData interface!");
  }
  if (!Infrastructure::XPathGate::isQuotableLiteral(aDeviceId)) {
    // No device has such an identifier, and in the path it would be more than one.
    PCRealDebug::Print(PCRealDebug::Warning,
                       "CommandController::executeCommand: There is no device '%s'.",
                       aDeviceId.c_str());
    return;
  }
  auto command =
      std::make_unique<PendingCommandContext>(aCommandId, aCommand, aDeviceId, aCallback);
  ContextInformation const* context = nullptr;
  {
    TCAutoLock lock(mLock);
    if (postToQueue(aCommandId, aCommand, aDeviceId, aCallback)) {
      return;  // the answer to an earlier one came in between
    }
    context = mPending.add(std::move(command));
  }
  GUID const transactionId = coreData->requestData("/Zelv/Devices/Mobile[@ID='" + aDeviceId +
                                                       "']/Services/Service[Name='CommandControl']"
                                                       "/URL/text()",
                                                   context, this);
  TCAutoLock lock(mLock);
  mPending.asked(context, transactionId);
}

void CommandController::discardCommandCallback(IBaseCommandCallback* aCallback) {
  TraceScope trace("CommandController::discardCommandCallback");
  if (aCallback == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::discardCommandCallback: aCallback parameter is NULL.");
    throw std::invalid_argument("aCallback parameter is NULL!");
  }
  auto const tell = [](GUID const& aCommandId) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "CommandController::discardCommandCallback: discarding callback for "
                       "command '%s'.",
                       textFor(PCRealDebug::Detail, aCommandId).c_str());
  };
  {
    TCAutoLock lock(mLock);
    std::erase_if(mCallbacks, [&](auto const& aEntry) {
      if (aEntry.second != aCallback) {
        return false;
      }
      tell(aEntry.first);
      return true;
    });
    mPending.forget(aCallback, tell);
  }
  // The caller is free to delete it when this returns.
  mCalls.waitForEnd(aCallback);
}

// Handlers

GUID CommandController::registerCommandHandler(std::string const& aCommandName,
                                               IBaseCommandHandler* aHandler) {
  TraceScope trace("CommandController::registerCommandHandler");
  if (aCommandName.empty()) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "CommandController::registerCommandHandler: aCommandName parameter is empty.");
    throw std::invalid_argument("aCommandName parameter is empty!");
  }
  TCAutoLock lock(mLock);
  GUID const handle = GUID::createGUID();
  if (!mHandlers.try_emplace(aCommandName, CommandHandlerRegistration{handle, aHandler}).second) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "CommandController::registerCommandHandler: Command handler already registered.");
    throw std::logic_error("Command handler already registered.");
  }
  return handle;
}

void CommandController::unregisterCommandHandler(GUID const& aHandle) {
  TraceScope trace("CommandController::unregisterCommandHandler");
  IBaseCommandHandler* handler = nullptr;
  {
    TCAutoLock lock(mLock);
    std::size_t const erased = std::erase_if(mHandlers, [&](auto const& aEntry) {
      if (!(aEntry.second.mHandle == aHandle)) {
        return false;
      }
      handler = aEntry.second.mHandler;
      return true;
    });
    if (erased == 0) {
      PCRealDebug::Print(PCRealDebug::Warning,
                         "CommandController::unregisterCommandHandler: Registration not found!");
      return;
    }
  }
  mCalls.waitForEnd(handler);
}

// Messages

void CommandController::onMessage(std::string const& aMessage, std::string const&) {
  TraceScope trace("CommandController::onMessage");
  HierarchicalDB message(HierarchicalDB::OfOneThread{});
  message.loadFromString(aMessage);
  if (!message.isLoaded()) {
    PCRealDebug::Print(PCRealDebug::Error, "CommandController::onMessage: Failed to load Message.");
    return;
  }
  std::string const messageId = read(message, "/Envelope/Header/MessageID/text()");
  if (messageId.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "CommandController::OnMessage: Message has no MessageID. Ignoring it!");
    return;
  }
  std::string const senderId = read(message, "/Envelope/Header/SenderID/text()");
  std::string const replyTo = read(message, "/Envelope/Header/ReplyTo/text()");
  if (!replyTo.empty() && !isAddressForAnswers(replyTo)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "CommandController::onMessage: replyTo is not a valid URL '%s'.",
                       replyTo.c_str());
    return;
  }
  std::string const relatesTo = read(message, "/Envelope/Header/RelatesTo/text()");
  std::string const body = getMessage(aMessage);
  if (body.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "CommandController::onMessage: message has empty body.");
    return;
  }
  CommandArgs const args{GUID::createGUID(), GUID(messageId), senderId, replyTo};
  std::unique_ptr<CommandControllerTask> task = taskOf(body, args, relatesTo);
  {
    TCAutoLock lock(mLock);
    if (!mTasks.pushFromNetwork(std::move(task))) {
      PCRealDebug::Print(PCRealDebug::Warning,
                         "CommandController::onMessage: Too many commands wait, message dropped.");
      return;
    }
  }
  // Without the lock, which the thread that wakes takes first.
  mTaskSemaphore.Give();
}

std::unique_ptr<CommandControllerTask> CommandController::taskOf(std::string const& aBody,
                                                                 CommandArgs const& aArgs,
                                                                 std::string const& aRelatesTo) {
  if (!aRelatesTo.empty()) {
    return std::make_unique<ProcessCommandReturnTask>(this, aBody, GUID(aRelatesTo), aArgs);
  }
  return std::make_unique<ExecuteCommandTask>(this, aBody, aArgs, this);
}

// On the text and not the document, so that the body comes out exactly as it was sent.
std::string CommandController::getMessage(std::string const& aMessage) {
  TraceScope trace("CommandController::getMessage");
  std::string messageId;
  if (cut(aMessage, "<MessageID>", "</MessageID>", messageId) && checkDuplicateMessage(messageId)) {
    return "";
  }
  std::string body;
  return cut(aMessage, "<Body>", "</Body>", body) ? body : aMessage;
}

std::string CommandController::getCommandName(std::string const& aCommand) {
  if (aCommand.empty()) {
    return "";
  }
  auto const end = aCommand.find('>', 1);
  return aCommand.substr(1, end == std::string::npos ? end : end - 1);
}

void CommandController::sendReturn(std::string const& aValue, CommandArgs const& aArgs) {
  TraceScope trace("CommandController::sendReturn");
  std::string senderId;
  {
    TCAutoLock lock(mLock);
    senderId = mLocalDeviceId;
  }
  std::string const text = CommandEnvelope::reply(senderId, aArgs.messageId, aValue);
  URL const url(aArgs.replyTo);
  if (!mReturns.isCancelled()) {
    NetworkAdapter::getInstance()->send(url, text, "", 1, mReturns);
  }
}

void CommandController::cancelReturns() {
  mReturns.cancel();
}

// Tasks

void CommandController::queueTask(std::unique_ptr<CommandControllerTask> aTask) {
  mTasks.push(std::move(aTask));
  mTaskSemaphore.Give();
}

std::unique_ptr<CommandControllerTask> CommandController::dequeueTask() {
  TCAutoLock lock(mLock);
  return mTasks.take();
}

void CommandController::t_Main() {
  processTasks();
}

void CommandController::processTasks() {
  TraceScope trace("CommandController::processTasks");
  for (;;) {
    mTaskSemaphore.Take();
    if (mTerminate) {
      return;
    }
    std::unique_ptr<CommandControllerTask> const task = dequeueTask();
    if (!task) {
      continue;
    }
    try {
      task->execute();
    } catch (std::exception const& error) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "CommandController::processTasks: Exception in a task: %s", error.what());
    } catch (...) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "CommandController::processTasks: Unknown exception in a task.");
    }
  }
}

void CommandController::executeExecuteCommand(std::string const& aCommand, CommandArgs const& aArgs,
                                              IBaseCommandCallback*) {
  TraceScope trace("CommandController::executeExecuteCommand");
  if (!dispatchCommand(aCommand, aArgs)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::executeExecuteCommand: dispatchCommand failed.");
  }
  // Without a handler that is what the last one returned; callers see it.
  std::string value;
  {
    TCAutoLock lock(mLock);
    value = mReturnValue;
  }
  if (!value.empty() && !tellCaller(aArgs.commandId, value, aArgs.commandId)) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "CommandController::executeExecuteCommand: No callback related to command '%s'.",
        textFor(PCRealDebug::Warning, aArgs.commandId).c_str());
  }
}

bool CommandController::dispatchCommand(std::string const& aCommand, CommandArgs const& aArgs) {
  TraceScope trace("CommandController::dispatchCommand");
  if (aCommand.empty()) {
    return false;
  }
  std::string const name = getCommandName(aCommand);
  CallsUnderWay::Call call(mCalls);
  IBaseCommandHandler* handler = nullptr;
  {
    TCAutoLock lock(mLock);
    auto const entry = mHandlers.find(name);
    if (entry != mHandlers.end() && entry->second.mHandler != nullptr) {
      handler = entry->second.mHandler;
      call.begin(handler);
      mReturnValue.clear();
    }
  }
  if (handler == nullptr) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "CommandController::dispatchCommand: No handler found for command type '%s'.",
        name.c_str());
    return false;
  }
  std::string value;
  {
    TimedCall const timed(mLongestCallback, "onCommand", typeid(*handler), name);
    value = handler->onCommand(aCommand, aArgs);
  }
  TCAutoLock lock(mLock);
  mReturnValue = value;
  return true;
}

// The caller is told the identifier of this execution, not the one that executeCommand() gave it: a
// caller tells its commands apart by the callback.
void CommandController::executeProcessCommandReturn(std::string const& aValue,
                                                    GUID const& aRelatesTo,
                                                    CommandArgs const& aArgs) {
  TraceScope trace("CommandController::executeProcessCommandReturn");
  if (!aValue.empty() && !tellCaller(aRelatesTo, aValue, aArgs.commandId)) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "CommandController::executeProcessCommandReturn: No callback related to message '%s'.",
        textFor(PCRealDebug::Warning, aRelatesTo).c_str());
  }
}

// The entry stays: a callback lives until it is discarded.
bool CommandController::tellCaller(GUID const& aKey, std::string const& aValue,
                                   GUID const& aCommandId) {
  CallsUnderWay::Call call(mCalls);
  IBaseCommandCallback* callback = nullptr;
  {
    TCAutoLock lock(mLock);
    auto const entry = mCallbacks.find(aKey);
    if (entry == mCallbacks.end()) {
      return false;
    }
    callback = entry->second;
    call.begin(callback);
  }
  TimedCall const timed(mLongestCallback, "onReturn", typeid(*callback), cNoSubject);
  callback->onReturn(aValue, aCommandId);
  return true;
}

void CommandController::onReturn(std::string const&, GUID const&) {
  TraceScope trace("CommandController::onReturn");
}

// Messages seen

void CommandController::onTimer(std::string const& aTimerName, GUID) {
  TraceScope trace("CommandController::onTimer");
  if (aTimerName == "HeartBeatTimer") {
    cleanExpiredMessages();
  }
}

void CommandController::getCurrentTime(std::string& aTime) {
  aTime = std::to_string(PCTime::EpochTime());
}

bool CommandController::checkDuplicateMessage(std::string const& aMessageID) {
  TCAutoLock lock(mLock);
  if (!mSeenMessages.check(aMessageID, PCTime::EpochTime())) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "CommandController::checkDuplicateMessage: Message '%s' is duplicate.",
                     aMessageID.c_str());
  return true;
}

void CommandController::cleanExpiredMessages() {
  TCAutoLock lock(mLock);
  std::int64_t const limit = PCTime::EpochTime() - cExpiryInterval / 2;
  mSeenMessages.forgetBefore(limit, [&](std::string const& aId, std::int64_t aTime) {
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "CommandController::cleanExpiredMessages: Discarding msg '%s', received: %d, now: %d.",
        aId.c_str(), static_cast<int>(aTime), static_cast<int>(limit));
  });
}

CommandController::Statistics CommandController::getStatistics() const {
  Statistics statistics;
  statistics.mQueues = mQueues.states();
  statistics.mLongestCallback = mLongestCallback.get();
  TCAutoLock lock(mLock);
  statistics.mTasks = mTasks.size();
  statistics.mCallbacks = mCallbacks.size();
  statistics.mPendingCommands = mPending.size();
  statistics.mSeenMessages = mSeenMessages.size();
  return statistics;
}

}  // namespace Zelv::Controller
