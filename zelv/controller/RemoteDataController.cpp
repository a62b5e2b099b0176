#include "zelv/controller/RemoteDataController.h"

#include <exception>
#include <optional>
#include <utility>
#include <vector>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/controller/DataController.h"
#include "zelv/controller/ForOthers.h"
#include "zelv/controller/OnlineDevices.h"
#include "zelv/controller/RemoteDataReader.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/XPathGate.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

using Adapter::NetworkAdapter;
using Infrastructure::URL;

namespace {

char const cIdentityPath[] = "/Zelv/Devices/LocalTV/@ID";
char const cLocalAddressPath[] =
    "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
char const cServicePort[] = "4446";

ICoreData* findInterface() {
  return dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
}

std::string lookupPath(std::string const& aDeviceId) {
  return "/Zelv/Devices/RemoteTV[@ID='" + aDeviceId +
         "']/Services/Service[Name='DataControl']/URL/text()";
}

void logLost(std::string const& aDeviceID) {
  // One text for all messages, whatever was to be sent.
  PCRealDebug::Print(
      PCRealDebug::Notable,
      "RemoteDataController::sendRequestData: ERROR sending message to deviceID = '%s'",
      aDeviceID.c_str());
}

}  // namespace

RemoteDataController::RemoteDataController(DataController* aOwner)
    : RemoteDataController(aOwner, findInterface) {}

RemoteDataController::RemoteDataController(DataController* aOwner, FindCoreData aFindCoreData)
    : mServiceHandle(GUID::nullGUID),
      mLocalDeviceTransaction(GUID::nullGUID),
      mOwner(aOwner),
      mFindCoreData(aFindCoreData) {}

RemoteDataController::~RemoteDataController() {
  TraceScope trace("RemoteDataController::~RemoteDataController");
}

// Start and end

void RemoteDataController::initialize() {
  TraceScope trace("RemoteDataController::initialize");
  ICoreData* const coreData = mFindCoreData();
  if (coreData == nullptr) {
    // The text is shared with another controller; those who watch the log look for it.
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::initialize: Failed to obtain ICoreData interface.");
    return;
  }
  mLocalDeviceTransaction = coreData->requestData(cIdentityPath, nullptr, this);
}

void RemoteDataController::onAddress(std::string const& aAddress) {
  URL const url("tcp", aAddress, cServicePort, "");
  std::string const text = url.toString();
  {
    TCAutoLock lock(mServiceLock);
    mServiceUrl = std::make_unique<URL>(url);
  }
  mMessages.setServiceUrl(text);
  PCRealDebug::Print(PCRealDebug::Notable,
                     "RemoteDataController::onData: Starting DataControl service on '%s'",
                     text.c_str());
  startService();
}

void RemoteDataController::startService() {
  TraceScope trace("RemoteDataController::startService");
  TCAutoLock lock(mServiceLock);
  if (mTerminated || !mServiceUrl) {
    return;
  }
  GUID const handle = NetworkAdapter::getInstance()->registerService(*mServiceUrl, this, "");
  // Whoever reads the address from afar brings us here once more. The service that stands must stay
  // known, to be taken down.
  if (!(handle == GUID::nullGUID)) {
    mServiceHandle = handle;
  }
}

void RemoteDataController::terminate() {
  TraceScope trace("RemoteDataController::terminate");
  GUID handle;
  {
    TCAutoLock lock(mServiceLock);
    mTerminated = true;
    handle = std::exchange(mServiceHandle, GUID::nullGUID);
  }
  NetworkAdapter::getInstance()->unregisterService(handle);
  mQueues.terminate();
}

// Asking other devices

void RemoteDataController::executeGetData(GUID const& aTransactionID, std::string const& aXPath,
                                          ContextInformation const*, IBaseDataCallback*,
                                          bool aOneTime) {
  TraceScope trace("RemoteDataController::executeGetData");
  std::string const deviceId = DataController::getDeviceIdFromXPath(aXPath);
  ICoreData* const coreData = mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataProvider::executeGetData: Failed to obtain ICoreData interface.");
    return;
  }
  // No device has such an id, and in the path below it would mean something else.
  if (!Infrastructure::XPathGate::isQuotableLiteral(deviceId)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "RemoteDataController::onData: DataControl service URL not found!");
    return;
  }
  std::string const lookup = lookupPath(deviceId);
  auto const context =
      std::make_shared<GetDataContext>(aTransactionID, aXPath, aOneTime, deviceId, lookup);
  mContexts.add(context);
  try {
    mContexts.started(*context, coreData->requestData(lookup, context.get(), this));
  } catch (...) {
    mContexts.cancel(*context);
    throw;
  }
}

void RemoteDataController::executeSetData(GUID const&, std::string const&, std::string const&, bool,
                                          IBaseDataCallback*, bool) {}

