#include "apps/zelv-tv/DeviceWatch.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

#include "apps/zelv-tv/testing/TreeMock.h"

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::NiceMock;
using Zelv::GUID;

char const* const kTelevisions = "/Zelv/Devices/RemoteTV/@ID";
char const* const kPhones = "/Zelv/Devices/Mobile/@ID";

/// A tree whose reads wait until the test answers them.
class DeviceWatchTest : public testing::Test {
 protected:
  DeviceWatchTest() {
    ON_CALL(mTree, requestData)
        .WillByDefault([this](std::string const& aPath, Zelv::ContextInformation const*,
                              Zelv::IBaseDataCallback*) {
          mReads.emplace_back(aPath, GUID::createGUID());
          return mReads.back().second;
        });
  }

  std::vector<std::string> Paths() const {
    std::vector<std::string> paths;
    for (auto const& [path, id] : mReads) {
      paths.push_back(path);
    }
    return paths;
  }

  /// A delivery of the subscription, with what must not be believed.
  void Deliver(std::string const& aPath) {
    mWatch.onData(aPath, "stale", nullptr, GUID::createGUID());
  }

  /// Answers the read that has waited longest.
  void Answer(std::string const& aValue) {
    ASSERT_FALSE(mReads.empty());
    auto const [path, id] = mReads.front();
    mReads.erase(mReads.begin());
    mWatch.onData(path, aValue, nullptr, id);
  }

  GUID Fail() {
    GUID const id = mReads.front().second;
    mReads.erase(mReads.begin());
    mWatch.onStatus(Zelv::StatusInformation(std::runtime_error("gone")), id);
    return id;
  }

  void Arrive(std::string const& aPath, std::string const& aIds, std::string const& aName,
              std::string const& aUrls) {
    Deliver(aPath);
    Answer(aIds);
    Answer(aName);
    Answer(aUrls);
  }

  NiceMock<TreeMock> mTree;
  EventQueue mEvents;
  DeviceWatch mWatch{mEvents, mTree};
  std::vector<std::pair<std::string, GUID>> mReads;
};

TEST_F(DeviceWatchTest, SubscribesToBothLists) {
  EXPECT_CALL(mTree, subscribeData(kTelevisions, nullptr, &mWatch));
  EXPECT_CALL(mTree, subscribeData(kPhones, nullptr, &mWatch));
  mWatch.Begin();
}

TEST_F(DeviceWatchTest, TellsOfATelevisionWithNameAndAddress) {
  Deliver(kTelevisions);
  EXPECT_THAT(Paths(), ElementsAre(kTelevisions));
  Answer("a");
  EXPECT_THAT(Paths(), ElementsAre("/Zelv/Devices/RemoteTV[@ID='a']/Name/text()",
                                   "/Zelv/Devices/RemoteTV[@ID='a']/Services/Service/URL/text()"));
  Answer("Living room");
  EXPECT_THAT(mEvents.Take(), IsEmpty()) << "the address is not known yet";
  Answer("tcp://10.77.0.1:4446/&#x13;tcp://10.77.0.1:4447/");
  EXPECT_THAT(mEvents.Take(), ElementsAre("arrived TV a 10.77.0.1 Living room"));
}

TEST_F(DeviceWatchTest, TellsOfAPhoneWithoutServices) {
  Arrive(kPhones, "p", "Tom", "");
  EXPECT_THAT(mEvents.Take(), ElementsAre("arrived MOBILE p - Tom"));
}

TEST_F(DeviceWatchTest, TellsOfADepartureWithTheNameOfThen) {
  Arrive(kTelevisions, "a", "Kitchen", "");
  mEvents.Take();
  Deliver(kTelevisions);
  Answer("");
  EXPECT_THAT(mEvents.Take(), ElementsAre("left TV a Kitchen"));
  EXPECT_THAT(mWatch.List(), IsEmpty());
}

