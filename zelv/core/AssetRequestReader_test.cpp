#include "zelv/core/AssetRequestReader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "zelv/core/AssetConnection.h"
#include "zelv/core/testing/AcceptedClient.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::OwnNetwork;
using Testing::AcceptedClient;

std::string postOf(std::string const& aBody, std::size_t aLength) {
  return "POST /x HTTP/1.1\r\nHost: tv\r\nContent-Type: text/xml\r\nContent-Length: " +
         std::to_string(aLength) + "\r\n\r\n" + aBody;
}

/// A reader at one end of a connection, whose client has sent all that it will send.
class AssetRequestReaderTest : public ::testing::Test {
 protected:
  AssetRequestReader::Outcome outcomeOf(std::string const& aRequest) {
    AcceptedClient accepted;
    AssetConnection connection;
    connection.adopt(accepted.socket);
    EXPECT_TRUE(accepted.client.send(aRequest));
    accepted.client.finishSending();
    return reader.read(connection);
  }

  OwnNetwork network;
  LogCapture log;
  AssetRequestReader reader;
};

TEST_F(AssetRequestReaderTest, TakesAGetForTheRequestOfTheBuiltInPicture) {
  EXPECT_EQ(outcomeOf("GET /anything HTTP/1.1\r\nHost: tv\r\n\r\n"), AssetRequestReader::Complete);
  EXPECT_TRUE(reader.isGet());
  EXPECT_TRUE(reader.isMethodAllowed());
  EXPECT_EQ(reader.getStatusText(), "202 Accepted");
  EXPECT_EQ(reader.text(),
            "<Envelope>\n"
            "  <Header>\n"
            "    <MessageID>1d53b0ef-8fa8-4112-bd92-5c2c6d664dd0</MessageID>\n"
            "    <SenderID>9fae5f5f-2dba-4f6c-b3e7-5c88160f1d6e</SenderID>\n"
            "  </Header>\n"
            "  <Body>\n"
            "    <AssetRequest ID='e3035622-f6ff-46cb-ada6-64fb3b616f08'>\n"
            "      <Asset name='TVImage' />\n"
            "    </AssetRequest>\n"
            "  </Body>\n"
            "</Envelope>\n");
}

TEST_F(AssetRequestReaderTest, TakesTheBodyOfAPostUpToItsFirstZeroByte) {
  EXPECT_EQ(outcomeOf(postOf(std::string("ab\0c", 4), 4)), AssetRequestReader::Complete);
  EXPECT_FALSE(reader.isGet());
  EXPECT_TRUE(reader.isMethodAllowed());
  EXPECT_EQ(reader.text(), "ab");
}

TEST_F(AssetRequestReaderTest, HasNoTextForAPostWithoutABody) {
  EXPECT_EQ(outcomeOf(postOf("", 0)), AssetRequestReader::Complete);
  EXPECT_EQ(reader.text(), "");
}

TEST_F(AssetRequestReaderTest, ServesNoOtherMethod) {
  EXPECT_EQ(outcomeOf("HEAD / HTTP/1.1\r\nHost: tv\r\n\r\n"), AssetRequestReader::Complete);
  EXPECT_EQ(reader.getMethod(), "HEAD");
  EXPECT_FALSE(reader.isMethodAllowed());
}

TEST_F(AssetRequestReaderTest, TellsWhyARequestIsRefused) {
  EXPECT_EQ(outcomeOf(postOf("", 524289)), AssetRequestReader::Refused);
  EXPECT_EQ(reader.getStatusText(), "501 Not Implemented");
}

TEST_F(AssetRequestReaderTest, RefusesABodyThatEndsEarly) {
  EXPECT_EQ(outcomeOf(postOf("abc", 4)), AssetRequestReader::Refused);
  EXPECT_EQ(reader.getStatusText(), "400 Bad Request");
}

TEST_F(AssetRequestReaderTest, EndsWithAClientThatGoesBeforeItsHeadersAreComplete) {
  EXPECT_EQ(outcomeOf("GET / HTTP/1.1\r\nHost: tv\r\n"), AssetRequestReader::Ended);
  EXPECT_EQ(log.count(PCRealDebug::Warning,
                      "AssetRequestHandler::startListener: Failed to receive TCP packet, "
                      "errno=Success.\n"),
            1);
}

}  // namespace
}  // namespace Zelv
