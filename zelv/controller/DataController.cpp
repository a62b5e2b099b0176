#include "zelv/controller/DataController.h"

#include <exception>
#include <mutex>
#include <stdexcept>
#include <string_view>

#include "zelv/controller/ForOthers.h"
#include "zelv/controller/GetDataTask.h"
#include "zelv/controller/RemoteDataController.h"
#include "zelv/controller/SetDataTask.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

namespace {

constexpr std::string_view cDevicePrefix = "/Zelv[@DeviceId=";

/// The branch whose provider knows which device this is.
constexpr std::string_view cDevicesBranch = "/Zelv/Devices";

char const cIdentityPath[] = "/Zelv/Devices/LocalTV/@ID";
char const cLocalAddressPath[] =
    "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
char const cDiscoveredDevicesPath[] = "/Zelv/Devices/Mobile/@ID";

/// Takes aHead off the front of aText; false if it does not stand there.
bool take(std::string_view& aText, std::string_view aHead) {
  if (!aText.starts_with(aHead)) {
    return false;
  }
  aText.remove_prefix(aHead.size());
  return true;
}

/// True when aText goes on with aDeviceId in these quotes and a further step.
bool namesDevice(std::string_view aText, std::string_view aQuote, std::string_view aDeviceId) {
  return take(aText, aQuote) && take(aText, aDeviceId) && take(aText, aQuote) && take(aText, "]/");
}

bool isLocal(std::string_view aXPath, std::string_view aDeviceId) {
  if (aXPath.starts_with("/Zelv/")) {
    return true;
  }
  return take(aXPath, cDevicePrefix) &&
         (namesDevice(aXPath, "'", aDeviceId) || namesDevice(aXPath, "\"", aDeviceId));
}

}  // namespace

DataController::DataController(std::string const& aDeviceId)
    : DataController(aDeviceId, std::make_unique<RemoteDataController>(this)) {}

DataController::DataController(std::string const& aDeviceId,
                               std::unique_ptr<RemoteDataHandler> aRemoteHandler)
    : mLocalHandler(std::make_unique<LocalDataController>()),
      mRemoteHandler(std::move(aRemoteHandler)),
      mLocalDeviceId(aDeviceId) {
  TraceScope trace("DataController::DataController");
  mTaskSemaphore.Create(0);
  queueFirstRequests();
}

/// Answered once the worker runs: the answers tell their receivers that the tree is there.
void DataController::queueFirstRequests() {
  if (mRemoteHandler) {
    DataController::requestData(cLocalAddressPath, nullptr, mRemoteHandler.get());
  }
  mDiscoveredDevSubscription = DataController::subscribeData(cDiscoveredDevicesPath, nullptr, this);
}

DataController::~DataController() {
  TraceScope trace("DataController::~DataController");
  PCRealDebug::Print(PCRealDebug::Trace,
                     "DataController::~DataController: Destroying PCThread ID = %d.",
                     static_cast<int>(GetId()));
  stopWorker();
  mTaskSemaphore.Destroy();
  PCRealDebug::Print(PCRealDebug::Trace,
                     "DataController::~DataController: cleaning up %d tasks in task queue.",
                     static_cast<int>(getQueueSize()));
  mTasks.clear();
  mLocalHandler.reset();
  mRemoteHandler.reset();
}

void DataController::initialize() {
  TraceScope trace("DataController::initialize");
  if (mRemoteHandler) {
    mRemoteHandler->initialize();
  }
  if (PCThread::Create("Quorl - DataController::initialize", 4096) == 0) {
    // The text is shared with another controller; those who watch the log look for it.
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::onData: Error creating a new thread");
  }
}

void DataController::terminate() {
  TraceScope trace("DataController::terminate");
  mTerminate = true;
  mTaskSemaphore.Give();
  mLocalHandler->terminate();
  if (mRemoteHandler) {
    mRemoteHandler->terminate();
  }
  // Components and callbacks go after this, so no task may be among them any more.
  PCThread::Destroy();
}

void DataController::stopWorker() {
  mTerminate = true;
  mTaskSemaphore.Give();
  PCThread::Destroy();
}

void DataController::t_Main() {
  processTasks();
}

