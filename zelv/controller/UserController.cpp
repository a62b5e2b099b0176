#include "zelv/controller/UserController.h"

#include <exception>
#include <mutex>
#include <new>
#include <string_view>

#include "zelv/adapter/NetworkAdapter.h"
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

/// Where phones send input, whatever the set announces.
char const cPort[] = "4449";

constexpr std::string_view cBodyBegin = "<Body>";
constexpr std::string_view cBodyEnd = "</Body>";

}  // namespace

UserController::UserController() : UserController(InterfaceFactory::getInterface) {}

UserController::UserController(FindInterface aFindInterface)
    : mLocalDeviceTransaction(GUID::nullGUID),
      mLocalIPTransaction(GUID::nullGUID),
      mServiceHandle(GUID::nullGUID),
      mFindInterface(aFindInterface) {
  TraceScope trace("UserController::UserController");
  mSemaphore.Create(0);
}

UserController::~UserController() {
  TraceScope trace("UserController::~UserController");
  PCRealDebug::Print(PCRealDebug::Trace,
                     "UserController::~UserController: Destroying PCThread ID = %d.",
                     static_cast<int>(GetId()));
  stopThread();
  mSemaphore.Destroy();
}

void UserController::initialize() {
  TraceScope trace("UserController::initialize");
  if (PCThread::Create("Quorl - UserController::initialize", 4096) == 0) {
    PCRealDebug::Print(PCRealDebug::Error, "UserController::onData: Error creating a new thread");
  }
  auto* const coreData = dynamic_cast<ICoreData*>(mFindInterface(IID_ICoreData));
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "UserController::initialize: Failed to obtain ICoreData interface.");
    return;
  }
  requestSettings(*coreData);
  mCoreCommand = dynamic_cast<ICoreCommand*>(mFindInterface(IID_ICoreCommand));
  if (mCoreCommand == nullptr) {
    // The text is shared with a component of old; those who watch the log look for it.
    PCRealDebug::Print(PCRealDebug::Error,
                       "TVControl::initialize: Failed to obtain mCoreCommand interface.");
  }
}

// Asked without the lock, which an answer takes on the data worker.
void UserController::requestSettings(ICoreData& aCoreData) {
  GUID const device = aCoreData.requestData(cIdentityPath, nullptr, this);
  GUID const address = aCoreData.requestData(cLocalAddressPath, nullptr, this);
  TCAutoLock lock(mLock);
  mLocalDeviceTransaction = device;
  mLocalIPTransaction = address;
  mAsked = true;
  for (Answer const& answer : mEarlyAnswers) {
    take(answer);
  }
  mEarlyAnswers.clear();
}

void UserController::terminate() {
  TraceScope trace("UserController::terminate");
  {
    TCAutoLock lock(mLock);
    NetworkAdapter::getInstance()->unregisterService(mServiceHandle);
    // Within the lock: an answer that comes later starts no service.
    mTerminate = true;
  }
  stopThread();
}

void UserController::stopThread() {
  mTerminate = true;
  mSemaphore.Give();
  PCThread::Destroy();
}

void UserController::t_Main() {
  processUserInputs();
}

GUID UserController::subscribeUser(std::string const& aType, IBaseUserCallback* aCallback) {
  TraceScope trace("UserController::subscribeUser");
  std::lock_guard hold(mSubscriptions);
  return mSubscriptions.addSubscription(aType, aCallback, "");
}

// The identifier comes by value, as the interface has it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void UserController::unsubscribeUser(GUID aSubscriptionID) {
  TraceScope trace("UserController::unsubscribeUser");
  mSubscriptions.removeSubscription(aSubscriptionID);
}

void UserController::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("UserController::onStatus");
}

void UserController::onReturn(std::string const&, GUID const&) {}

void UserController::onData(std::string const&, std::string const& aValue,
                            ContextInformation const*, GUID const& aTransactionID) {
  TraceScope trace("UserController::onData");
  TCAutoLock lock(mLock);
  if (mAsked) {
    take({aValue, aTransactionID});
  } else {
    mEarlyAnswers.push_back({aValue, aTransactionID});
  }
}

