#include "zelv/controller/UserInputSubscriptionManager.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <typeinfo>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/controller/TimedCall.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

namespace {

/// What a subscriber throws must neither end the thread of the input nor keep the next subscriber
/// from hearing of it.
void tell(IBaseUserCallback* aSubscriber, std::string const& aType, std::string const& aValue,
          std::string const& aDevice, std::string const& aUser, GUID const& aID,
          LongestCall& aLongest) noexcept {
  if (aSubscriber == nullptr) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "UserInputSubscriptionManager::notifySubscribers: Found NULL IBaseUserCallback pointer.");
    return;
  }
  try {
    TimedCall const call(aLongest, "onUserInput", typeid(*aSubscriber), aType);
    aSubscriber->onUserInput(aType, aValue, aDevice, aUser, aID);
  } catch (std::exception const& exception) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "UserInputSubscriptionManager::notifySubscribers: Exception in a subscriber: %s",
        exception.what());
  } catch (...) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "UserInputSubscriptionManager::notifySubscribers: Unknown exception in a subscriber.");
  }
}

}  // namespace

void UserInputSubscriptionManager::lock() {
  mMutex.Lock();
}

void UserInputSubscriptionManager::unlock() {
  mMutex.Unlock();
}

GUID UserInputSubscriptionManager::addSubscription(std::string const& aType,
                                                   IBaseUserCallback* aCallback,
                                                   std::string const& aContext) {
  TraceScope trace("UserInputSubscriptionManager::addSubscription");
  UserInputSubscription const subscription(aType, aCallback, aContext);
  TCAutoLock lock(mMutex);
  mTable.emplace(subscription.getId(), Entry{subscription, ++mNewest});
  return subscription.getId();
}

// Identifiers come by value, as the interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)

GUID UserInputSubscriptionManager::removeSubscription(GUID aID) {
  TraceScope trace("UserInputSubscriptionManager::removeSubscription");
  TCAutoLock lock(mMutex);
  bool const found = mTable.erase(aID) > 0;
  // Also when it was not found: a callback that has just ended its own subscription still runs.
  waitForCalls(aID);
  if (!found) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "UserInputSubscriptionManager::removeSubscription: Subscription not found!");
    return GUID::nullGUID;
  }
  return aID;
}

UserInputSubscription UserInputSubscriptionManager::getSubscriptionInfo(GUID aID) {
  TraceScope trace("UserInputSubscriptionManager::getSubscriptionInfo");
  TCAutoLock lock(mMutex);
  auto const entry = mTable.find(aID);
  if (entry == mTable.end()) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "UserInputSubscriptionManager::getSubscriptionInfo: Subscription not found!");
    throw std::runtime_error(
        "UserInputSubscriptionManager::getSubscriptionInfo() Cannot find subscription info ");
  }
  return entry->second.subscription;
}

// NOLINTEND(performance-unnecessary-value-param)

void UserInputSubscriptionManager::notifySubscribers(std::string const& aType,
                                                     std::string const& aValue,
                                                     std::string const& aDevice,
                                                     std::string const& aUser) {
  TraceScope trace("UserInputSubscriptionManager::notifySubscribers");
  PCRealDebug::Print(
      PCRealDebug::Trace,
      "UserInputSubscriptionManager::notifySubscribers: type='%s', value='%s', device='%s', "
      "user='%s'",
      aType.c_str(), aValue.c_str(), aDevice.c_str(), aUser.c_str());
  TCAutoLock lock(mMutex);
  std::uint64_t const newest = mNewest;
  auto entry = mTable.begin();
  while (entry != mTable.end()) {
    if (entry->second.number > newest || entry->second.subscription.getType() != aType) {
      ++entry;
      continue;
    }
    // Copied, since the callback may take the entry out.
    GUID const id = entry->first;
    IBaseUserCallback* const callback = entry->second.subscription.getCallback();
    beginCall(id);
    mMutex.Unlock();
    tell(callback, aType, aValue, aDevice, aUser, id, mLongestCallback);
    mMutex.Lock();
    endCall(id);
    entry = mTable.upper_bound(id);
  }
}

void UserInputSubscriptionManager::beginCall(GUID const& aID) {
  mCalls.push_back({aID, std::this_thread::get_id()});
}

void UserInputSubscriptionManager::endCall(GUID const& aID) {
  auto const runner = std::this_thread::get_id();
  mCalls.erase(std::find_if(mCalls.begin(), mCalls.end(), [&](Call const& aCall) {
    return aCall.runner == runner && aCall.id == aID;
  }));
  for (PCSemaphore* ended : mWaiting) {
    ended->Give();
  }
  mWaiting.clear();
}

bool UserInputSubscriptionManager::isCalledElsewhere(GUID const& aID) const {
  auto const caller = std::this_thread::get_id();
  return std::any_of(mCalls.begin(), mCalls.end(),
                     [&](Call const& aCall) { return aCall.id == aID && aCall.runner != caller; });
}

void UserInputSubscriptionManager::waitForCalls(GUID const& aID) {
  while (!InsideDelivery::isThisThread() && isCalledElsewhere(aID)) {
    PCSemaphore ended;
    ended.Create(0);
    mWaiting.push_back(&ended);
    mMutex.Unlock();
    ended.Take();
    mMutex.Lock();
  }
}

}  // namespace Zelv::Controller
