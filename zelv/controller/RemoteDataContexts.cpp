#include "zelv/controller/RemoteDataContexts.h"

#include <algorithm>
#include <utility>

#include "zelv/platform/TCAutoLock.h"

namespace Zelv::Controller {

namespace {

/// So many failures are kept in mind for requests that are just being made. A request that fails
/// unnoticed behind so many others stays until its device leaves.
constexpr std::size_t cEarlyFailures = 1024;

}  // namespace

void RemoteDataContexts::add(Context const& aContext) {
  TCAutoLock lock(mLock);
  insert(aContext, mByRemoteId.end());
}

RemoteDataContexts::Added RemoteDataContexts::add(Subscription const& aContext,
                                                  Subscription& aGone) {
  TCAutoLock lock(mLock);
  aGone = nullptr;
  if (!aContext->oneTime && mSubscriptions >= cSubscriptions) {
    if (mOnline.contains(aContext->deviceId)) {
      aGone = takeOldestOfUnknown();
    }
    if (!aGone) {
      return Added::Refused;
    }
  }
  insert(aContext, mByRemoteId.emplace(aContext->remoteId, aContext));
  mSubscriptions += aContext->oneTime ? 0 : 1;
  return aGone ? Added::GaveWay : Added::Yes;
}

void RemoteDataContexts::insert(Context const& aContext, ByRemoteId::iterator aPlace) {
  mTable.insert_or_assign(aContext.get(), Entry{aContext, aPlace, mOrder++});
  ++mStarting;
}

RemoteDataContexts::Subscription RemoteDataContexts::takeOldestOfUnknown() {
  auto oldest = mTable.end();
  for (auto at = mTable.begin(); at != mTable.end(); ++at) {
    bool const candidate = at->second.place != mByRemoteId.end() &&
                           !at->second.context->answeredOnce &&
                           !mOnline.contains(at->second.place->second->deviceId);
    if (candidate && (oldest == mTable.end() || at->second.order < oldest->second.order)) {
      oldest = at;
    }
  }
  if (oldest == mTable.end()) {
    return nullptr;
  }
  Subscription gone = oldest->second.place->second;
  erase(oldest);
  return gone;
}

void RemoteDataContexts::erase(Table::iterator aEntry) {
  Entry const& entry = aEntry->second;
  if (entry.place != mByRemoteId.end()) {
    mSubscriptions -= entry.context->answeredOnce ? 0 : 1;
    mByRemoteId.erase(entry.place);
  }
  mByLocalId.erase(entry.context->localId);
  mTable.erase(aEntry);
}

bool RemoteDataContexts::started(RemoteDataContext& aContext, GUID const& aLocalId) {
  TCAutoLock lock(mLock);
  aContext.localId = aLocalId;
  bool removed = false;
  auto const entry = mTable.find(&aContext);
  if (entry == mTable.end()) {
    removed = !aContext.answeredOnce;
  } else if (aContext.answeredOnce) {
    auto const failure = std::find(mEarlyFailures.begin(), mEarlyFailures.end(), aLocalId);
    if (failure == mEarlyFailures.end()) {
      mByLocalId.emplace(aLocalId, &aContext);
    } else {
      erase(entry);
    }
  }
  endStart();
  return !removed;
}

void RemoteDataContexts::cancel(RemoteDataContext const& aContext) {
  TCAutoLock lock(mLock);
  auto const entry = mTable.find(&aContext);
  if (entry != mTable.end()) {
    erase(entry);
  }
  endStart();
}

void RemoteDataContexts::endStart() {
  if (--mStarting == 0) {
    mEarlyFailures.clear();
  }
}

/// While the id of a request is not known yet, the path stands for it. An answer to an earlier
/// request at the same place in memory could be taken for its own; it has then asked for the same
/// path, and the value is right.
RemoteDataContexts::Context RemoteDataContexts::answered(ContextInformation const* aContext,
                                                         std::string const& aLocalXPath,
                                                         GUID const& aLocalId) {
  TCAutoLock lock(mLock);
  auto const entry = mTable.find(aContext);
  if (entry == mTable.end()) {
    return nullptr;
  }
  Context context = entry->second.context;
  bool const own = context->localId == GUID::nullGUID ? context->localXPath == aLocalXPath
                                                      : context->localId == aLocalId;
  if (!own) {
    return nullptr;
  }
  if (context->answeredOnce) {
    erase(entry);
  }
  return context;
}

void RemoteDataContexts::failed(GUID const& aLocalId) {
  TCAutoLock lock(mLock);
  auto const known = mByLocalId.find(aLocalId);
  if (known != mByLocalId.end()) {
    erase(mTable.find(known->second));
    return;
  }
  if (mStarting == 0) {
    return;
  }
  mEarlyFailures.push_back(aLocalId);
  if (mEarlyFailures.size() > cEarlyFailures) {
    mEarlyFailures.pop_front();
  }
}

std::vector<RemoteDataContexts::Subscription> RemoteDataContexts::remove(GUID const& aRemoteId) {
  TCAutoLock lock(mLock);
  std::vector<Subscription> removed;
  auto at = mByRemoteId.lower_bound(aRemoteId);
  while (at != mByRemoteId.end() && at->first == aRemoteId) {
    Subscription const context = (at++)->second;
    removed.push_back(context);
    erase(mTable.find(context.get()));
  }
  return removed;
}

std::vector<RemoteDataContexts::Subscription> RemoteDataContexts::removeIf(
    std::function<bool(RemoteDataSubscriptionContext const&)> const& aTest) {
  TCAutoLock lock(mLock);
  std::vector<Subscription> removed;
  for (auto at = mByRemoteId.begin(); at != mByRemoteId.end();) {
    Subscription const context = (at++)->second;
    if (aTest(*context)) {
      removed.push_back(context);
      erase(mTable.find(context.get()));
    }
  }
  return removed;
}

void RemoteDataContexts::setOnline(std::set<std::string> aDeviceIds) {
  TCAutoLock lock(mLock);
  mOnline.swap(aDeviceIds);
}

GUID RemoteDataContexts::localIdOf(RemoteDataContext const& aContext) const {
  TCAutoLock lock(mLock);
  return aContext.localId;
}

std::size_t RemoteDataContexts::size() const {
  TCAutoLock lock(mLock);
  return mTable.size();
}

std::size_t RemoteDataContexts::countSubscriptions() const {
  TCAutoLock lock(mLock);
  return mSubscriptions;
}

}  // namespace Zelv::Controller
