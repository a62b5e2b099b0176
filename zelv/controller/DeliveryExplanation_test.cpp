// What explain() says of a change, held against what the change then does.

#include "zelv/controller/DeliveryExplanation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelv/controller/DataSubscriptionManager.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::LogCapture;
using ::testing::ElementsAre;
using Testing::FakeCoreData;
using ::testing::IsEmpty;
using Testing::RecordingCallback;
using ::testing::SizeIs;

char const cDevice[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";
char const cHead[] = "DataSubscriptionManager::notifySubscribers: ";

class DeliveryExplanationTest : public ::testing::Test {
 protected:
  GUID add(std::string const& aPath, IBaseDataCallback* aSubscriber, bool aOneTime = false) {
    return manager.addSubscription(aPath, aSubscriber, nullptr, aOneTime);
  }
  GUID add(std::string const& aPath) { return add(aPath, &callback); }

  /// What is said of the only subscription.
  eDelivery explained(std::string const& aChanged) {
    auto const explanations = manager.explain(aChanged, nullptr);
    EXPECT_THAT(explanations, SizeIs(1));
    return explanations.at(0).delivery;
  }

  /// What a change does: "direct", "read", or the text of the skip.
  std::string done(std::string const& aChanged) {
    LogCapture log;
    std::size_t const told = callback.count();
    std::size_t const read = tree.requests.size();
    manager.notifySubscribers(aChanged, "new", nullptr);
    if (callback.count() > told) {
      return "direct";
    }
    if (tree.requests.size() > read) {
      return "read";
    }
    for (std::string const& text : log.texts(PCRealDebug::Detail)) {
      if (text.starts_with(cHead)) {
        return text.substr(std::string(cHead).size());
      }
    }
    return "nothing";
  }

  FakeCoreData tree;
  RecordingCallback callback;
  DataSubscriptionManager manager{FakeCoreData::find};
};

TEST_F(DeliveryExplanationTest, NamesIdPathAndClassInTheOrderOfDelivery) {
  EXPECT_THAT(manager.explain("/Zelv/a", nullptr), IsEmpty());
  GUID const one = add("/Zelv/a");
  GUID const other = add("/Zelv[@DeviceId='x']/b", nullptr);
  auto const explanations = manager.explain("/Zelv/a", nullptr);
  ASSERT_THAT(explanations, SizeIs(2));
  DeliveryExplanation const& first = explanations[one < other ? 0 : 1];
  DeliveryExplanation const& second = explanations[one < other ? 1 : 0];
  EXPECT_EQ(first.id, one);
  EXPECT_EQ(first.xpath, "/Zelv/a");
  EXPECT_EQ(first.subscriber, "Zelv::Controller::Testing::RecordingCallback");
  EXPECT_EQ(second.id, other);
  EXPECT_EQ(second.xpath, "/Zelv[@DeviceId='x']/b");
  EXPECT_EQ(second.subscriber, "");
}

TEST_F(DeliveryExplanationTest, TellsNobodyAndReadsNothing) {
  add("/Zelv/a");
  add("/Zelv");
  manager.explain("/Zelv/a", nullptr);
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_THAT(tree.requests, IsEmpty());
}

TEST_F(DeliveryExplanationTest, OfAChangeOutsideTheTreeIsThatThereIsNone) {
  add("/Other/a");
  EXPECT_EQ(explained("/Other/a"), eDelivery::SkipNoChange);
  EXPECT_EQ(explained(""), eDelivery::SkipNoChange);
  EXPECT_EQ(done("/Other/a"), "nothing");
}

TEST_F(DeliveryExplanationTest, OfDataOfAnotherDeviceIsThatItIsRemote) {
  add("/Zelv[@DeviceId='other']/a");
  EXPECT_EQ(explained("/Zelv[@DeviceId='other']/a"), eDelivery::SkipRemote);
  EXPECT_EQ(done("/Zelv[@DeviceId='other']/a"), "Skipped subscription for remote data.");
}

TEST_F(DeliveryExplanationTest, GoesByTheIdentityOfThisDevice) {
  std::string const path = std::string("/Zelv[@DeviceId='") + cDevice + "']/a";
  add(path);
  EXPECT_EQ(explained(path), eDelivery::SkipRemote);
  manager.setLocalDeviceId(GUID(cDevice));
  EXPECT_EQ(explained(path), eDelivery::Direct);
  EXPECT_EQ(done(path), "direct");
}

TEST_F(DeliveryExplanationTest, OfARequestIsThatItIsForOneTime) {
  add("/Zelv/a", &callback, true);
  EXPECT_EQ(explained("/Zelv/a"), eDelivery::SkipOneTime);
  EXPECT_EQ(done("/Zelv/a"), "Skipped one time subscription (requestData).");
}

TEST_F(DeliveryExplanationTest, OfNobodysSubscriptionIsThatItIsLeftOut) {
  add("/Zelv/a", nullptr);
  EXPECT_EQ(explained("/Zelv/a"), eDelivery::SkipExcluded);
  EXPECT_EQ(done("/Zelv/a"), "Skipped remote data controller.");
}

TEST_F(DeliveryExplanationTest, OfTheWithheldOneIsTheRuleOfOtherChangesAndThatItIsWithheld) {
  add("/Zelv/a");
  auto const withheld = manager.explain("/Zelv/a", &callback);
  EXPECT_EQ(withheld.at(0).delivery, eDelivery::Direct);
  EXPECT_TRUE(withheld.at(0).withheld);
  RecordingCallback other;
  EXPECT_FALSE(manager.explain("/Zelv/a", &other).at(0).withheld);
  manager.notifySubscribers("/Zelv/a", "new", &callback);
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(DeliveryExplanationTest, OfExactlyThePathIsThatItIsToldAtOnce) {
  add("/Zelv/Devices/Mobile/@ID");
  EXPECT_EQ(explained("/Zelv/Devices/Mobile/@ID"), eDelivery::Direct);
  EXPECT_EQ(done("/Zelv/Devices/Mobile/@ID"), "direct");
}

TEST_F(DeliveryExplanationTest, OfAnElementWithAnotherIdIsThatItIsASibling) {
  add("/Zelv/Users/User[@ID='a']/Name/text()");
  EXPECT_EQ(explained("/Zelv/Users/User[@ID='b']/Name/text()"), eDelivery::SkipSibling);
  EXPECT_EQ(done("/Zelv/Users/User[@ID='b']/Name/text()"),
            "Skipped change in sibling node (different ID).");
}

TEST_F(DeliveryExplanationTest, OfAnAttributeWhenATextChangesIsThatItIsUnchanged) {
  add("/Zelv/Devices/Mobile/@ID");
  EXPECT_EQ(explained("/Zelv/Devices/Mobile[@ID='a']/Name/text()"), eDelivery::SkipAttribute);
  EXPECT_EQ(done("/Zelv/Devices/Mobile[@ID='a']/Name/text()"),
            "Skipped subscription for unchanged attribute.");
}

TEST_F(DeliveryExplanationTest, OfAnUnrelatedPathIsThatItDoesNotMatch) {
  add("/Zelv/Configuration");
  EXPECT_EQ(explained("/Zelv/Devices/x"), eDelivery::SkipUnmatched);
  EXPECT_EQ(done("/Zelv/Devices/x"), "Skipped unmatched XPath.");
}

TEST_F(DeliveryExplanationTest, OfAPathAboveOrBelowIsThatItIsReadAgain) {
  add("/Zelv/Users/User[@ID='a']");
  EXPECT_EQ(explained("/Zelv/Users/User[@ID='a']/Name/text()"), eDelivery::ReRead);
  EXPECT_EQ(done("/Zelv/Users/User[@ID='a']/Name/text()"), "read");
  EXPECT_EQ(explained("/Zelv/Users"), eDelivery::ReRead);
  EXPECT_EQ(done("/Zelv/Users"), "read");
}

TEST_F(DeliveryExplanationTest, MayBeAskedForFromWithinADelivery) {
  std::vector<DeliveryExplanation> explanations;
  callback.reaction = [&](Testing::Heard const&) {
    explanations = manager.explain("/Zelv/a", nullptr);
  };
  add("/Zelv/a");
  manager.notifySubscribers("/Zelv/a", "new", nullptr);
  EXPECT_THAT(explanations, SizeIs(1));
}

// Requests that never left.

class OneTimeRequestsTest : public DeliveryExplanationTest {
 protected:
  std::vector<std::string> oldest(std::size_t aMost) {
    std::vector<std::string> lines;
    for (OneTimeRequests::Request const& request : manager.getRequests(aMost).oldest) {
      lines.push_back(request.xpath + " " + std::to_string(request.age) +
                      (request.answered ? " answered" : " waiting"));
    }
    return lines;
  }
};

TEST_F(OneTimeRequestsTest, AreNoneWhereThereAreOnlySubscriptions) {
  add("/Zelv/a");
  EXPECT_EQ(manager.getRequests(10).count, 0U);
  EXPECT_THAT(oldest(10), IsEmpty());
}

TEST_F(OneTimeRequestsTest, HaveTheirAgeAndTellWhetherTheyWereAnswered) {
  GUID const first = add("/Zelv[@DeviceId='x']/a", &callback, true);
  FakeClock::Advance(700);
  add("/Zelv[@DeviceId='x']/b", &callback, true);
  FakeClock::Advance(300);
  manager.notifySubscriber(first, "value");
  EXPECT_THAT(oldest(10), ElementsAre("/Zelv[@DeviceId='x']/a 1000 answered",
                                      "/Zelv[@DeviceId='x']/b 300 waiting"));
  EXPECT_EQ(manager.getRequests(10).oldest.at(0).id, first);
  manager.removeSubscription(first);
  EXPECT_THAT(oldest(10), ElementsAre("/Zelv[@DeviceId='x']/b 300 waiting"));
}

TEST_F(OneTimeRequestsTest, AreCountedAllAndToldFromTheOldestOn) {
  for (char const* path : {"/a", "/b", "/c", "/d"}) {
    add(path, &callback, true);
    FakeClock::Advance(10);
  }
  EXPECT_EQ(manager.getRequests(2).count, 4U);
  EXPECT_THAT(oldest(2), ElementsAre("/a 40 waiting", "/b 30 waiting"));
  EXPECT_THAT(oldest(0), IsEmpty());
}

}  // namespace
}  // namespace Zelv::Controller
