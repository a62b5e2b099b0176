#include "zelv/controller/DeliveryPlans.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace Zelv::Controller {
namespace {

std::shared_ptr<DeliveryPlan const> plan(std::string const& aPath, std::uint64_t aGeneration,
                                         std::size_t aSteps = 0) {
  SubscriptionEntry const entry(DataSubscription(aPath, nullptr, nullptr, false), true);
  return std::make_shared<DeliveryPlan const>(DeliveryPlan{
      aPath, aGeneration, std::vector<DeliveryPlan::Step>(aSteps, {entry, eDelivery::Direct})});
}

TEST(DeliveryPlans, FindOnlyWhatWasKeptForThisPathAndGeneration) {
  DeliveryPlans plans;
  EXPECT_EQ(plans.find("/Zelv/a", 1), nullptr);
  auto const kept = plan("/Zelv/a", 1);
  plans.keep(kept);
  EXPECT_EQ(plans.find("/Zelv/a", 1), kept);
  EXPECT_EQ(plans.find("/Zelv/a", 2), nullptr);
  EXPECT_EQ(plans.find("/Zelv/b", 1), nullptr);
}

TEST(DeliveryPlans, HoldNoMoreThanTheyHavePlacesFor) {
  DeliveryPlans plans;
  std::vector<std::weak_ptr<DeliveryPlan const>> made;
  for (int index = 0; index < 1000; ++index) {
    auto const next = plan("/Zelv/" + std::to_string(index), 1);
    made.push_back(next);
    plans.keep(next);
    EXPECT_EQ(plans.find(next->path, 1), next);
  }
  std::size_t alive = 0;
  for (auto const& one : made) {
    alive += one.expired() ? 0 : 1;
  }
  EXPECT_LE(alive, DeliveryPlans::cPlaces);
}

TEST(DeliveryPlans, KeepNothingForLongPathsOrManySubscribers) {
  DeliveryPlans plans;
  std::string const longest(DeliveryPlans::cLongestPath, 'a');
  plans.keep(plan(longest, 1));
  EXPECT_NE(plans.find(longest, 1), nullptr);
  plans.keep(plan(longest + "a", 1));
  EXPECT_EQ(plans.find(longest + "a", 1), nullptr);
  plans.keep(plan("/Zelv/a", 1, DeliveryPlans::cMostSteps));
  EXPECT_NE(plans.find("/Zelv/a", 1), nullptr);
  plans.keep(plan("/Zelv/b", 1, DeliveryPlans::cMostSteps + 1));
  EXPECT_EQ(plans.find("/Zelv/b", 1), nullptr);
}

}  // namespace
}  // namespace Zelv::Controller
