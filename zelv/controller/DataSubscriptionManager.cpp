#include "zelv/controller/DataSubscriptionManager.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "zelv/controller/InsideDelivery.h"
#include "zelv/controller/TimedCall.h"
#include "zelv/controller/TimedDeliveries.h"
#include "zelv/infrastructure/XPath.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"
#include "zelv/platform/TypeName.h"

namespace Zelv::Controller {

using Infrastructure::XPath;

namespace {

ICoreData* findInterface() {
  return dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
}

/// What a subscriber throws must neither end the thread that reports a change nor keep the next
/// subscriber from hearing of it.
template <typename Call>
void contained(Call aCall) {
  try {
    aCall();
  } catch (std::exception const& exception) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DataSubscriptionManager::tell: Exception in a subscriber: %s",
                       exception.what());
  } catch (...) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DataSubscriptionManager::tell: Unknown exception in a subscriber.");
  }
}

void tellTimed(IBaseDataCallback& aSubscriber, std::string const& aXPath, std::string const& aValue,
               ContextInformation const* aContext, GUID const& aId, LongestCall& aLongest) {
  contained([&] {
    TimedCall const call(aLongest, "onData", typeid(aSubscriber), aXPath);
    aSubscriber.onData(aXPath, aValue, aContext, aId);
  });
}

/// @param aLongest  null when the time is taken elsewhere.
void tellOfChange(IBaseDataCallback* aSubscriber, std::string const& aXPath,
                  std::string const& aValue, ContextInformation const* aContext, GUID const& aId,
                  LongestCall* aLongest) {
  if (aSubscriber == nullptr) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DataSubscriptionManager::notifySubscribers: Found NULL IBaseDataCallback "
                       "pointer!!!.");
    return;
  }
  if (aLongest != nullptr) {
    tellTimed(*aSubscriber, aXPath, aValue, aContext, aId, *aLongest);
    return;
  }
  contained([&] { aSubscriber->onData(aXPath, aValue, aContext, aId); });
}

bool isOfTheTree(std::string const& aXPath) {
  return aXPath.starts_with("/Zelv");
}

eDelivery deliveryOf(SubscriptionEntry const& aEntry, ChangedPath const& aChange,
                     IBaseDataCallback const* aExcluded) {
  if (!aEntry.local) {
    return eDelivery::SkipRemote;
  }
  if (aEntry.subscription.isOneTimeDelivery()) {
    return eDelivery::SkipOneTime;
  }
  if (aEntry.subscription.getSubscriber() == aExcluded) {
    return eDelivery::SkipExcluded;
  }
  return aEntry.path.deliveryOf(aChange);
}

char const* textOf(eDelivery aSkip) {
  switch (aSkip) {
    case eDelivery::SkipRemote:
      return "DataSubscriptionManager::notifySubscribers: Skipped subscription for remote data.";
    case eDelivery::SkipOneTime:
      return "DataSubscriptionManager::notifySubscribers: Skipped one time subscription "
             "(requestData).";
    case eDelivery::SkipExcluded:
      return "DataSubscriptionManager::notifySubscribers: Skipped remote data controller.";
    case eDelivery::SkipSibling:
      return "DataSubscriptionManager::notifySubscribers: Skipped change in sibling node "
             "(different ID).";
    case eDelivery::SkipAttribute:
      return "DataSubscriptionManager::notifySubscribers: Skipped subscription for unchanged "
             "attribute.";
    default:
      return "DataSubscriptionManager::notifySubscribers: Skipped unmatched XPath.";
  }
}

}  // namespace

DataSubscriptionManager::DataSubscriptionManager() : DataSubscriptionManager(findInterface) {}

DataSubscriptionManager::DataSubscriptionManager(FindCoreData aFindCoreData)
    : mLocalDeviceId(GUID::nullGUID), mFindCoreData(aFindCoreData) {}

DataSubscriptionManager::~DataSubscriptionManager() = default;

void DataSubscriptionManager::lock() {
  mMutex.Lock();
}

