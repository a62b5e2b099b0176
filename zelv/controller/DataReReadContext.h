#pragma once

#include "zelv/interfaces/ContextInformation.h"
#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// Travels with the manager's own reads, from which a subscriber hears of a change above or below
/// its path.
class DataReReadContext final : public ContextInformation {
 public:
  explicit DataReReadContext(GUID const& aSubscriptionId) : mSubscriptionId(aSubscriptionId) {}

  GUID const& getSubscriptionId() const { return mSubscriptionId; }

 private:
  GUID const mSubscriptionId;
};

}  // namespace Zelv::Controller
