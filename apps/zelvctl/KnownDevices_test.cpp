#include "apps/zelvctl/KnownDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Seconds = std::chrono::seconds;

Device device(std::string const& aId, std::string const& aType = "TV",
              std::string const& aName = "name") {
  return {aId, aType, aName, "", ""};
}

std::vector<std::string> idsOf(std::vector<Device> const& aDevices) {
  std::vector<std::string> ids;
  ids.reserve(aDevices.size());
  for (Device const& each : aDevices) {
    ids.push_back(each.id);
  }
  return ids;
}

class KnownDevicesTest : public testing::Test {
 protected:
  KnownDevices mDevices;
  KnownDevices::Clock::time_point const mStart{};
};

TEST_F(KnownDevicesTest, TellsANewDeviceFromOneDescribedAgain) {
  EXPECT_TRUE(mDevices.add(device("a", "TV", "old"), mStart));
  EXPECT_FALSE(mDevices.add(device("a", "TV", "new"), mStart));
  ASSERT_EQ(mDevices.sorted().size(), 1U);
  EXPECT_EQ(mDevices.sorted()[0].name, "new");
}

TEST_F(KnownDevicesTest, StampsOnlyWhatItKnows) {
  mDevices.add(device("a"), mStart);
  EXPECT_TRUE(mDevices.stamp("a", mStart));
  EXPECT_FALSE(mDevices.stamp("b", mStart));
}

TEST_F(KnownDevicesTest, GivesWhatItRemoves) {
  mDevices.add(device("a", "TV", "Kitchen"), mStart);
  EXPECT_EQ(mDevices.remove("a").value().name, "Kitchen");
  EXPECT_FALSE(mDevices.remove("a"));
}

TEST_F(KnownDevicesTest, DropsWhatWasLastHeardBeforeTheLimit) {
  mDevices.add(device("a"), mStart);
  mDevices.add(device("b"), mStart);
  mDevices.add(device("c"), mStart + Seconds(2));
  mDevices.stamp("b", mStart + Seconds(1));
  EXPECT_THAT(idsOf(mDevices.removeSilentSince(mStart + Seconds(1))), ElementsAre("a"));
  EXPECT_THAT(idsOf(mDevices.removeSilentSince(mStart + Seconds(1))), IsEmpty());
  EXPECT_THAT(idsOf(mDevices.sorted()), ElementsAre("b", "c"));
}

TEST_F(KnownDevicesTest, SortsTelevisionsThenPhonesByNameThenId) {
  mDevices.add(device("p", "MOBILE", "Ann"), mStart);
  mDevices.add(device("c", "TV", "Study"), mStart);
  mDevices.add(device("b", "TV", "Kitchen"), mStart);
  mDevices.add(device("a", "TV", "Study"), mStart);
  EXPECT_THAT(idsOf(mDevices.sorted()), ElementsAre("b", "a", "c", "p"));
}

TEST_F(KnownDevicesTest, TakesInNoMoreThanItsMost) {
  for (std::size_t i = 0; i < KnownDevices::MaxDevices; ++i) {
    EXPECT_TRUE(mDevices.add(device(std::to_string(i)), mStart));
  }
  EXPECT_FALSE(mDevices.add(device("one more"), mStart));
  EXPECT_EQ(mDevices.sorted().size(), KnownDevices::MaxDevices);
  mDevices.add(device("0", "TV", "new"), mStart);
  EXPECT_EQ(mDevices.remove("0").value().name, "new");
  EXPECT_TRUE(mDevices.add(device("one more"), mStart));
}

}  // namespace
}  // namespace ZelvCtl