TEST_F(DeviceWatchTest, TellsOnlyOfWhatHasChanged) {
  Arrive(kTelevisions, "a", "One", "");
  mEvents.Take();
  Arrive(kTelevisions, "a&#x13;b", "Two", "udp://10.77.0.2:1/");
  EXPECT_THAT(mEvents.Take(), ElementsAre("arrived TV b 10.77.0.2 Two"));
  Deliver(kTelevisions);
  Answer("b&#x13;a");
  EXPECT_THAT(mEvents.Take(), IsEmpty());
  EXPECT_THAT(mReads, IsEmpty());
}

TEST_F(DeviceWatchTest, TellsDeparturesBeforeArrivals) {
  Arrive(kTelevisions, "a", "One", "");
  mEvents.Take();
  Arrive(kTelevisions, "b", "Two", "");
  EXPECT_THAT(mEvents.Take(), ElementsAre("left TV a One", "arrived TV b - Two"));
}

TEST_F(DeviceWatchTest, HasOneReadOfAListOnItsWayHoweverOftenItChanges) {
  for (int i = 0; i < 100; ++i) {
    Deliver(kTelevisions);
  }
  EXPECT_THAT(Paths(), ElementsAre(kTelevisions));
  Answer("");
  EXPECT_THAT(Paths(), ElementsAre(kTelevisions)) << "one more, for what changed meanwhile";
  Answer("");
  EXPECT_THAT(mReads, IsEmpty());
}

TEST_F(DeviceWatchTest, SaysNothingOfADeviceThatGoesBeforeItWasDescribed) {
  Deliver(kTelevisions);
  Answer("a");
  Deliver(kTelevisions);
  auto const description = std::exchange(mReads, {mReads.back()});
  Answer("");
  mWatch.onData(description[0].first, "One", nullptr, description[0].second);
  mWatch.onData(description[1].first, "tcp://10.77.0.1:1/", nullptr, description[1].second);
  EXPECT_THAT(mEvents.Take(), IsEmpty());
}

TEST_F(DeviceWatchTest, TakesAFailedReadForAnEmptyOneAndItsSecondReportForNothing) {
  Deliver(kTelevisions);
  Answer("a");
  GUID const name = Fail();
  mWatch.onStatus(Zelv::StatusInformation(std::runtime_error("again")), name);
  Fail();
  EXPECT_THAT(mEvents.Take(), ElementsAre("arrived TV a - "));
}

TEST_F(DeviceWatchTest, KeepsStrangeTextsOnOneLineAndInTheirFields) {
  Arrive(kPhones, "an id", "one\ntwo", "udp://a b:1/");
  EXPECT_THAT(mEvents.Take(), ElementsAre("arrived MOBILE an\\x20id a\\x20b one\\ntwo"));
}

TEST_F(DeviceWatchTest, ListsTelevisionsThenPhonesByTheirIds) {
  Arrive(kPhones, "p", "Tom", "");
  Arrive(kTelevisions, "b", "Two", "tcp://10.77.0.2:1/");
  Arrive(kTelevisions, "a&#x13;b", "One", "tcp://10.77.0.1:1/");
  Deliver(kTelevisions);
  Answer("a&#x13;b&#x13;c");
  EXPECT_THAT(mWatch.List(), ElementsAre("device TV a 10.77.0.1 One", "device TV b 10.77.0.2 Two",
                                         "device MOBILE p - Tom"));
}

TEST_F(DeviceWatchTest, PassesOverAnswersThatItDidNotAskFor) {
  mWatch.onData("/Zelv/Other", "a", nullptr, GUID::createGUID());
  mWatch.onStatus(Zelv::StatusInformation(std::runtime_error("what")), GUID::createGUID());
  EXPECT_THAT(mReads, IsEmpty());
  EXPECT_THAT(mEvents.Take(), IsEmpty());
}

}  // namespace
}  // namespace ZelvTv