void RemoteDataController::onServiceUrl(GetDataContext const& aContext, std::string const& aValue) {
  PCRealDebug::Print(PCRealDebug::Trace,
                     "RemoteDataController::onData: DataControl service URL='%s'", aValue.c_str());
  if (aValue.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "RemoteDataController::onData: DataControl service URL not found!");
    return;
  }
  URL const url(aValue);
  if (aContext.oneTime) {
    sendRequestData(url, &aContext);
  } else {
    sendSubscribeData(url, &aContext);
  }
}

void RemoteDataController::sendRequestData(URL const& aServiceEndPoint,
                                           GetDataContext const* aContext) {
  TraceScope trace("RemoteDataController::sendRequestData");
  if (PCRealDebug::Enabled(PCRealDebug::Detail)) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::sendRequestData: service='%s', transaction='%s', "
                       "XPath='%s', deviceID='%s'",
                       aServiceEndPoint.toString().c_str(),
                       aContext->transactionId.toString().c_str(), aContext->xpath.c_str(),
                       aContext->deviceId.c_str());
  }
  std::string const message = mMessages.requestData(
      aContext->transactionId, DataController::convertToLocalXPath(aContext->xpath));
  PCRealDebug::Print(PCRealDebug::Notable, "RemoteDataController::sendRequestData: message='%s'",
                     message.c_str());
  if (!sendToDeviceServiceQueue(message, aServiceEndPoint, aContext->deviceId)) {
    logLost(aContext->deviceId);
  }
}

void RemoteDataController::sendSubscribeData(URL const& aServiceEndPoint,
                                             GetDataContext const* aContext) {
  TraceScope trace("RemoteDataController::sendSubscribeData");
  if (PCRealDebug::Enabled(PCRealDebug::Detail)) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::sendSubscribeData: service='%s', subscription='%s', "
                       "XPath='%s', deviceID='%s'",
                       aServiceEndPoint.toString().c_str(),
                       aContext->transactionId.toString().c_str(), aContext->xpath.c_str(),
                       aContext->deviceId.c_str());
  }
  std::string const message = mMessages.subscribeData(
      aContext->transactionId, DataController::convertToLocalXPath(aContext->xpath));
  PCRealDebug::Print(PCRealDebug::Notable, "RemoteDataController::sendSubscribeData: message='%s'",
                     message.c_str());
  if (!sendToDeviceServiceQueue(message, aServiceEndPoint, aContext->deviceId)) {
    logLost(aContext->deviceId);
  }
}

void RemoteDataController::sendUnsubscribeData(URL const& aServiceEndPoint,
                                               GUID const& aSubscriptionID,
                                               std::string const& aDeviceID) {
  TraceScope trace("RemoteDataController::sendUnsubscribeData");
  if (!sendToDeviceServiceQueue(mMessages.unsubscribeData(aSubscriptionID), aServiceEndPoint,
                                aDeviceID)) {
    logLost(aDeviceID);
  }
}

void RemoteDataController::sendOnData(GUID const& aSubscriptionID, URL const& aRemoteEndPoint,
                                      std::string const& aValue, std::string const& aDeviceID) {
  TraceScope trace("RemoteDataController::sendOnData");
  if (!sendToDeviceServiceQueue(mMessages.onData(aSubscriptionID, aValue), aRemoteEndPoint,
                                aDeviceID)) {
    logLost(aDeviceID);
  }
}

bool RemoteDataController::sendToDeviceServiceQueue(std::string const& aMessage, URL const& aURL,
                                                    std::string const& aDeviceID) {
  TraceScope trace("RemoteDataController::sendToDeviceServiceQueue");
  return mQueues.post(aMessage, aURL, aDeviceID);
}

// Answers of this device's tree

void RemoteDataController::onData(std::string const& aXPath, std::string const& aValue,
                                  ContextInformation const* aContext, GUID const& aTransactionID) {
  TraceScope trace("RemoteDataController::onData");
  if (aTransactionID == mLocalDeviceTransaction) {
    mMessages.setLocalDeviceId(aValue);
    return;
  }
  RemoteDataContexts::Context const context = mContexts.answered(aContext, aXPath, aTransactionID);
  // By the path alone, so that another device that asks for it gets no answer. Peers know the
  // address by the way they came.
  if (aXPath == cLocalAddressPath) {
    onAddress(aValue);
    return;
  }
  if (!context) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::onData: nobody waits for '%s' any more.",
                       aXPath.c_str());
    return;
  }
  if (context->kind == RemoteDataContext::Kind::Subscription) {
    answer(static_cast<RemoteDataSubscriptionContext const&>(*context), aValue);
  } else {
    onServiceUrl(static_cast<GetDataContext const&>(*context), aValue);
  }
}

