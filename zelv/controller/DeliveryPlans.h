#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "zelv/controller/DeliveryPlan.h"

namespace Zelv::Controller {

/// Remembers the plans of the few paths that change again and again. Bounded: a plan gives way to
/// the next one that falls on its place, and plans of long paths or for many subscribers, which
/// save little beside what they deliver, are not kept.
class DeliveryPlans {
 public:
  static constexpr std::size_t cPlaces = 16;
  static constexpr std::size_t cLongestPath = 512;
  static constexpr std::size_t cMostSteps = 4096;

  /// Null when there is none of this generation.
  std::shared_ptr<DeliveryPlan const> find(std::string const& aPath,
                                           std::uint64_t aGeneration) const;

  void keep(std::shared_ptr<DeliveryPlan const> const& aPlan);

 private:
  static std::size_t placeOf(std::string const& aPath);

  std::array<std::shared_ptr<DeliveryPlan const>, cPlaces> mPlaces;
};

}  // namespace Zelv::Controller
