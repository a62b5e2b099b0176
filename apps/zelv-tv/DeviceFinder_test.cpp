#include "apps/zelv-tv/DeviceFinder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "apps/zelv-tv/testing/TreeMock.h"

namespace ZelvTv {
namespace {

using testing::NiceMock;
using Zelv::GUID;

/// A tree that answers each read at once, by a table.
class DeviceFinderTest : public testing::Test {
 protected:
  DeviceFinderTest() {
    ON_CALL(mTree, requestData)
        .WillByDefault([this](std::string const& aPath, Zelv::ContextInformation const*,
                              Zelv::IBaseDataCallback*) {
          GUID const id = GUID::createGUID();
          mReads.emplace_back(aPath, id);
          return id;
        });
    mSelf.onData("/Zelv/Devices/LocalTV/@ID", "self-id", nullptr, GUID::nullGUID);
    mSelf.onData("/Zelv/Devices/LocalTV/Name/text()", "Kitchen", nullptr, GUID::nullGUID);
    mSelf.onData("/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()",
                 "10.77.0.1", nullptr, GUID::nullGUID);
    arrive("/Zelv/Devices/RemoteTV", {{"tv-id", {"Bedroom", "tcp://10.77.0.2:4446/"}}});
    arrive("/Zelv/Devices/Mobile", {{"phone-id", {"Tom", "tcp://10.77.0.3:4448/"}},
                                    {"other-id", {"Ann", "tcp://10.77.0.4:4448/"}},
                                    {"third-id", {"Ann", "tcp://10.77.0.5:4448/"}},
                                    {"fourth-id", {"phone-id", ""}}});
  }

  struct Described {
    std::string name;
    std::string urls;
  };

  void arrive(std::string const& aBranch, std::map<std::string, Described> const& aDevices) {
    mWatch.onData(aBranch + "/@ID", "", nullptr, GUID::createGUID());
    std::string ids;
    for (auto const& [id, device] : aDevices) {
      ids += (ids.empty() ? "" : "&#x13;") + id;
    }
    while (!mReads.empty()) {
      auto const [path, transaction] = mReads.front();
      mReads.erase(mReads.begin());
      std::string value = ids;
      for (auto const& [id, device] : aDevices) {
        if (path.find("[@ID='" + id + "']") != std::string::npos) {
          value = path.ends_with("/Name/text()") ? device.name : device.urls;
        }
      }
      mWatch.onData(path, value, nullptr, transaction);
    }
  }

  std::string refusalOf(std::string const& aText) const {
    try {
      return "found " + mFinder.ForCommand(aText);
    } catch (DeviceFinder::NotFound const& refusal) {
      return refusal.what();
    }
  }

  NiceMock<TreeMock> mTree;
  std::vector<std::pair<std::string, GUID>> mReads;
  EventQueue mEvents;
  Self mSelf;
  DeviceWatch mWatch{mEvents, mTree};
  DeviceFinder mFinder{mSelf, mWatch};
};

TEST_F(DeviceFinderTest, FindsAPhoneByIdNameAndAddress) {
  EXPECT_EQ(mFinder.ForCommand("phone-id"), "phone-id") << "an ID comes before a name";
  EXPECT_EQ(mFinder.ForCommand("Tom"), "phone-id");
  EXPECT_EQ(mFinder.ForCommand("10.77.0.4"), "other-id");
}

TEST_F(DeviceFinderTest, FindsTheSetItselfByThemToo) {
  for (char const* text : {"-", "self-id", "Kitchen", "10.77.0.1"}) {
    EXPECT_EQ(mFinder.ForCommand(text), "self-id") << text;
  }
}

TEST_F(DeviceFinderTest, SaysWhyItFindsNone) {
  EXPECT_EQ(refusalOf("Nobody"), "no device 'Nobody'");
  EXPECT_EQ(refusalOf("Ann"), "2 devices are 'Ann'; their IDs tell them apart");
  EXPECT_EQ(refusalOf("Bedroom"), "'Bedroom' is a television; commands go to mobile devices");
  EXPECT_EQ(refusalOf("tv-id"), "'tv-id' is a television; commands go to mobile devices");
}

TEST_F(DeviceFinderTest, FollowsTheNameOfTheSet) {
  mSelf.onData("/Zelv/Devices/LocalTV/Name/text()", "Hall", nullptr, GUID::nullGUID);
  EXPECT_EQ(mFinder.ForCommand("Hall"), "self-id");
  EXPECT_EQ(refusalOf("Kitchen"), "no device 'Kitchen'");
}

TEST_F(DeviceFinderTest, TheSetFollowsItsThreePaths) {
  testing::StrictMock<TreeMock> tree;
  EXPECT_CALL(tree, subscribeData(testing::_, nullptr, &mSelf)).Times(3);
  mSelf.Begin(tree);
}

}  // namespace
}  // namespace ZelvTv