void DataSubscriptionManager::unlock() {
  mMutex.Unlock();
}

void DataSubscriptionManager::changed() {
  ++mGeneration;
}

GUID DataSubscriptionManager::addSubscription(std::string const& aXPath,
                                              IBaseDataCallback* aCallback,
                                              ContextInformation const* aContext, bool aOneTime) {
  TraceScope trace("DataSubscriptionManager::addSubscription");
  DataSubscription const subscription(aXPath, aCallback, aContext, aOneTime);
  TCAutoLock lock(mMutex);
  bool const local = XPath::isLocalXPath(aXPath, mLocalDeviceId);
  auto const entry = mTable.try_emplace(subscription.getId(), subscription, local).first;
  if (entry->second.takesPart()) {
    changed();
  }
  return subscription.getId();
}

void DataSubscriptionManager::erase(Table::iterator aEntry) {
  if (aEntry->second.takesPart()) {
    changed();
  }
  if (aEntry->second.answered) {
    mAnswered.erase(*aEntry->second.answered);
  }
  mReReads.erase(aEntry->first);
  mTable.erase(aEntry);
}

GUID DataSubscriptionManager::removeSubscription(GUID aSubscriptionId) {
  TraceScope trace("DataSubscriptionManager::removeSubscription");
  TCAutoLock lock(mMutex);
  auto const entry = mTable.find(aSubscriptionId);
  if (entry == mTable.end()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DataSubscriptionManager::removeSubscription: Subscription not found!");
    throw std::runtime_error("Data subscription not found!");
  }
  erase(entry);
  return aSubscriptionId;
}

DataSubscription DataSubscriptionManager::getSubscriptionInfo(GUID aSubscriptionId) {
  TraceScope trace("DataSubscriptionManager::getSubscriptionInfo");
  TCAutoLock lock(mMutex);
  auto const entry = mTable.find(aSubscriptionId);
  if (entry == mTable.end()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DataSubscriptionManager::GetSubscriptionInfo: Subscription not found!");
    throw std::runtime_error("Data subscription not found!");
  }
  return entry->second.subscription;
}

void DataSubscriptionManager::setLocalDeviceId(GUID aDeviceId) {
  TraceScope trace("DataSubscriptionManager::setLocalDeviceId");
  TCAutoLock lock(mMutex);
  mLocalDeviceId = aDeviceId;
  for (auto& [id, entry] : mTable) {
    entry.local = XPath::isLocalXPath(entry.subscription.getXPath(), mLocalDeviceId);
  }
  changed();
}

void DataSubscriptionManager::notifySubscriber(GUID const& aSubscriptionId,
                                               std::string const& aValue) {
  TraceScope trace("DataSubscriptionManager::notifySubscriber");
  TCAutoLock lock(mMutex);
  auto const entry = mTable.find(aSubscriptionId);
  if (entry == mTable.end()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DataSubscriptionManager::notifySubscriber: subscription '%s' not found.",
                       aSubscriptionId.toString().c_str());
    return;
  }
  // The subscriber may remove its own entry: what it is told must outlive that.
  DataSubscription const subscription = entry->second.subscription;
  markAnswered(entry->second);
  if (subscription.getSubscriber() == nullptr) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DataSubscriptionManager::notifySubscriber: Found NULL IBaseDataCallback "
                       "pointer!!!.");
    return;
  }
  InsideDelivery const inside;
  tellTimed(*subscription.getSubscriber(), subscription.getXPath(), aValue,
            subscription.getContext(), subscription.getId(), mLongestCallback);
}

/// An answered request stays, since its id may still be unsubscribed and the device may answer
/// again; but not without end.
void DataSubscriptionManager::markAnswered(SubscriptionEntry& aEntry) {
  if (!aEntry.subscription.isOneTimeDelivery() || aEntry.answered) {
    return;
  }
  aEntry.answered = mAnswered.insert(mAnswered.end(), aEntry.subscription.getId());
  if (mAnswered.size() > cAnsweredEntries) {
    erase(mTable.find(mAnswered.front()));
  }
}