void RemoteDataController::answer(RemoteDataSubscriptionContext const& aContext,
                                  std::string const& aValue) {
  sendOnData(aContext.remoteId, aContext.notifyTo, aValue, aContext.deviceId);
}

void RemoteDataController::onStatus(StatusInformation const&, GUID const& aTransactionID) {
  TraceScope trace("RemoteDataController::onStatus");
  mContexts.failed(aTransactionID);
}

// Messages of other devices

void RemoteDataController::onMessage(std::string const& aMessage, std::string const&) {
  TraceScope trace("RemoteDataController::onMessage");
  try {
    handleMessage(aMessage);
  } catch (std::exception const& exception) {
    PCRealDebug::Print(PCRealDebug::Error, "RemoteDataController::onMessage: Exception: %s",
                       exception.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error, "RemoteDataController::onMessage: Unknown exception.");
  }
}

void RemoteDataController::handleMessage(std::string const& aMessage) {
  RemoteDataReader message(aMessage);
  if (!message.isLoaded()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: Failed to load Message.");
    return;
  }
  ICoreData* const coreData = mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataProvider::onMessage: Failed to obtain ICoreData interface.");
    return;
  }
  handleType(message, *coreData);
}

void RemoteDataController::handleType(RemoteDataReader& aMessage, ICoreData& aCoreData) {
  std::string const type = aMessage.type();
  if (type == "OnData") {
    PCRealDebug::Print(PCRealDebug::Notable, "RemoteDataController::onMessage: Received OnData.");
    handleOnData(aMessage, aCoreData);
  } else if (type == "RequestData") {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "RemoteDataController::onMessage: Received RequestData.");
    handleQuestion(aMessage, true, aCoreData);
  } else if (type == "SubscribeData") {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "RemoteDataController::onMessage: Received SubscribeData.");
    handleQuestion(aMessage, false, aCoreData);
  } else if (type == "UnsubscribeData") {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "RemoteDataController::onMessage: Received UnsubscribeData.");
    handleUnsubscribe(aMessage, aCoreData);
  } else if (type == "SetData") {
    PCRealDebug::Print(PCRealDebug::Notable, "RemoteDataController::onMessage: Received SetData.");
    handleSetData(aMessage, aCoreData);
  }
}

void RemoteDataController::handleOnData(RemoteDataReader& aMessage, ICoreData& aCoreData) {
  std::optional<GUID> const id = aMessage.subscriptionId("OnData");
  if (id) {
    aCoreData.notifyDataSubscriber(*id, aMessage.value());
  }
}

void RemoteDataController::handleQuestion(RemoteDataReader& aMessage, bool aOneTime,
                                          ICoreData& aCoreData) {
  std::optional<URL> const notifyTo = aMessage.notifyTo();
  if (!notifyTo) {
    return;
  }
  std::optional<GUID> const id =
      aOneTime ? aMessage.transactionId() : aMessage.subscriptionId("SubscribeData");
  if (!id) {
    return;
  }
  // Every text of the short form reads as the null identifier, so that all of them would be one.
  if (*id == GUID::nullGUID) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::onMessage: the null GUID names no request.");
    return;
  }
  std::optional<std::string> const path = aMessage.path(aOneTime ? "RequestData" : "SubscribeData");
  std::optional<std::string> const senderId = aMessage.boundedSenderId();
  if (path && senderId && !isBusy()) {
    ask(std::make_shared<RemoteDataSubscriptionContext>(*id, *notifyTo, *senderId, aOneTime, *path),
        aCoreData);
  }
}

void RemoteDataController::ask(Subscription const& aContext, ICoreData& aCoreData) {
  Subscription gone;
  if (mContexts.add(aContext, gone) == RemoteDataContexts::Added::Refused) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "RemoteDataController::onMessage: Too many remote subscriptions, '%s' of "
                       "device '%s' is refused.",
                       aContext->remoteId.toString().c_str(), aContext->deviceId.c_str());
    return;
  }
  if (gone) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "RemoteDataController::onMessage: Too many remote subscriptions, '%s' of "
                       "device '%s' gives way.",
                       gone->remoteId.toString().c_str(), gone->deviceId.c_str());
    takeBack(*gone, aCoreData);
  }
  bool stays = true;
  ForOthers const scope;
  try {
    GUID const localId = aContext->oneTime
                             ? aCoreData.requestData(aContext->localXPath, aContext.get(), this)
                             : aCoreData.subscribeData(aContext->localXPath, aContext.get(), this);
    stays = mContexts.started(*aContext, localId);
  } catch (...) {
    mContexts.cancel(*aContext);
    throw;
  }
  if (!stays) {
    takeBack(*aContext, aCoreData);
  }
}

