#include "zelv/core/DepartedDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class DepartedDevicesTest : public ::testing::Test {
 protected:
  void leave(std::string const& aId,
             DepartedDevices::Reason aReason = DepartedDevices::Reason::Bye) {
    devices.note({"TV", aId, "Name of " + aId, aReason, ++now});
  }

  std::vector<std::string> ids() const {
    std::vector<std::string> ids;
    for (auto const& entry : devices.all()) {
      ids.push_back(entry.id);
    }
    return ids;
  }

  std::int64_t now = 0;
  DepartedDevices devices;
};

TEST_F(DepartedDevicesTest, KeepWhatIsKnownOfADevice) {
  EXPECT_THAT(ids(), IsEmpty());
  leave("a", DepartedDevices::Reason::Silence);
  ASSERT_THAT(devices.all(), SizeIs(1));
  DepartedDevices::Entry const entry = devices.all()[0];
  EXPECT_EQ(entry.type, "TV");
  EXPECT_EQ(entry.id, "a");
  EXPECT_EQ(entry.name, "Name of a");
  EXPECT_EQ(entry.reason, DepartedDevices::Reason::Silence);
  EXPECT_EQ(entry.left, 1);
}

TEST_F(DepartedDevicesTest, AreToldFromTheNewestToTheOldest) {
  leave("a");
  leave("b");
  EXPECT_THAT(ids(), ElementsAre("b", "a"));
}

TEST_F(DepartedDevicesTest, HaveADeviceThatLeavesAgainOnce) {
  leave("a", DepartedDevices::Reason::Silence);
  leave("b");
  leave("a");
  EXPECT_THAT(ids(), ElementsAre("a", "b"));
  EXPECT_EQ(devices.all()[0].reason, DepartedDevices::Reason::Bye);
}

TEST_F(DepartedDevicesTest, LetTheOldestGoBeyondTheBound) {
  for (std::size_t index = 0; index < DepartedDevices::cMost; ++index) {
    leave(std::to_string(index));
  }
  EXPECT_THAT(ids(), SizeIs(DepartedDevices::cMost));
  EXPECT_EQ(ids().back(), "0");
  leave("new");
  EXPECT_THAT(ids(), SizeIs(DepartedDevices::cMost));
  EXPECT_EQ(ids().front(), "new");
  EXPECT_EQ(ids().back(), "1");
}

}  // namespace
}  // namespace Zelv
