#include "zelv/controller/SubscriptionIndex.h"

namespace Zelv::Controller {

void SubscriptionIndex::clear() {
  mItems.clear();
}

void SubscriptionIndex::append(SubscriptionEntry const& aEntry) {
  mItems.push_back({aEntry.path, &aEntry});
}

std::vector<DeliveryPlan::Step> SubscriptionIndex::stepsOf(ChangedPath const& aChange) const {
  std::vector<DeliveryPlan::Step> steps;
  for (Item const& item : mItems) {
    if (!item.path.mayConcern(aChange)) {
      continue;
    }
    eDelivery const delivery = item.path.deliveryOf(aChange);
    if (delivery == eDelivery::Direct || delivery == eDelivery::ReRead) {
      steps.emplace_back(*item.entry, delivery);
    }
  }
  return steps;
}

}  // namespace Zelv::Controller
