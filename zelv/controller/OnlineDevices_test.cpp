#include "zelv/controller/OnlineDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OnlineDevicesTest : public ::testing::Test {
 protected:
  std::vector<std::string> listedUpTo(std::string const& aDeviceId) const {
    std::vector<std::string> listed;
    devices.forEachUpTo(aDeviceId,
                        [&listed](std::string const& aListed) { listed.push_back(aListed); });
    return listed;
  }

  LogCapture log;
  std::list<std::string> const list = {"b", "a", "c"};
  OnlineDevices const devices{list};
};

TEST_F(OnlineDevicesTest, KnowWhoIsThere) {
  EXPECT_TRUE(devices.has("a"));
  EXPECT_TRUE(devices.has("c"));
  EXPECT_FALSE(devices.has("d"));
  EXPECT_FALSE(devices.has("A"));
  EXPECT_FALSE(devices.has(""));
}

TEST_F(OnlineDevicesTest, AreGoneThroughInTheirOrderAsFarAsTheOneLookedFor) {
  EXPECT_THAT(listedUpTo("b"), ElementsAre("b"));
  EXPECT_THAT(listedUpTo("a"), ElementsAre("b", "a"));
  EXPECT_THAT(listedUpTo("d"), ElementsAre("b", "a", "c"));
}

TEST_F(OnlineDevicesTest, AreNotGoneThroughWhenNobodyReadsIt) {
  PCRealDebug::SetLevel(PCRealDebug::Notable);
  EXPECT_THAT(listedUpTo("d"), IsEmpty());
}

TEST(OnlineDevices, MayBeNone) {
  std::list<std::string> const none;
  EXPECT_FALSE(OnlineDevices(none).has(""));
}

}  // namespace
}  // namespace Zelv::Controller
