#include "zelv/controller/SubscribedPath.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelv::Controller {
namespace {

eDelivery deliveryOf(std::string const& aSubscribed, std::string const& aChanged) {
  std::string const normalised = SubscribedPath::normalise(aSubscribed);
  SubscribedPath const path(aSubscribed, normalised);
  ChangedPath const change(aChanged);
  eDelivery const delivery = path.deliveryOf(change);
  if (delivery == eDelivery::Direct || delivery == eDelivery::ReRead) {
    EXPECT_TRUE(path.mayConcern(change)) << aSubscribed << " on " << aChanged;
  }
  return delivery;
}

TEST(SubscribedPath, NormalisesByCuttingTextStepAttributeStepAndPredicates) {
  EXPECT_EQ(SubscribedPath::normalise("/Zelv/a[@ID='1']/b[2]/@x"), "/Zelv/a/b");
  EXPECT_EQ(SubscribedPath::normalise("/Zelv/a[@ID='1']/text()"), "/Zelv/a");
  // The first such step is where it is cut, also within a predicate.
  EXPECT_EQ(SubscribedPath::normalise("/Zelv/a[b/@x='1']/c"), "/Zelv/a[b");
}

TEST(SubscribedPath, PutsAnExactMatchBeforeAllElse) {
  EXPECT_EQ(deliveryOf("/Zelv/a", "/Zelv/a"), eDelivery::Direct);
  // By its normalised form alone it would not even be near.
  EXPECT_EQ(deliveryOf("/Zelv/a[b/@x='1']/c", "/Zelv/a[b/@x='1']/c"), eDelivery::Direct);
}

TEST(SubscribedPath, PutsTheSiblingBeforeTheAttributeAndThatBeforeTheMismatch) {
  EXPECT_EQ(deliveryOf("/Zelv/a[@ID='1']/@x", "/Zelv/a[@ID='2']/text()"), eDelivery::SkipSibling);
  EXPECT_EQ(deliveryOf("/Zelv/a/@x", "/Zelv/b/text()"), eDelivery::SkipAttribute);
  EXPECT_EQ(deliveryOf("/Zelv/a[@ID='1']/x", "/Zelv/a[@ID='2']/y"), eDelivery::SkipSibling);
  EXPECT_EQ(deliveryOf("/Zelv/a/x", "/Zelv/b/text()"), eDelivery::SkipUnmatched);
}

TEST(SubscribedPath, ComparesOnlyFirstPredicates) {
  EXPECT_EQ(deliveryOf("/Zelv/a[@ID='1']/b[@ID='1']", "/Zelv/a[@ID='1']/b[@ID='2']"),
            eDelivery::ReRead);
  EXPECT_EQ(deliveryOf("/Zelv/a[@X='1']/b[@ID='1']", "/Zelv/a[@X='1']/b[@ID='2']"),
            eDelivery::ReRead);
}

TEST(SubscribedPath, TakesABracketWithoutItsPartnerForText) {
  EXPECT_EQ(deliveryOf("/Zelv/a[", "/Zelv/a[/b"), eDelivery::ReRead);
  EXPECT_EQ(deliveryOf("/Zelv/a[@ID='1'", "/Zelv/a[@ID='2']"), eDelivery::ReRead);
  EXPECT_EQ(deliveryOf("/Zelv/a]", "/Zelv/a]/b"), eDelivery::ReRead);
}

TEST(SubscribedPath, MatchesEverythingWithAnEmptyNormalisedForm) {
  EXPECT_EQ(deliveryOf("", "/Zelv/a"), eDelivery::ReRead);
  EXPECT_EQ(deliveryOf("[x]", "/Zelv/a"), eDelivery::ReRead);
}

}  // namespace
}  // namespace Zelv::Controller
