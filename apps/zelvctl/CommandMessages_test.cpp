#include "apps/zelvctl/CommandMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

using testing::MatchesRegex;

CommandMessages const messages("me");

TEST(CommandMessages, CarryACommandAndWhereItsAnswerGoes) {
  EXPECT_EQ(messages.command("id", "tcp://10.77.0.3:5000/", "<Echo>hi</Echo>"),
            "<Envelope><Header><MessageID>id</MessageID><SenderID>me</SenderID>"
            "<ReplyTo>tcp://10.77.0.3:5000/</ReplyTo></Header><Body><Echo>hi</Echo></Body>"
            "</Envelope>");
}

TEST(CommandMessages, AnswerWithAnIdentifierOfTheirOwn) {
  EXPECT_THAT(messages.answer("that", "<a>1</a>"),
              MatchesRegex("<Envelope><Header><MessageID>[0-9a-f-]{36}</MessageID>"
                           "<SenderID>me</SenderID><RelatesTo>that</RelatesTo></Header>"
                           "<Body><a>1</a></Body></Envelope>"));
  EXPECT_NE(messages.answer("that", ""), messages.answer("that", ""));
}

}  // namespace
}  // namespace ZelvCtl