void DataSubscriptionManager::notifySubscribers(std::string const& aXPath,
                                                std::string const& aValue,
                                                IBaseDataCallback* aExcluded) {
  TraceScope trace("DataSubscriptionManager::notifySubscribers");
  TCAutoLock lock(mMutex);
  if (!isOfTheTree(aXPath)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DataSubscriptionManager::notifySubscribers: Invalid XPath '%s', missing "
                       "'/Zelv' prefix.",
                       aXPath.c_str());
    return;
  }
  if (PCRealDebug::Enabled(PCRealDebug::Detail)) {
    notifyFrom(mTable.begin(), aXPath, aValue, aExcluded);
  } else {
    notifyByPlan(aXPath, aValue, aExcluded);
  }
}

/// The rules as they are, entry by entry. A subscriber may add and remove entries meanwhile: those
/// behind the one being told are seen as they then are.
void DataSubscriptionManager::notifyFrom(Table::iterator aFirst, std::string const& aXPath,
                                         std::string const& aValue, IBaseDataCallback* aExcluded) {
  ChangedPath const change(aXPath);
  InsideDelivery const inside;
  for (auto at = aFirst; at != mTable.end();) {
    SubscriptionEntry const& entry = at->second;
    eDelivery const delivery = deliveryOf(entry, change, aExcluded);
    if (delivery == eDelivery::Direct) {
      GUID const id = at->first;
      std::uint64_t const generation = mGeneration;
      tellOfChange(entry.subscription.getSubscriber(), aXPath, aValue,
                   entry.subscription.getContext(), id, &mLongestCallback);
      at = generation == mGeneration ? std::next(at) : mTable.upper_bound(id);
      continue;
    }
    if (delivery == eDelivery::ReRead) {
      if (!reRead(entry)) {
        return;
      }
    } else {
      PCRealDebug::Print(PCRealDebug::Detail, "%s", textOf(delivery));
    }
    ++at;
  }
}

/// The same outcome without looking at those whom the change does not concern. Once a subscriber
/// has changed the table, the rest of it is gone through as it then is.
void DataSubscriptionManager::notifyByPlan(std::string const& aXPath, std::string const& aValue,
                                           IBaseDataCallback* aExcluded) {
  std::shared_ptr<DeliveryPlan const> const plan = planOf(aXPath);
  if (!plan->steps.empty()) {
    carryOut(*plan, aXPath, aValue, aExcluded);
  }
}

/// @param aPlan  held by the caller.
void DataSubscriptionManager::carryOut(DeliveryPlan const& aPlan, std::string const& aXPath,
                                       std::string const& aValue, IBaseDataCallback* aExcluded) {
  InsideDelivery const inside;
  TimedDeliveries const deliveries(mLongestCallback, aPlan.steps.size(), aXPath, mSuspicious);
  LongestCall* const longest = deliveries.each();
  for (DeliveryPlan::Step const& step : aPlan.steps) {
    if (step.subscriber == aExcluded) {
      continue;
    }
    if (!step.direct) {
      if (!reRead(*step.entry)) {
        return;
      }
      continue;
    }
    tellOfChange(step.subscriber, aXPath, aValue, step.context, step.id, longest);
    if (mGeneration != aPlan.generation) {
      notifyFrom(mTable.upper_bound(step.id), aXPath, aValue, aExcluded);
      return;
    }
  }
}

std::shared_ptr<DeliveryPlan const> DataSubscriptionManager::planOf(std::string const& aXPath) {
  if (auto known = mPlans.find(aXPath, mGeneration)) {
    return known;
  }
  if (mIndexGeneration != mGeneration) {
    mIndex.clear();
    for (auto const& [id, entry] : mTable) {
      if (entry.takesPart()) {
        mIndex.append(entry);
      }
    }
    mIndexGeneration = mGeneration;
  }
  ChangedPath const change(aXPath);
  auto plan = std::make_shared<DeliveryPlan const>(
      DeliveryPlan{aXPath, mGeneration, mIndex.stepsOf(change)});
  mPlans.keep(plan);
  return plan;
}

