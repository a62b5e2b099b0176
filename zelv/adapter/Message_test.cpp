#include "zelv/adapter/Message.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using Zelv::Adapter::Message;

std::unique_ptr<Message> read(std::string const& aText) {
  return std::unique_ptr<Message>(Message::deserialize(aText));
}

TEST(Message, IsReadFromTheFirstElementOfHeaderAndBody) {
  auto const message = read(
      "<Envelope><Header><MessageID>1</MessageID><SenderID>2</SenderID></Header>"
      "<Body><Ping><A>b</A></Ping><Second/></Body></Envelope>\n");
  EXPECT_EQ("Ping", message->getType());
  EXPECT_EQ("<MessageID>1</MessageID>", message->getHeader());
  EXPECT_EQ("<Ping><A>b</A></Ping>", message->getBody());
}

TEST(Message, ComesOutUnescaped) {
  auto const message =
      read("<Envelope><Header><From>tcp://a&amp;b</From></Header><Body><Ping/></Body></Envelope>");
  EXPECT_EQ("<From>tcp://a&b</From>", message->getHeader());
}

TEST(Message, IsEmptyWhenTheTextDoesNotParse) {
  for (char const* text : {"", "no xml", "<", "\n"}) {
    auto const message = read(text);
    EXPECT_EQ("", message->getType());
    EXPECT_EQ("", message->getHeader());
    EXPECT_EQ("", message->getBody());
  }
}

TEST(Message, IsEmptyWhereSomethingIsMissing) {
  auto const message = read("<Envelope><Header/><Body><Ping/></Body></Envelope>");
  EXPECT_EQ("Ping", message->getType());
  EXPECT_EQ("", message->getHeader());
  EXPECT_EQ("", read("<Other/>")->getType());
}

TEST(Message, KeepsWhatItIsTold) {
  Message message;
  EXPECT_EQ("", message.getType() + message.getHeader() + message.getBody());
  message.setType("type");
  message.setHeader("header");
  message.setBody("body");
  EXPECT_EQ("type", message.getType());
  EXPECT_EQ("header", message.getHeader());
  EXPECT_EQ("body", message.getBody());
}

TEST(Message, NeverComesOutAsText) {
  Message message;
  EXPECT_EQ("", message.serialize());
  message.setType("type");
  message.setHeader("header");
  message.setBody("body");
  message.setSenderAddress("192.0.2.7");
  message.setSenderPort(4446);
  EXPECT_EQ("", message.serialize());
}

}  // namespace
