#pragma once

#include <string>

#include "zelv/controller/eDelivery.h"
#include "zelv/interfaces/GUID.h"

namespace Zelv::Controller {

/// What a change would mean for one subscription.
struct DeliveryExplanation {
  GUID id;
  /// As the subscriber wrote it.
  std::string xpath;
  /// The class of the subscriber; empty for nobody.
  std::string subscriber;
  eDelivery delivery;
  /// True when changes that stay on this device are withheld from it, whatever their path.
  bool withheld;
};

}  // namespace Zelv::Controller