void DataController::processTasks() {
  TraceScope trace("DataController::processTasks");
  for (;;) {
    mTaskSemaphore.Take();
    if (mTerminate) {
      return;
    }
    std::unique_ptr<DataControllerTask> const task = takeTask();
    if (!task) {
      continue;
    }
    try {
      task->execute();
    } catch (std::exception const& exception) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "DataController::processTasks: Exception in a task: %s", exception.what());
    } catch (...) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "DataController::processTasks: Unknown exception in a task.");
    }
  }
}

void DataController::queue(std::unique_ptr<DataControllerTask> aTask) {
  {
    TCAutoLock lock(mMutex);
    mTasks.push(std::move(aTask), ForOthers::isActive());
    mQueueSize.store(mTasks.size(), std::memory_order_relaxed);
  }
  mTaskSemaphore.Give();
}

std::unique_ptr<DataControllerTask> DataController::takeTask() {
  TCAutoLock lock(mMutex);
  std::unique_ptr<DataControllerTask> task = mTasks.take();
  mQueueSize.store(mTasks.size(), std::memory_order_relaxed);
  return task;
}

std::size_t DataController::getQueueSize() const {
  return mQueueSize.load(std::memory_order_relaxed);
}

DataTaskHandler* DataController::remoteHandler() {
  if (mRemoteHandler) {
    return mRemoteHandler.get();
  }
  return &mUnreachableHandler;
}

// The path of a write may hold a line feed, unlike that of a read; writers have come to rely on it.

GUID DataController::setData(std::string const& aXPath, std::string const& aValue,
                             IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) {
  TraceScope trace("DataController::setData");
  if (!isLocalXPath(aXPath)) {
    throw std::runtime_error("Cannot set data on remote XPath.");
  }
  return queueSetData(aXPath, aValue, false, aCallback, aNotifyRemoteSubscribers);
}

GUID DataController::addData(std::string const& aXPath, std::string const& aValue,
                             IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) {
  TraceScope trace("DataController::addData");
  if (!isLocalXPath(aXPath)) {
    throw std::runtime_error("Cannot add data to remote XPath.");
  }
  return queueSetData(aXPath, aValue, true, aCallback, aNotifyRemoteSubscribers);
}

GUID DataController::queueSetData(std::string const& aXPath, std::string const& aValue, bool aAdd,
                                  IBaseDataCallback* aCallback, bool aNotifyRemoteSubscribers) {
  GUID const transactionId = GUID::createGUID();
  queue(std::make_unique<SetDataTask>(mLocalHandler.get(), transactionId, aXPath, aValue, aAdd,
                                      aCallback, aNotifyRemoteSubscribers));
  return transactionId;
}

GUID DataController::requestData(std::string const& aXPath, ContextInformation const* aContext,
                                 IBaseDataCallback* aCallback) {
  TraceScope trace("DataController::requestData");
  validateXPath(aXPath);
  bool const local = isLocalXPath(aXPath);
  // Of a remote request the answer comes by its entry in the table of subscriptions.
  GUID const transactionId =
      local ? GUID::createGUID()
            : mSubscriptionManager.addSubscription(aXPath, aCallback, aContext, true);
  DataTaskHandler* const handler = local ? mLocalHandler.get() : remoteHandler();
  queue(std::make_unique<GetDataTask>(handler, transactionId, aXPath, aContext, aCallback, true));
  return transactionId;
}

GUID DataController::subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                                   IBaseDataCallback* aCallback) {
  TraceScope trace("DataController::subscribeData");
  validateXPath(aXPath);
  bool const local = isLocalXPath(aXPath);
  DataTaskHandler* const handler = local ? mLocalHandler.get() : remoteHandler();
  // The first delivery is queued before any change can be delivered.
  std::lock_guard hold(mSubscriptionManager);
  GUID const subscriptionId =
      mSubscriptionManager.addSubscription(aXPath, aCallback, aContext, false);
  queue(std::make_unique<GetDataTask>(handler, subscriptionId, aXPath, aContext, aCallback, local));
  return subscriptionId;
}

void DataController::unsubscribeData(GUID aSubscriptionID) {
  TraceScope trace("DataController::unsubscribeData");
  std::lock_guard hold(mSubscriptionManager);
  try {
    mSubscriptionManager.getSubscriptionInfo(aSubscriptionID);
  } catch (...) {
    return;
  }
  mSubscriptionManager.removeSubscription(aSubscriptionID);
}

