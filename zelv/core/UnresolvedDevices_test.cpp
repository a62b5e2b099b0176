#include "zelv/core/UnresolvedDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/Fakes.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class UnresolvedDevicesTest : public testing::Test {
 protected:
  ~UnresolvedDevicesTest() override { Platform::Fake::ResetFakes(); }

  std::vector<std::pair<std::string, std::int64_t>> forgotten(std::int64_t aLimit) {
    std::vector<std::pair<std::string, std::int64_t>> entries;
    devices.forgetBefore(aLimit, [&](std::string const& aId, std::int64_t aTime) {
      entries.emplace_back(aId, aTime);
    });
    return entries;
  }

  /// Fills the table, a second passing for each twenty.
  void fill(std::int64_t aTime) {
    for (std::size_t index = 0; index < UnresolvedDevices::MaxEntries; ++index) {
      if (index % UnresolvedDevices::MaxPerSecond == 0) {
        FakeClock::Advance(1000);
      }
      ASSERT_TRUE(devices.note("filler" + std::to_string(index), aTime));
    }
    FakeClock::Advance(1000);
  }

  UnresolvedDevices devices;
};

TEST_F(UnresolvedDevicesTest, AsksOnceForEachDevice) {
  EXPECT_TRUE(devices.note("a", 100));
  EXPECT_FALSE(devices.note("a", 101));
  EXPECT_TRUE(devices.note("b", 101));
  EXPECT_EQ(devices.size(), 2U);
}

TEST_F(UnresolvedDevicesTest, KnowsWhatItHasAskedForOnce) {
  devices.note("a", 100);
  EXPECT_FALSE(devices.take("b"));
  EXPECT_TRUE(devices.take("a"));
  EXPECT_FALSE(devices.take("a"));
}

TEST_F(UnresolvedDevicesTest, ForgetsWhatIsOlderThanTheLimitAlone) {
  devices.note("a", 99);
  devices.note("b", 100);
  EXPECT_THAT(forgotten(100), ElementsAre(Pair("a", 99)));
  EXPECT_THAT(forgotten(100), IsEmpty());
  EXPECT_TRUE(devices.note("a", 110));
}

TEST_F(UnresolvedDevicesTest, KeepsTheTimeOfTheQuestion) {
  devices.note("a", 100);
  devices.note("a", 200);
  EXPECT_THAT(forgotten(201), ElementsAre(Pair("a", 100)));
}

TEST_F(UnresolvedDevicesTest, MovesWithTheWallClock) {
  devices.note("a", 100);
  devices.shift(1000);
  EXPECT_THAT(forgotten(1100), IsEmpty());
  EXPECT_THAT(forgotten(1101), ElementsAre(Pair("a", 1100)));
}

TEST_F(UnresolvedDevicesTest, AsksNoMoreThanTwentyTimesASecond) {
  int asked = 0;
  for (int index = 0; index < 100; ++index) {
    asked += devices.note("a" + std::to_string(index), 100) ? 1 : 0;
  }
  EXPECT_EQ(asked, UnresolvedDevices::MaxPerSecond);
  // What was not asked for is not noted: its next heartbeat asks.
  EXPECT_EQ(devices.size(), 20U);
  FakeClock::Advance(1000);
  EXPECT_TRUE(devices.note("a20", 101));
}

TEST_F(UnresolvedDevicesTest, TakesAsManyAsItMayAndNotOneMore) {
  fill(100);
  EXPECT_EQ(devices.size(), UnresolvedDevices::MaxEntries);
  EXPECT_FALSE(devices.note("one too many", 100));
  EXPECT_TRUE(devices.take("filler0"));
  EXPECT_TRUE(devices.note("one too many", 100));
}

TEST_F(UnresolvedDevicesTest, AHundredThousandInventedDevicesAreBounded) {
  int asked = 0;
  for (int index = 0; index < 100000; ++index) {
    asked += devices.note("invented" + std::to_string(index), 100 + index / 1000) ? 1 : 0;
    if (index % 1000 == 999) {
      FakeClock::Advance(1000);
    }
    ASSERT_LE(devices.size(), UnresolvedDevices::MaxEntries);
  }
  EXPECT_LE(asked, 101 * UnresolvedDevices::MaxPerSecond);
  EXPECT_GE(asked, 1000) << "those who had their time went";
}

TEST_F(UnresolvedDevicesTest, InAFullTableThoseWhoHadTheirTimeGiveWay) {
  fill(100);
  EXPECT_FALSE(devices.note("new", 100 + UnresolvedDevices::Patience));
  EXPECT_TRUE(devices.note("new", 101 + UnresolvedDevices::Patience));
  EXPECT_EQ(devices.size(), 1U);
}

}  // namespace
}  // namespace Zelv
