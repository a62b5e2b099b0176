#include "apps/zelvctl/PhoneMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

Identity const identity{"me", "Tom & <Ann>", "10.77.0.3", "4451"};
PhoneMessages const messages(identity);

std::string const description =
    "<Device ID='me'><Name>Tom &amp; &lt;Ann&gt;</Name><Model>zelvctl</Model><Type>MOBILE</Type>"
    "<Services></Services></Device>";

std::string const fromHere = "<From>10.77.0.3</From>";
std::string const replyHere = "<ReplyTo>udp://10.77.0.3:4451</ReplyTo>";

TEST(PhoneMessages, StandInOneEnvelopeWithAnIdentifierOfTheirOwn) {
  struct {
    std::string message;
    std::string headerRest;
    std::string body;
  } const rows[] = {
      {messages.probe(), replyHere,
       "<Probe><Criteria><Device><Type>ANY</Type></Device></Criteria></Probe>"},
      {messages.hello(), fromHere, "<Hello>" + description + "</Hello>"},
      {messages.heartBeat(), fromHere, "<HeartBeat><Device ID='me' /></HeartBeat>"},
      {messages.bye(), fromHere, "<Bye><Device ID='me' /></Bye>"},
      {messages.resolve("you"), replyHere, "<Resolve><Device ID='you'/></Resolve>"},
      {messages.probeMatch("that"), fromHere + "<RelatesTo>that</RelatesTo>",
       "<ProbeMatch>" + description + "</ProbeMatch>"},
      {messages.resolveMatch("that"), fromHere + "<RelatesTo>that</RelatesTo>",
       "<ResolveMatch>" + description + "</ResolveMatch>"},
  };
  for (auto const& row : rows) {
    EXPECT_THAT(row.message,
                MatchesRegex("<Envelope><Header><SenderID>me</SenderID><MessageID>[0-9a-f-]{36}"
                             "</MessageID>" +
                             row.headerRest + "</Header><Body>" + row.body + "</Body></Envelope>"));
  }
  EXPECT_NE(messages.bye(), messages.bye());
}

TEST(PhoneMessages, TellWhereThePhoneTakesCommands) {
  Identity const serving{"me", "Tom", "10.77.0.3", "4451", "tcp://10.77.0.3:4448/"};
  EXPECT_THAT(PhoneMessages(serving).hello(),
              HasSubstr("<Type>MOBILE</Type><Services><Service><Name>CommandControl</Name>"
                        "<URL>tcp://10.77.0.3:4448/</URL></Service></Services></Device>"));
}

}  // namespace
}  // namespace ZelvCtl
