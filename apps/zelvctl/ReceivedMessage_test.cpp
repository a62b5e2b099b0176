#include "apps/zelvctl/ReceivedMessage.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

char const* const kId = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";

std::string envelope(std::string const& aHeader, std::string const& aBody) {
  return "<Envelope><Header>" + aHeader + "</Header><Body>" + aBody + "</Body></Envelope>\n";
}

std::string onData(std::string const& aValue) {
  return envelope("", "<OnData><SubscriptionId>" + std::string(kId) + "</SubscriptionId><Data>" +
                          aValue + "</Data></OnData>");
}

TEST(ReceivedMessage, IsReadByNamesNotByOrder) {
  std::string const text =
      envelope("<ReplyTo>tcp://10.77.0.1:4448/</ReplyTo><SenderID>tv</SenderID><MessageID>{" +
                   std::string(kId) + "}</MessageID>",
               " <Echo a='b'>hi &amp; <c/></Echo>");
  ReceivedMessage message(text);
  EXPECT_EQ(message.type(), "Echo");
  EXPECT_EQ(message.senderId(), "tv");
  EXPECT_EQ(message.messageId(), kId);
  EXPECT_FALSE(message.isAnswer());
  EXPECT_EQ(message.replyTo()->toString(), "tcp://10.77.0.1:4448/");
  EXPECT_EQ(message.body(), " <Echo a='b'>hi &amp; <c/></Echo>") << "exactly as it was sent";
}

TEST(ReceivedMessage, IsAnAnswerWhenItRelatesToAnything) {
  std::string const text = envelope("<RelatesTo>" + std::string(kId) + "</RelatesTo>", "yes");
  std::string const odd = envelope("<RelatesTo>x</RelatesTo>", "yes");
  EXPECT_TRUE(ReceivedMessage(text).isAnswer());
  EXPECT_EQ(ReceivedMessage(text).relatesTo(), kId);
  EXPECT_EQ(ReceivedMessage(text).body(), "yes");
  EXPECT_TRUE(ReceivedMessage(odd).isAnswer());
  EXPECT_EQ(ReceivedMessage(odd).relatesTo(), "");
}

TEST(ReceivedMessage, HoldsAValueAsApplicationsGetIt) {
  struct {
    char const* sent;
    char const* read;
  } const rows[] = {
      {"text", "text"},
      {"", ""},
      {"Tom &amp; Ann", "Tom & Ann"},
      {"<a b='1'><c>x</c></a>", "<a b='1'><c>x</c></a>"},
      {"<a/><b/>", "<a/>&#x13;<b/>"},
      {"one&#x13;two", "one&#x13;two"},
  };
  for (auto const& row : rows) {
    std::string const text = onData(row.sent);
    ReceivedMessage message(text);
    EXPECT_EQ(message.type(), "OnData");
    EXPECT_EQ(message.subscriptionId(), kId);
    EXPECT_EQ(message.data(), row.read) << row.sent;
  }
}

TEST(ReceivedMessage, IsEmptyWhereItCannotBeRead) {
  for (char const* text : {"", "\n", "no XML", "<", "<Envelope>", "<Envelope><Body>",
                           "</Body><Body>", "<OnData><Data>x</Data></OnData>"}) {
    std::string const held = text;
    ReceivedMessage message(held);
    EXPECT_EQ(message.type(), "") << text;
    EXPECT_EQ(message.messageId(), "") << text;
    EXPECT_EQ(message.subscriptionId(), "") << text;
    EXPECT_EQ(message.data(), "") << text;
    EXPECT_EQ(message.body(), "") << text;
    EXPECT_FALSE(message.replyTo()) << text;
    EXPECT_FALSE(message.isAnswer()) << text;
  }
}

}  // namespace
}  // namespace ZelvCtl
