#include "apps/zelvctl/Presence.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

Device const kitchen{"a", "TV", "Kitchen", "", "10.77.0.1"};
Device const hall{"b", "TV", "Hall", "", "10.77.0.2"};

TEST(Presence, CountsReturnsNotTheFirstArrival) {
  Presence presence;
  presence.follow("a", "10.77.0.1");
  presence.note(true, kitchen);
  EXPECT_FALSE(presence.isAway());
  EXPECT_EQ(presence.returns(), 0U);
  presence.note(false, kitchen);
  EXPECT_TRUE(presence.isAway());
  presence.note(true, kitchen);
  EXPECT_FALSE(presence.isAway());
  EXPECT_EQ(presence.returns(), 1U);
}

TEST(Presence, TakesNoNoticeOfOthers) {
  Presence presence;
  presence.note(false, kitchen);
  presence.follow("a", "10.77.0.1");
  presence.note(false, hall);
  EXPECT_FALSE(presence.isAway());
}

TEST(Presence, KnowsADeviceByItsAddressWhereThatIsAll) {
  Presence presence;
  presence.follow("", "10.77.0.2");
  presence.note(false, kitchen);
  EXPECT_FALSE(presence.isAway());
  presence.note(false, hall);
  EXPECT_TRUE(presence.isAway());
}

}  // namespace
}  // namespace ZelvCtl
