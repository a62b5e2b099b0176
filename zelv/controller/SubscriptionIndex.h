#pragma once

#include <vector>

#include "zelv/controller/DeliveryPlan.h"
#include "zelv/controller/SubscriptionEntry.h"

namespace Zelv::Controller {

/// The entries that changes can concern, side by side: going along a table of thousands of entries
/// would cost more for each than the rules do.
class SubscriptionIndex {
 public:
  void clear();

  /// Entries come in ascending order of their ids and MUST outlive their stay.
  void append(SubscriptionEntry const& aEntry);

  /// The deliveries that a change brings about, in the order of the entries.
  std::vector<DeliveryPlan::Step> stepsOf(ChangedPath const& aChange) const;

 private:
  struct Item {
    SubscribedPath path;
    SubscriptionEntry const* entry;
  };

  std::vector<Item> mItems;
};

}  // namespace Zelv::Controller
