#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/LongestCall.h"
#include "zelv/controller/UserInputSubscription.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"

namespace Zelv::Controller {

/// The table of who wants to hear of which type of input.
///
/// The lock guards the table and is not held while a subscriber is told: a callback may take any
/// lock under which others subscribe. Who ends a subscription waits for a call of that subscription
/// alone.
class UserInputSubscriptionManager {
 public:
  UserInputSubscriptionManager() = default;
  UserInputSubscriptionManager(UserInputSubscriptionManager const&) = delete;
  UserInputSubscriptionManager& operator=(UserInputSubscriptionManager const&) = delete;

  /// For steps that belong together. MUST NOT be held over removeSubscription() and
  /// notifySubscribers(), which let go of it meanwhile.
  void lock() ZELV_ACQUIRE(mMutex);
  void unlock() ZELV_RELEASE(mMutex);

  /// @param aCallback  not owned; null is never told.
  /// @return the id of the new subscription.
  GUID addSubscription(std::string const& aType, IBaseUserCallback* aCallback,
                       std::string const& aContext);

  /// When it returns, the subscriber is not being told on another thread and will not be told any
  /// more, so that its owner may delete it. From within the callback itself it returns at once.
  ///
  /// @return the id, or the null one when there is no such subscription.
  GUID removeSubscription(GUID aID);

  /// @throws std::runtime_error "UserInputSubscriptionManager::getSubscriptionInfo() Cannot find
  ///         subscription info ".
  UserInputSubscription getSubscriptionInfo(GUID aID);

  /// Tells the subscribers of exactly this type, in ascending order of their ids. Whoever
  /// subscribes meanwhile hears from the next event on, whoever is unsubscribed meanwhile is left
  /// out. What a subscriber throws is logged, and the next one is told.
  void notifySubscribers(std::string const& aType, std::string const& aValue,
                         std::string const& aDevice, std::string const& aUser);

  LongestCall const& getLongestCallback() const { return mLongestCallback; }

 private:
  struct Entry {
    UserInputSubscription subscription;
    /// Counts up with each subscription; tells those apart that came while an event was delivered.
    std::uint64_t number;
  };

  /// One call of a subscriber that is under way.
  struct Call {
    GUID id;
    std::thread::id runner;
  };

  void beginCall(GUID const& aID) ZELV_REQUIRES(mMutex);
  void endCall(GUID const& aID) ZELV_REQUIRES(mMutex);
  bool isCalledElsewhere(GUID const& aID) const ZELV_REQUIRES(mMutex);
  /// Lets go of the lock while it waits.
  void waitForCalls(GUID const& aID) ZELV_REQUIRES(mMutex);

  PCMutex mMutex;
  std::map<GUID, Entry> mTable ZELV_GUARDED_BY(mMutex);
  std::uint64_t mNewest ZELV_GUARDED_BY(mMutex) = 0;
  std::vector<Call> mCalls ZELV_GUARDED_BY(mMutex);
  /// One semaphore for each thread that waits for the end of a call, on that thread's stack.
  std::vector<PCSemaphore*> mWaiting ZELV_GUARDED_BY(mMutex);
  LongestCall mLongestCallback;
};

}  // namespace Zelv::Controller
