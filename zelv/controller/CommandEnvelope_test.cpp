#include "zelv/controller/CommandEnvelope.h"

#include <gtest/gtest.h>

namespace {

using Zelv::GUID;
using Zelv::Controller::CommandEnvelope;

GUID const cId("6ba7b810-9dad-11d1-80b4-00c04fd430c8");

TEST(CommandEnvelope, OfACommandHasThreeHeadersInOrderAndTheCommandAsItStands) {
  EXPECT_EQ(
      "<Envelope><Header><MessageID>6ba7b810-9dad-11d1-80b4-00c04fd430c8</MessageID>"
      "<SenderID>sender</SenderID><ReplyTo>tcp://192.0.2.1:4448/</ReplyTo></Header>"
      "<Body><A>1 &lt; 2 & \" '</A></Body></Envelope>",
      CommandEnvelope::command(cId, "sender", "tcp://192.0.2.1:4448/", "<A>1 &lt; 2 & \" '</A>"));
}

TEST(CommandEnvelope, HasEmptyHeadersForWhatIsNotKnownYet) {
  EXPECT_EQ(
      "<Envelope><Header><MessageID>6ba7b810-9dad-11d1-80b4-00c04fd430c8</MessageID>"
      "<SenderID></SenderID><ReplyTo></ReplyTo></Header><Body><A/></Body></Envelope>",
      CommandEnvelope::command(cId, "", "", "<A/>"));
}

TEST(CommandEnvelope, OfAReplyHasAnIdentifierOfItsOwnAndNamesWhatItAnswers) {
  std::string const one = CommandEnvelope::reply("sender", cId, "yes");
  std::string const head = "<Envelope><Header><MessageID>";
  std::string const tail =
      "</MessageID><SenderID>sender</SenderID>"
      "<RelatesTo>6ba7b810-9dad-11d1-80b4-00c04fd430c8</RelatesTo></Header>"
      "<Body>yes</Body></Envelope>";
  ASSERT_EQ(head.size() + 36 + tail.size(), one.size());
  EXPECT_EQ(head, one.substr(0, head.size()));
  EXPECT_EQ(tail, one.substr(head.size() + 36));
  EXPECT_NE(one, CommandEnvelope::reply("sender", cId, "yes"));
}

}  // namespace
