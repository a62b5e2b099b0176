#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "zelv/controller/RemoteDataContext.h"
#include "zelv/controller/RemoteDataSubscriptionContext.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The contexts that an answer of the tree may still find, and what other devices have asked for by
/// their own ids.
///
/// A pointer that comes back with an answer is nothing but a key here: it is followed only if it is
/// in the table and belongs to the transaction of the answer. A pointer may outlive its context,
/// since a subscription can be taken back while its first read is still queued.
///
/// The lock is a leaf: nothing is called under it but the tests given to removeIf().
class RemoteDataContexts {
 public:
  /// Subscriptions of other devices. Beyond it a device that is known to be there takes the place
  /// of the oldest one that is not; others are refused. One-time requests do not count: each goes
  /// with its answer, and their number is bounded by that of the data tasks.
  static constexpr std::size_t cSubscriptions = 4096;

  using Context = std::shared_ptr<RemoteDataContext>;
  using Subscription = std::shared_ptr<RemoteDataSubscriptionContext>;

  /// Before the request that it goes with is made, so that no answer can come too early.
  void add(Context const& aContext);

  enum class Added { Yes, GaveWay, Refused };

  /// The same for what another device asks. GaveWay when another subscription had to go, which is
  /// aGone then and is to be taken back.
  Added add(Subscription const& aContext, Subscription& aGone);

  /// The request was made. @return false if the context was removed meanwhile: whatever the
  /// request began is to be taken back. Answered is not removed.
  bool started(RemoteDataContext& aContext, GUID const& aLocalId);

  /// The request could not be made.
  void cancel(RemoteDataContext const& aContext);

  /// Finds the context that an answer belongs to, and takes out one that waited for one answer.
  /// Null when there is none.
  Context answered(ContextInformation const* aContext, std::string const& aLocalXPath,
                   GUID const& aLocalId);

  /// A request failed: takes out its context, unless there are more answers to come.
  void failed(GUID const& aLocalId);

  /// Takes out everything that was asked for under this id.
  std::vector<Subscription> remove(GUID const& aRemoteId);

  /// Takes out what another device asked for, where the test says so. MUST NOT call back.
  std::vector<Subscription> removeIf(
      std::function<bool(RemoteDataSubscriptionContext const&)> const& aTest);

  /// The devices that are known to be there, for whom room is made.
  void setOnline(std::set<std::string> aDeviceIds);

  /// The id of the local request; null if it has not returned yet.
  GUID localIdOf(RemoteDataContext const& aContext) const;

  std::size_t size() const;
  std::size_t countSubscriptions() const;

 private:
  using ByRemoteId = std::multimap<GUID, Subscription>;

  struct Entry {
    Context context;
    /// Where it stands by its remote id; the end for requests of this device.
    ByRemoteId::iterator place;
    /// Later ones have higher numbers.
    std::uint64_t order;
  };
  using Table = std::unordered_map<ContextInformation const*, Entry>;

  void insert(Context const& aContext, ByRemoteId::iterator aPlace) ZELV_REQUIRES(mLock);
  void erase(Table::iterator aEntry) ZELV_REQUIRES(mLock);
  Subscription takeOldestOfUnknown() ZELV_REQUIRES(mLock);
  void endStart() ZELV_REQUIRES(mLock);

  mutable PCMutex mLock;
  Table mTable ZELV_GUARDED_BY(mLock);
  ByRemoteId mByRemoteId ZELV_GUARDED_BY(mLock);
  /// Those that wait for one answer.
  std::map<GUID, RemoteDataContext const*> mByLocalId ZELV_GUARDED_BY(mLock);
  std::size_t mSubscriptions ZELV_GUARDED_BY(mLock) = 0;
  std::uint64_t mOrder ZELV_GUARDED_BY(mLock) = 0;
  std::set<std::string> mOnline ZELV_GUARDED_BY(mLock);

  /// Requests whose call has not returned; while there are any, failures that nobody is known for
  /// are kept in mind.
  std::size_t mStarting ZELV_GUARDED_BY(mLock) = 0;
  std::deque<GUID> mEarlyFailures ZELV_GUARDED_BY(mLock);
};

}  // namespace Zelv::Controller
