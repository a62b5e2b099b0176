#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "zelv/controller/DataReReadContext.h"
#include "zelv/controller/DeliveryExplanation.h"
#include "zelv/controller/DeliveryPlans.h"
#include "zelv/controller/LongestCall.h"
#include "zelv/controller/OneTimeRequests.h"
#include "zelv/controller/SubscriptionEntry.h"
#include "zelv/controller/SubscriptionIndex.h"
#include "zelv/interfaces/ICoreCommandCallback.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The table of subscriptions; decides who hears of a change.
///
/// Every operation holds the lock for its whole run, also while subscribers are told. So once
/// removeSubscription() has returned, its subscriber is told nothing more from here. A subscriber
/// may call back in, and may add and remove subscriptions, its own included.
class DataSubscriptionManager : public virtual ICoreCommandCallback,
                                public virtual ICoreDataCallback {
 public:
  /// Where the tree is found for reading a path again; null when there is none.
  using FindCoreData = ICoreData* (*)();

  /// So many one-time entries stay after their answer; the one answered longest ago goes first.
  /// Those that still wait for an answer all stay.
  static constexpr std::size_t cAnsweredEntries = 1024;

  /// With the tree of InterfaceFactory.
  DataSubscriptionManager();

  explicit DataSubscriptionManager(FindCoreData aFindCoreData);

  /// A read of a path of a subscriber failed, who hears nothing of it.
  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;
  ~DataSubscriptionManager() override;
  void onReturn(std::string const& aValue, GUID const& aCommandID) override;

  /// A path was read again for its subscriber, who is told now.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;

  /// @param aCallback  not owned; null is never told.
  /// @return the id of the new entry.
  GUID addSubscription(std::string const& aXPath, IBaseDataCallback* aCallback,
                       ContextInformation const* aContext, bool aOneTime);

  /// @return the id.
  /// @throws std::runtime_error "Data subscription not found!".
  GUID removeSubscription(GUID aSubscriptionId);

  /// @throws std::runtime_error "Data subscription not found!".
  DataSubscription getSubscriptionInfo(GUID aSubscriptionId);

  void setLocalDeviceId(GUID aDeviceId);

  /// Tells one subscriber. An unknown id is only logged.
  void notifySubscriber(GUID const& aSubscriptionId, std::string const& aValue);

  /// Tells the subscribers that a change concerns, in ascending order of their ids: those of
  /// exactly this path here and now, those above and below later, on the data worker, with the
  /// value that their own path has then. What a subscriber throws is logged, and the next one is
  /// told.
  ///
  /// @param aXPath     what changed; begins with "/Zelv", else it is logged and dropped.
  /// @param aExcluded  a subscriber that must not hear of it, or null.
  void notifySubscribers(std::string const& aXPath, std::string const& aValue,
                         IBaseDataCallback* aExcluded);

  /// What notifySubscribers() would do for each subscription, in the order in which it would, when
  /// nobody is excluded. Nobody is told.
  ///
  /// @param aWithheld  the subscriber that is excluded from changes that stay on this device.
  std::vector<DeliveryExplanation> explain(std::string const& aXPath,
                                           IBaseDataCallback const* aWithheld);

  /// The one-time entries that are still there, with at most aMost of them in full.
  OneTimeRequests getRequests(std::size_t aMost);

  LongestCall const& getLongestCallback() const { return mLongestCallback; }

  /// For steps that belong together.
  void lock() ZELV_ACQUIRE(mMutex);
  void unlock() ZELV_RELEASE(mMutex);

 private:
  using Table = std::map<GUID, SubscriptionEntry>;

  void markAnswered(SubscriptionEntry& aEntry) ZELV_REQUIRES(mMutex);
  void erase(Table::iterator aEntry) ZELV_REQUIRES(mMutex);
  void changed() ZELV_REQUIRES(mMutex);
  std::shared_ptr<DeliveryPlan const> planOf(std::string const& aXPath) ZELV_REQUIRES(mMutex);
  void notifyByPlan(std::string const& aXPath, std::string const& aValue,
                    IBaseDataCallback* aExcluded) ZELV_REQUIRES(mMutex);
  void carryOut(DeliveryPlan const& aPlan, std::string const& aXPath, std::string const& aValue,
                IBaseDataCallback* aExcluded) ZELV_REQUIRES(mMutex);
  void notifyFrom(Table::iterator aFirst, std::string const& aXPath, std::string const& aValue,
                  IBaseDataCallback* aExcluded) ZELV_REQUIRES(mMutex);
  bool reRead(SubscriptionEntry const& aEntry) ZELV_REQUIRES(mMutex);

  PCMutex mMutex;
  Table mTable ZELV_GUARDED_BY(mMutex);
  /// Raised whenever other entries may be concerned by changes than before.
  std::uint64_t mGeneration ZELV_GUARDED_BY(mMutex) = 1;
  GUID mLocalDeviceId ZELV_GUARDED_BY(mMutex);
  /// Ids of one-time entries, in the order of their answers.
  std::list<GUID> mAnswered ZELV_GUARDED_BY(mMutex);
  /// Reads that are under way, by their transactions.
  std::map<GUID, std::unique_ptr<DataReReadContext>> mReReads ZELV_GUARDED_BY(mMutex);
  SubscriptionIndex mIndex ZELV_GUARDED_BY(mMutex);
  /// Of the table when the index was made.
  std::uint64_t mIndexGeneration ZELV_GUARDED_BY(mMutex) = 0;
  DeliveryPlans mPlans ZELV_GUARDED_BY(mMutex);
  FindCoreData const mFindCoreData;
  LongestCall mLongestCallback;
  /// See TimedDeliveries.
  int mSuspicious ZELV_GUARDED_BY(mMutex) = 0;
};

}  // namespace Zelv::Controller
