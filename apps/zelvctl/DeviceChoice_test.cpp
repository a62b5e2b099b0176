#include "apps/zelvctl/DeviceChoice.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZelvCtl {
namespace {

char const* const kId = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";

std::vector<Device> const devices = {{kId, "TV", "Kitchen", "", ""},
                                     {"other", "TV", "Hall", "", ""},
                                     {"third", "MOBILE", "Hall", "", ""}};

std::string failure(char const* aText, std::vector<Device> const& aDevices) {
  try {
    return "found " + DeviceChoice(aText).among(aDevices).id;
  } catch (std::runtime_error const& error) {
    return error.what();
  }
}

TEST(DeviceChoice, MeansADeviceByItsName) {
  EXPECT_EQ(DeviceChoice("Kitchen").among(devices).id, kId);
  EXPECT_FALSE(DeviceChoice("Kitchen").byId(devices));
}

TEST(DeviceChoice, MeansADeviceByItsIdHoweverThatIsWritten) {
  EXPECT_EQ(DeviceChoice(kId).among(devices).name, "Kitchen");
  EXPECT_EQ(DeviceChoice("{6F1D2A3E-0C57-4B8E-9A41-5D7E6B3C2F10}").among(devices).name, "Kitchen");
  EXPECT_EQ(DeviceChoice("third").among(devices).type, "MOBILE");
}

TEST(DeviceChoice, PrefersTheIdToAName) {
  std::vector<Device> const hostile = {{"a", "TV", kId, "", ""}, {kId, "TV", "Kitchen", "", ""}};
  EXPECT_EQ(DeviceChoice(kId).among(hostile).name, "Kitchen");
}

TEST(DeviceChoice, SaysWhatToDoWhenItIsNotClear) {
  EXPECT_EQ(failure("Hall", devices),
            "2 devices are called 'Hall'; the ID tells one from the other");
  EXPECT_EQ(failure("kitchen", devices),
            "no device has the name or ID 'kitchen'; `zelvctl devices` lists those that are there");
}

}  // namespace
}  // namespace ZelvCtl
