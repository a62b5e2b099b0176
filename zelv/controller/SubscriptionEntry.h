#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>

#include "zelv/controller/DataSubscription.h"
#include "zelv/controller/SubscribedPath.h"
#include "zelv/platform/PCTime.h"

namespace Zelv::Controller {

/// A subscription in the manager's table, with what is known of it beforehand. Stays where it was
/// made.
struct SubscriptionEntry {
  SubscriptionEntry(DataSubscription const& aSubscription, bool aLocal)
      : subscription(aSubscription),
        normalised(SubscribedPath::normalise(subscription.getXPath())),
        path(subscription.getXPath(), normalised),
        local(aLocal) {}
  SubscriptionEntry(SubscriptionEntry const&) = delete;
  SubscriptionEntry& operator=(SubscriptionEntry const&) = delete;

  /// True when changes of this device's tree can concern it at all.
  bool takesPart() const { return local && !subscription.isOneTimeDelivery(); }

  DataSubscription const subscription;
  std::string const normalised;
  SubscribedPath const path;
  bool local;
  /// Where it stands among the answered one-time entries.
  std::optional<std::list<GUID>::iterator> answered;
  /// By PCTime::CoarseMs().
  std::int64_t const made = PCTime::CoarseMs();
};

}  // namespace Zelv::Controller