/// One that was removed before its id was known is taken back by the thread that asks for it.
void RemoteDataController::takeBack(RemoteDataSubscriptionContext const& aContext,
                                    ICoreData& aCoreData) {
  GUID const localId = mContexts.localIdOf(aContext);
  if (!(localId == GUID::nullGUID)) {
    aCoreData.unsubscribeData(localId);
  }
}

void RemoteDataController::handleUnsubscribe(RemoteDataReader& aMessage, ICoreData& aCoreData) {
  std::optional<GUID> const id = aMessage.subscriptionId("UnsubscribeData");
  if (!id) {
    return;
  }
  std::vector<Subscription> const removed = mContexts.remove(*id);
  if (removed.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "RemoteDataController::onMessage: Remote subscription '%s' not found!",
                       id->toString().c_str());
    return;
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "RemoteDataController::onMessage: Removing subscription '%s'.",
                     id->toString().c_str());
  for (Subscription const& context : removed) {
    takeBack(*context, aCoreData);
  }
}

void RemoteDataController::handleSetData(RemoteDataReader& aMessage, ICoreData& aCoreData) {
  std::optional<std::string> const path = aMessage.path("SetData");
  if (!path) {
    return;
  }
  std::optional<std::string> const value = aMessage.newValue();
  if (value && !isBusy()) {
    // Anybody may write. Whoever looks for a change that nobody wanted finds it here.
    PCRealDebug::Print(PCRealDebug::Notable,
                       "RemoteDataController::onMessage: '%s' is set by device '%s'.",
                       path->c_str(), aMessage.senderId().c_str());
    ForOthers const scope;
    aCoreData.setData(*path, *value, this, true);
  }
}

/// Other devices may flood the tree, but not without end.
bool RemoteDataController::isBusy() const {
  if (mOwner->getQueueSize() < cDataTasks) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Warning,
                     "RemoteDataController::onMessage: Too many data tasks, message dropped.");
  return true;
}

// Devices that leave

std::list<std::string> RemoteDataController::multiStringToList(std::string const& aText) {
  return Infrastructure::MultiString::split(aText);
}

void RemoteDataController::terminateInactiveDeviceQueue(
    std::list<std::string> const& aOnlineDevices) {
  mQueues.terminateInactive(aOnlineDevices);
}

void RemoteDataController::removeInactiveDeviceSubscription(
    std::list<std::string> const& aOnlineDevices) {
  TraceScope trace("RemoteDataController::removeInactiveDeviceSubscription");
  ICoreData* const coreData = mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataProvider::removeInactiveDeviceSubscription: Failed to obtain "
                       "ICoreData interface.");
    return;
  }
  PCRealDebug::Print(
      PCRealDebug::Detail,
      "RemoteDataController::removeInactiveDeviceSubscription: mOnlineDevIDList.size=%d",
      static_cast<int>(aOnlineDevices.size()));
  mContexts.setOnline({aOnlineDevices.begin(), aOnlineDevices.end()});
  OnlineDevices const online(aOnlineDevices);
  auto const isGone = [&online](RemoteDataSubscriptionContext const& aContext) {
    if (aContext.deviceId.empty()) {
      return false;
    }
    online.forEachUpTo(aContext.deviceId, [](std::string const& aListed) {
      PCRealDebug::Print(
          PCRealDebug::Detail,
          "RemoteDataController::removeInactiveDeviceSubscription: Compare with Device ID: '%s'",
          aListed.c_str());
    });
    if (online.has(aContext.deviceId)) {
      PCRealDebug::Print(
          PCRealDebug::Detail,
          "RemoteDataController::removeInactiveDeviceSubscription: Device ID: '%s', found.",
          aContext.deviceId.c_str());
      return false;
    }
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::removeInactiveDeviceSubscription: Device ID: '%s', "
                       "not present in the updated list.",
                       aContext.deviceId.c_str());
    return true;
  };
  for (Subscription const& context : mContexts.removeIf(isGone)) {
    takeBack(*context, *coreData);
  }
}

void RemoteDataController::removeAllRemoteDeviceService() {
  TraceScope trace("RemoteDataController::removeAllRemoteDeviceService");
  ICoreData* const coreData = mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataProvider::removeAllRemoteDeviceService: Failed to obtain "
                       "ICoreData interface.");
    return;
  }
  mQueues.removeAll();
  mContexts.setOnline({});
  auto const any = [](RemoteDataSubscriptionContext const&) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::removeAllRemoteDeviceService: Remote Device List "
                       "empty, remove all remote subscriptions.");
    return true;
  };
  for (Subscription const& context : mContexts.removeIf(any)) {
    takeBack(*context, *coreData);
  }
}

}  // namespace Zelv::Controller
