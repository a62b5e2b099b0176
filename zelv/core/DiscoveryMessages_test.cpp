#include "zelv/core/DiscoveryMessages.h"

#include <gtest/gtest.h>

#include <string>

#include "zelv/core/testing/DiscoveryTexts.h"
#include "zelv/infrastructure/GUID.h"

namespace Zelv {
namespace {

using Infrastructure::GUID;
using Testing::DiscoveryTexts;

DiscoverySettings settings() {
  DiscoverySettings settings;
  settings.mMulticastGroup = "239.255.44.46";
  settings.mMulticastPort = "4451";
  settings.mLocalInterfaceAddress = "192.0.2.1";
  settings.mLocalTvDeviceId = "my-id";
  settings.mLocalTvModel = "M1";
  settings.mLocalTvLocation = "Here";
  return settings;
}

class DiscoveryMessagesTest : public testing::Test {
 protected:
  /// The identifier of the message, which must be one.
  static std::string idOf(std::string const& aMessage) {
    std::string id = DiscoveryTexts::between(aMessage, "<MessageID>", "</MessageID>");
    EXPECT_EQ(GUID(id).toString(), id);
    return id;
  }

  static std::string header(std::string const& aMessage) {
    return "<Envelope><Header><SenderID>my-id</SenderID><MessageID>" + idOf(aMessage) +
           "</MessageID>";
  }

  static constexpr char const* cDevice =
      "<Device ID='my-id'><Name>Mine</Name><Model>M1</Model><Location>Here</Location>"
      "<Type>TV</Type><Services>"
      "<Service><Name>DataControl</Name><URL>tcp://192.0.2.1:4446/</URL></Service>"
      "<Service><Name>TVControl</Name><URL>tcp://192.0.2.1:4447/</URL></Service>"
      "<Service><Name>CommandControl</Name><URL>tcp://192.0.2.1:4448/</URL></Service>"
      "<Service><Name>InputControl</Name><URL>udp://192.0.2.1:4449/</URL></Service>"
      "<Service><Name>AssetManagement</Name><URL>http://192.0.2.1:4450/</URL></Service>"
      "</Services></Device>";
  static constexpr char const* cReplyTo = "<ReplyTo>udp://192.0.2.1:4451</ReplyTo></Header><Body>";
  static constexpr char const* cFrom = "<From>192.0.2.1</From></Header><Body>";
  static constexpr char const* cEnd = "</Body></Envelope>";

  DiscoverySettings mine = settings();
  DiscoveryMessages messages{mine};
};

TEST_F(DiscoveryMessagesTest, ProbeAsksForAnyDeviceAndSaysWhereToAnswer) {
  std::string const text = messages.probe();
  EXPECT_EQ(text, header(text) + cReplyTo +
                      "<Probe><Criteria><Device><Type>ANY</Type></Device></Criteria></Probe>" +
                      cEnd);
}

TEST_F(DiscoveryMessagesTest, ResolveNamesTheDeviceThatIsWanted) {
  std::string const text = messages.resolve("their-id");
  EXPECT_EQ(text, header(text) + cReplyTo + "<Resolve><Device ID='their-id'/></Resolve>" + cEnd);
}

TEST_F(DiscoveryMessagesTest, ByeNamesTheSet) {
  std::string const text = messages.bye();
  EXPECT_EQ(text, header(text) + cFrom + "<Bye><Device ID='my-id' /></Bye>" + cEnd);
}

TEST_F(DiscoveryMessagesTest, HeartBeatNamesTheSet) {
  std::string const text = messages.heartBeat();
  EXPECT_EQ(text, header(text) + cFrom + "<HeartBeat><Device ID='my-id' /></HeartBeat>" + cEnd);
}

TEST_F(DiscoveryMessagesTest, HelloDescribesTheSetWithItsFiveServices) {
  std::string const text = messages.hello("Mine");
  EXPECT_EQ(text, header(text) + cFrom + "<Hello>" + cDevice + "</Hello>" + cEnd);
}

TEST_F(DiscoveryMessagesTest, ProbeMatchDescribesTheSetAndNamesTheQuestion) {
  std::string const text = messages.probeMatch("Mine", "question");
  EXPECT_EQ(text, header(text) + "<From>192.0.2.1</From><RelatesTo>question</RelatesTo></Header>" +
                      "<Body><ProbeMatch>" + cDevice + "</ProbeMatch>" + cEnd);
}

TEST_F(DiscoveryMessagesTest, ResolveMatchDescribesTheSetAndNamesTheQuestion) {
  std::string const text = messages.resolveMatch("Mine", "question");
  EXPECT_EQ(text, header(text) + "<From>192.0.2.1</From><RelatesTo>question</RelatesTo></Header>" +
                      "<Body><ResolveMatch>" + cDevice + "</ResolveMatch>" + cEnd);
}

TEST_F(DiscoveryMessagesTest, EachMessageHasAnIdentifierOfItsOwn) {
  EXPECT_NE(idOf(messages.heartBeat()), idOf(messages.heartBeat()));
}

TEST_F(DiscoveryMessagesTest, NothingIsEscaped) {
  mine.mLocalTvModel = "<M&1>";
  mine.mLocalTvLocation = "\"Here'";
  EXPECT_NE(messages.hello("Tom & <3")
                .find("<Name>Tom & <3</Name><Model><M&1></Model>"
                      "<Location>\"Here'</Location>"),
            std::string::npos);
}

TEST_F(DiscoveryMessagesTest, WithoutAnAddressTheSendersPlaceAndTheHostsAreEmpty) {
  mine.mLocalInterfaceAddress = "";
  std::string const text = messages.hello("Mine");
  EXPECT_NE(text.find("<From></From>"), std::string::npos);
  EXPECT_NE(text.find("<URL>tcp://:4446/</URL>"), std::string::npos);
  EXPECT_NE(text.find("<URL>http://:4450/</URL>"), std::string::npos);
}

// With the line end that the transport adds, and names of a generous length.
TEST_F(DiscoveryMessagesTest, TheLongestMessageFitsADatagramOfReceivers) {
  mine.mLocalTvModel = std::string(200, 'm');
  mine.mLocalTvLocation = std::string(200, 'l');
  mine.mLocalInterfaceAddress = "255.255.255.255";
  EXPECT_LT(messages.resolveMatch(std::string(200, 'n'), GUID::nullGUID.toString()).size() + 1,
            4095U);
}

}  // namespace
}  // namespace Zelv
