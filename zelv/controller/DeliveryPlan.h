#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelv/controller/SubscriptionEntry.h"

namespace Zelv::Controller {

/// Who hears of a change of one path, and how, as long as the table of subscriptions is the same.
struct DeliveryPlan {
  struct Step {
    Step(SubscriptionEntry const& aEntry, eDelivery aDelivery)
        : subscriber(aEntry.subscription.getSubscriber()),
          context(aEntry.subscription.getContext()),
          id(aEntry.subscription.getId()),
          direct(aDelivery == eDelivery::Direct),
          entry(&aEntry) {}

    IBaseDataCallback* subscriber;
    ContextInformation const* context;
    GUID id;
    bool direct;
    SubscriptionEntry const* entry;
  };

  std::string path;
  /// Of the table; nothing else here may be used once the table's differs.
  std::uint64_t generation;
  /// In ascending order of ids.
  std::vector<Step> steps;
};

}  // namespace Zelv::Controller
