#include "apps/zelvctl/DataMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

using testing::StartsWith;

std::string const begin = "<Envelope><Header><SenderID>me</SenderID><MessageID>";
std::string const from = "<From>tcp://10.77.0.3:5000/</From>";
std::string const notify = "<NotifyTo>tcp://10.77.0.3:5000/</NotifyTo>";
DataMessages const messages("me", "tcp://10.77.0.3:5000/");

/// What stands behind the message's own identifier, which is another each time.
std::string rest(std::string const& aMessage) {
  EXPECT_THAT(aMessage, StartsWith(begin));
  return aMessage.substr(begin.size() + 36);
}

TEST(DataMessages, AskForAValueOnce) {
  EXPECT_EQ(rest(messages.request("id", "/Zelv/A[@b='c']/text()")),
            "</MessageID>" + from + notify +
                "</Header><Body><RequestData><TransactionId>id</TransactionId>"
                "<XPath>/Zelv/A[@b=&apos;c&apos;]/text()</XPath></RequestData></Body></Envelope>");
}

TEST(DataMessages, AskForAValueAndItsChanges) {
  EXPECT_EQ(rest(messages.subscribe("id", "/Zelv/A[b<3]")),
            "</MessageID>" + from + notify +
                "</Header><Body><SubscribeData><SubscriptionId>id</SubscriptionId>"
                "<XPath>/Zelv/A[b&lt;3]</XPath></SubscribeData></Body></Envelope>");
}

TEST(DataMessages, EndASubscription) {
  EXPECT_EQ(rest(messages.unsubscribe("id")),
            "</MessageID>" + from +
                "</Header><Body><UnsubscribeData><SubscriptionId>id</SubscriptionId>"
                "</UnsubscribeData></Body></Envelope>");
}

TEST(DataMessages, CarryANewValueAsItStands) {
  EXPECT_EQ(rest(messages.set("/Zelv/A/text()", "<b>1 &lt; 2</b>")),
            "</MessageID></Header><Body><SetData><XPath>/Zelv/A/text()</XPath>"
            "<Data><b>1 &lt; 2</b></Data></SetData></Body></Envelope>");
}

TEST(DataMessages, HaveAnIdentifierOfTheirOwn) {
  EXPECT_NE(messages.unsubscribe("id"), messages.unsubscribe("id"));
}

}  // namespace
}  // namespace ZelvCtl
