#include "zelv/controller/DeliveryPlans.h"

#include <functional>

namespace Zelv::Controller {

std::size_t DeliveryPlans::placeOf(std::string const& aPath) {
  return std::hash<std::string>()(aPath) % cPlaces;
}

std::shared_ptr<DeliveryPlan const> DeliveryPlans::find(std::string const& aPath,
                                                        std::uint64_t aGeneration) const {
  if (aPath.size() > cLongestPath) {
    return nullptr;
  }
  auto const& plan = mPlaces[placeOf(aPath)];
  return plan && plan->generation == aGeneration && plan->path == aPath ? plan : nullptr;
}

void DeliveryPlans::keep(std::shared_ptr<DeliveryPlan const> const& aPlan) {
  if (aPlan->path.size() <= cLongestPath && aPlan->steps.size() <= cMostSteps) {
    mPlaces[placeOf(aPlan->path)] = aPlan;
  }
}

}  // namespace Zelv::Controller