/// The subscriber gets the value of its own path, not that of the node that changed. The lock is
/// held, so the answer does not come before the read is known here.
///
/// @return false when the tree is not there.
bool DataSubscriptionManager::reRead(SubscriptionEntry const& aEntry) {
  PCRealDebug::Print(PCRealDebug::Detail,
                     "DataSubscriptionManager::notifySubscribers: requesting data for XPath '%s'",
                     aEntry.subscription.getXPath().c_str());
  ICoreData* const coreData = mFindCoreData();
  if (coreData == nullptr) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DataSubscriptionManager::notifySubscribers: Failed to obtain ICoreData "
                       "interface.");
    return false;
  }
  auto context = std::make_unique<DataReReadContext>(aEntry.subscription.getId());
  GUID const transactionId =
      coreData->requestData(aEntry.subscription.getXPath(), context.get(), this);
  mReReads.insert_or_assign(transactionId, std::move(context));
  // A path can name this device in a spelling that the data controller takes for another device's.
  // The read is then a request that nobody may ever answer: it counts as answered, to be bounded.
  auto const request = mTable.find(transactionId);
  if (request != mTable.end()) {
    markAnswered(request->second);
  }
  return true;
}

std::vector<DeliveryExplanation> DataSubscriptionManager::explain(
    std::string const& aXPath, IBaseDataCallback const* aWithheld) {
  ChangedPath const change(aXPath);
  bool const ofTheTree = isOfTheTree(aXPath);
  std::vector<DeliveryExplanation> explanations;
  TCAutoLock lock(mMutex);
  explanations.reserve(mTable.size());
  for (auto const& [id, entry] : mTable) {
    IBaseDataCallback const* const subscriber = entry.subscription.getSubscriber();
    explanations.push_back(
        {id, entry.subscription.getXPath(),
         subscriber == nullptr ? "" : Platform::TypeName::Of(typeid(*subscriber).name()),
         ofTheTree ? deliveryOf(entry, change, nullptr) : eDelivery::SkipNoChange,
         deliveryOf(entry, change, aWithheld) == eDelivery::SkipExcluded});
  }
  return explanations;
}

OneTimeRequests DataSubscriptionManager::getRequests(std::size_t aMost) {
  OneTimeRequests requests;
  std::int64_t const now = PCTime::CoarseMs();
  TCAutoLock lock(mMutex);
  std::vector<SubscriptionEntry const*> entries;
  for (auto const& [id, entry] : mTable) {
    if (entry.subscription.isOneTimeDelivery()) {
      entries.push_back(&entry);
    }
  }
  requests.count = entries.size();
  auto const end = entries.begin() + static_cast<std::ptrdiff_t>(std::min(aMost, entries.size()));
  std::partial_sort(entries.begin(), end, entries.end(),
                    [](auto const* aOne, auto const* aOther) { return aOne->made < aOther->made; });
  for (auto entry = entries.begin(); entry != end; ++entry) {
    requests.oldest.push_back({(*entry)->subscription.getId(), (*entry)->subscription.getXPath(),
                               now - (*entry)->made, (*entry)->answered.has_value()});
  }
  return requests;
}

void DataSubscriptionManager::onData(std::string const&, std::string const& aValue,
                                     ContextInformation const*, GUID const& aTransactionID) {
  TraceScope trace("DataSubscriptionManager::onData");
  TCAutoLock lock(mMutex);
  auto const read = mReReads.extract(aTransactionID);
  if (!read.empty()) {
    notifySubscriber(read.mapped()->getSubscriptionId(), aValue);
  }
}

void DataSubscriptionManager::onStatus(StatusInformation const&, GUID const& aTransactionID) {
  TraceScope trace("DataSubscriptionManager::onStatus");
  TCAutoLock lock(mMutex);
  mReReads.erase(aTransactionID);
}

void DataSubscriptionManager::onReturn(std::string const&, GUID const&) {
  TraceScope trace("DataSubscriptionManager::onReturn");
}

}  // namespace Zelv::Controller