void DataController::registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) {
  TraceScope trace("DataController::registerDataProvider");
  if (!isLocalXPath(aXPath)) {
    throw std::logic_error("Cannot register data provider for remote XPath.");
  }
  mLocalHandler->registerDataProvider(aXPath, aProvider);
  if (aXPath == cDevicesBranch) {
    readIdentity(aProvider);
  }
}

/// This one registration is how the system learns which device it is.
void DataController::readIdentity(IDataProvider* aProvider) {
  if (aProvider == nullptr) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "DataController::registerDataProvider: no provider to read the identity of.");
    return;
  }
  std::string deviceId;
  aProvider->getData(cIdentityPath, deviceId, GUID::nullGUID);
  {
    TCAutoLock lock(mMutex);
    mLocalDeviceId = deviceId;
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DataController::registerDataProvider: mLocalDeviceId='%s'", deviceId.c_str());
  mSubscriptionManager.setLocalDeviceId(GUID(deviceId));
}

void DataController::unregisterDataProvider(std::string const& aXPath) {
  TraceScope trace("DataController::unregisterDataProvider");
  mLocalHandler->unregisterDataProvider(aXPath);
}

void DataController::unsubscribeForAllData(std::string const&) {}

void DataController::updateSubscriberStatus(GUID, std::string const&) {}

void DataController::notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                                           GUID const& aTransactionID) {
  TraceScope trace("DataController::notifyDataSubscribers");
  IBaseDataCallback* excluded = nullptr;
  // Idle, the current id is the null one. So a change that carries the null id stays on this
  // device, which providers of device lists rely on.
  if (mLocalHandler->getCurrentSetDataTransactionId() == aTransactionID) {
    PCRealDebug::Print(
        PCRealDebug::Detail,
        "DataController::notifyDataSubscribers: RemoteDataController will not be notified.");
    excluded = mRemoteHandler.get();
  }
  mSubscriptionManager.notifySubscribers(aXPath, aValue, excluded);
}

void DataController::notifyDataSubscriber(GUID const& aSubscriptionID, std::string const& aValue) {
  TraceScope trace("DataController::notifyDataSubscriber");
  mSubscriptionManager.notifySubscriber(aSubscriptionID, aValue);
}

void DataController::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("DataController::onStatus");
}

void DataController::onData(std::string const&, std::string const& aValue,
                            ContextInformation const*, GUID const& aTransactionID) {
  TraceScope trace("DataController::onData");
  if (!(aTransactionID == mDiscoveredDevSubscription)) {
    return;
  }
  PCRealDebug::Print(PCRealDebug::Detail, "DataController::onData: mDiscoveredDevSubscription='%s'",
                     aValue.c_str());
  if (!mRemoteHandler) {
    return;
  }
  if (aValue.empty()) {
    mRemoteHandler->removeAllRemoteDeviceService();
    return;
  }
  std::list<std::string> const online = RemoteDataController::multiStringToList(aValue);
  mRemoteHandler->terminateInactiveDeviceQueue(online);
  mRemoteHandler->removeInactiveDeviceSubscription(online);
}

bool DataController::isLocalXPath(std::string const& aXPath) const {
  TCAutoLock lock(mMutex);
  return isLocal(aXPath, mLocalDeviceId);
}

std::string DataController::convertToLocalXPath(std::string const& aXPath) {
  if (!aXPath.starts_with(cDevicePrefix)) {
    return aXPath;
  }
  return "/Zelv" + aXPath.substr(aXPath.find('/', cDevicePrefix.size()));
}

std::string DataController::getDeviceIdFromXPath(std::string const& aXPath) {
  std::string_view rest(aXPath);
  if (!take(rest, cDevicePrefix) || !(rest.starts_with('\'') || rest.starts_with('"'))) {
    return "";
  }
  char const quote = rest.front();
  rest.remove_prefix(1);
  return std::string(rest.substr(0, rest.find(quote)));
}

void DataController::validateXPath(std::string const& aXPath) {
  if (aXPath.find('\n') != std::string::npos) {
    PCRealDebug::Print(PCRealDebug::Error, "DataController::validateXPath: Invalid XPath '%s'",
                       aXPath.c_str());
    throw std::runtime_error("Invalid XPath.");
  }
}

}  // namespace Zelv::Controller
