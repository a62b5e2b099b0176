#include "zelv/controller/RemoteDataMessages.h"

#include <gtest/gtest.h>

#include <string>

#include "zelv/controller/testing/RawDevice.h"

namespace Zelv::Controller {
namespace {

using Testing::RawDevice;

char const cId[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";

class RemoteDataMessagesTest : public ::testing::Test {
 protected:
  RemoteDataMessagesTest() {
    messages.setLocalDeviceId("me");
    messages.setServiceUrl("tcp://192.0.2.7:4446/");
  }

  RemoteDataMessages messages;
};

TEST_F(RemoteDataMessagesTest, AskForDataInThisVeryForm) {
  EXPECT_EQ(RawDevice::withoutMessageId(messages.requestData(GUID(cId), "/Zelv/A")),
            "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
            "<From>tcp://192.0.2.7:4446/</From><NotifyTo>tcp://192.0.2.7:4446/</NotifyTo></Header>"
            "<Body><RequestData><TransactionId>2cb63c08-01e0-41cd-950e-1566f18e0983"
            "</TransactionId><XPath>/Zelv/A</XPath></RequestData></Body></Envelope>");
}

TEST_F(RemoteDataMessagesTest, SubscribeInThisVeryForm) {
  EXPECT_EQ(RawDevice::withoutMessageId(messages.subscribeData(GUID(cId), "/Zelv/A")),
            "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
            "<From>tcp://192.0.2.7:4446/</From><NotifyTo>tcp://192.0.2.7:4446/</NotifyTo></Header>"
            "<Body><SubscribeData><SubscriptionId>2cb63c08-01e0-41cd-950e-1566f18e0983"
            "</SubscriptionId><XPath>/Zelv/A</XPath></SubscribeData></Body></Envelope>");
}

TEST_F(RemoteDataMessagesTest, UnsubscribeInThisVeryForm) {
  EXPECT_EQ(RawDevice::withoutMessageId(messages.unsubscribeData(GUID(cId))),
            "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
            "<From>tcp://192.0.2.7:4446/</From></Header>"
            "<Body><UnsubscribeData><SubscriptionId>2cb63c08-01e0-41cd-950e-1566f18e0983"
            "</SubscriptionId></UnsubscribeData></Body></Envelope>");
}

TEST_F(RemoteDataMessagesTest, TellAValueInThisVeryForm) {
  EXPECT_EQ(RawDevice::withoutMessageId(messages.onData(GUID(cId), "a & <b c='d'/>&#x13;e")),
            "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
            "<From>tcp://192.0.2.7:4446/</From></Header>"
            "<Body><OnData><SubscriptionId>2cb63c08-01e0-41cd-950e-1566f18e0983"
            "</SubscriptionId><Data>a & <b c='d'/>&#x13;e</Data></OnData></Body></Envelope>");
}

TEST_F(RemoteDataMessagesTest, EscapeThePath) {
  std::string const path = "/Zelv/A[b='1' and c<\"2\"]&";
  std::string const escaped = "<XPath>/Zelv/A[b=&apos;1&apos; and c&lt;&quot;2&quot;]&amp;</XPath>";
  EXPECT_NE(messages.requestData(GUID(cId), path).find(escaped), std::string::npos);
  EXPECT_NE(messages.subscribeData(GUID(cId), path).find(escaped), std::string::npos);
}

TEST_F(RemoteDataMessagesTest, HaveAnIdentifierOfTheirOwnEach) {
  EXPECT_NE(messages.unsubscribeData(GUID(cId)), messages.unsubscribeData(GUID(cId)));
}

TEST(RemoteDataMessages, HaveEmptyElementsBeforeTheSettingsAreKnown) {
  EXPECT_EQ(RawDevice::withoutMessageId(RemoteDataMessages().requestData(GUID(cId), "/Zelv/A")),
            "<Envelope><Header><SenderID></SenderID><MessageID>#</MessageID><From></From>"
            "<NotifyTo></NotifyTo></Header><Body><RequestData><TransactionId>"
            "2cb63c08-01e0-41cd-950e-1566f18e0983</TransactionId><XPath>/Zelv/A</XPath>"
            "</RequestData></Body></Envelope>");
}

}  // namespace
}  // namespace Zelv::Controller