void UserController::take(Answer const& aAnswer) {
  if (aAnswer.transaction == mLocalIPTransaction) {
    if (mTerminate) {
      return;
    }
    PCRealDebug::Print(PCRealDebug::Trace, "UserController::onData: Local IP='%s'",
                       aAnswer.value.c_str());
    mServiceURL = std::make_unique<URL>("udp", aAnswer.value, cPort, "");
    // The name of the other service stands here since both were made alike; logs are searched for
    // it.
    PCRealDebug::Print(PCRealDebug::Notable,
                       "UserController::onData: Starting CommandControl service on '%s'",
                       mServiceURL->toString().c_str());
    startService();
  } else if (aAnswer.transaction == mLocalDeviceTransaction) {
    mLocalDeviceId = aAnswer.value;
  }
}

void UserController::startService() {
  TraceScope trace("UserController::startService");
  TCAutoLock lock(mLock);
  if (mServiceURL) {
    mServiceHandle = NetworkAdapter::getInstance()->registerService(*mServiceURL, this, "");
  }
}

void UserController::onMessage(std::string const& aMessage, std::string const&) {
  TraceScope trace("UserController::onMessage");
  std::string const input = getMessage(aMessage);
  PCRealDebug::Print(PCRealDebug::Detail, "UserController::onMessage: The stripped input is: %s",
                     input.c_str());
  enqueueUserInput(new (std::nothrow) UserInput(input));
}

std::string UserController::getMessage(std::string const& aMessage) {
  std::string_view const text(aMessage.c_str());
  auto const begin = text.find(cBodyBegin);
  auto const end = text.find(cBodyEnd);
  if (begin == std::string_view::npos || end == std::string_view::npos ||
      end < begin + cBodyBegin.size()) {
    return std::string(text);
  }
  auto const first = begin + cBodyBegin.size();
  return std::string(text.substr(first, end - first));
}

void UserController::enqueueUserInput(UserInput* aUserInput) {
  TraceScope trace("UserController::enqueueUserInput");
  std::unique_ptr<UserInput> input(aUserInput);
  if (!input) {
    PCRealDebug::Print(PCRealDebug::Error, "UserController::onMessage: User input is NULL!n");
    return;
  }
  {
    TCAutoLock lock(mLock);
    if (mInputs.size() < cMaxInputs) {
      mInputs.push_back(std::move(input));
      mQueueSize.store(mInputs.size(), std::memory_order_relaxed);
    } else if (mDropped++ > 0) {
      // Told once: a flood must not fill the log.
      return;
    }
  }
  if (input) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "UserController::enqueueUserInput: The queue is full, dropping inputs.");
    return;
  }
  mSemaphore.Give();
}

UserInput* UserController::dequeueUserInput() {
  TraceScope trace("UserController::dequeueUserInput");
  std::unique_ptr<UserInput> input;
  std::size_t dropped = 0;
  {
    TCAutoLock lock(mLock);
    if (mInputs.empty()) {
      return nullptr;
    }
    input = std::move(mInputs.front());
    mInputs.pop_front();
    mQueueSize.store(mInputs.size(), std::memory_order_relaxed);
    if (mInputs.size() <= cMaxInputs / 2) {
      std::swap(dropped, mDropped);
    }
  }
  if (dropped > 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "UserController::dequeueUserInput: %lu inputs were dropped.",
                       static_cast<unsigned long>(dropped));
  }
  return input.release();
}

void UserController::processUserInputs() {
  TraceScope trace("UserController::processUserInputs");
  for (;;) {
    mSemaphore.Take();
    if (mTerminate) {
      return;
    }
    std::unique_ptr<UserInput> const input(dequeueUserInput());
    if (input) {
      deliver(*input);
    }
  }
}

// What subscribers throw ends with them; this is for a lack of memory on the way there.
void UserController::deliver(UserInput const& aInput) {
  try {
    mSubscriptions.notifySubscribers(aInput.getType(), aInput.getValue(), aInput.getDevice(),
                                     aInput.getUser());
  } catch (std::exception const& exception) {
    PCRealDebug::Print(PCRealDebug::Error, "UserController::processUserInputs: Exception: %s",
                       exception.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error, "UserController::processUserInputs: Unknown exception.");
  }
}

std::size_t UserController::getQueueSize() const {
  return mQueueSize.load(std::memory_order_relaxed);
}

}  // namespace Zelv::Controller
