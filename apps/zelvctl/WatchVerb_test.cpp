#include "apps/zelvctl/WatchVerb.h"

#include <gmock/gmock.h>

#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;

class WatchVerbTest : public VerbTest {
 protected:
  static void tell(std::string const& aSubscribe, std::string const& aValue) {
    FakeSet::reply(aSubscribe, "NotifyTo",
                   FakeSet::onData(FakeSet::part(aSubscribe, "SubscriptionId"), aValue));
  }

  static bool isSubscription(std::string const& aMessage) {
    return aMessage.find("<SubscribeData>") != std::string::npos;
  }
};

TEST_F(WatchVerbTest, PrintsEachValueAndLeavesInOrder) {
  FakeSet set([this](std::string const& aMessage) {
    if (isSubscription(aMessage)) {
      tell(aMessage, "one\\two");
      tell(aMessage, "three");
      mStop.ring();
    }
  });
  EXPECT_EQ(run<WatchVerb>(optionsFor(set)), "");
  EXPECT_EQ(mOut.str(), "one\\\\two\nthree\n");
  std::vector<std::string> const messages = set.messages(2);
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_THAT(messages[0], HasSubstr("<XPath>/Zelv/A/text()</XPath>"));
  EXPECT_THAT(messages[1],
              HasSubstr("<UnsubscribeData><SubscriptionId>" +
                        FakeSet::part(messages[0], "SubscriptionId") + "</SubscriptionId>"));
  EXPECT_THAT(set.home().receiveMessage(), HasSubstr("<Bye>"));
}

TEST_F(WatchVerbTest, PrintsAMessageThatComesTwiceOnce) {
  FakeSet set([this](std::string const& aMessage) {
    if (isSubscription(aMessage)) {
      std::string text = FakeSet::onData(FakeSet::part(aMessage, "SubscriptionId"), "x");
      text.insert(text.find("</Header>"),
                  "<MessageID>" + std::string(FakeSet::Id) + "</MessageID>");
      FakeSet::reply(aMessage, "NotifyTo", text);
      FakeSet::reply(aMessage, "NotifyTo", text);
      FakeSet::reply(aMessage, "NotifyTo", FakeSet::onData(FakeSet::Id, "hostile"));
      mStop.ring();
    }
  });
  EXPECT_EQ(run<WatchVerb>(optionsFor(set)), "");
  EXPECT_EQ(mOut.str(), "x\n");
}

TEST_F(WatchVerbTest, SubscribesAgainWhenTheSetComesBack) {
  int subscriptions = 0;
  FakeSet* self = nullptr;
  FakeSet set([&](std::string const& aMessage) {
    if (!isSubscription(aMessage)) {
      return;
    }
    tell(aMessage, std::to_string(++subscriptions));
    if (subscriptions == 1) {
      self->sayBye("leaving");
      self->announce("returning");
    } else {
      mStop.ring();
    }
  });
  self = &set;
  EXPECT_EQ(run<WatchVerb>(optionsFor(set)), "");
  EXPECT_EQ(mOut.str(), "1\n2\n");
}

}  // namespace
}  // namespace ZelvCtl
