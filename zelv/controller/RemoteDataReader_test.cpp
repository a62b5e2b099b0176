#include "zelv/controller/RemoteDataReader.h"

#include <gtest/gtest.h>

#include <string>

#include "zelv/controller/testing/RawDevice.h"
#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Testing::RawDevice;

char const cId[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";

class RemoteDataReaderTest : public ::testing::Test {
 protected:
  static RemoteDataReader withHeader(std::string const& aHeader) {
    return RemoteDataReader(RawDevice::envelope(aHeader, ""));
  }
  static RemoteDataReader withBody(std::string const& aBody) {
    return RemoteDataReader(RawDevice::envelope("", aBody));
  }
  static std::optional<std::string> pathOf(std::string const& aText) {
    return RemoteDataReader(RawDevice::setData(aText, "x")).path("SetData");
  }

  LogCapture log;
};

TEST_F(RemoteDataReaderTest, KnowsATextThatIsNoDocument) {
  EXPECT_FALSE(RemoteDataReader("").isLoaded());
  EXPECT_FALSE(RemoteDataReader("text\n").isLoaded());
  EXPECT_TRUE(RemoteDataReader("<Envelope/>\n").isLoaded());
}

TEST_F(RemoteDataReaderTest, TakesTheFirstElementOfTheBodyForTheType) {
  EXPECT_EQ(withBody("<OnData/><SetData/>").type(), "OnData");
  EXPECT_EQ(withBody("").type(), "");
  EXPECT_EQ(RemoteDataReader("<Else/>").type(), "");
}

TEST_F(RemoteDataReaderTest, ReadsTheSender) {
  EXPECT_EQ(withHeader("<SenderID>a&amp;b</SenderID>").senderId(), "a&b");
  EXPECT_EQ(withHeader("").boundedSenderId(), "");
  std::string const longest(RemoteDataReader::cDeviceIdLength, 'x');
  EXPECT_EQ(withHeader("<SenderID>" + longest + "</SenderID>").boundedSenderId(), longest);
  EXPECT_FALSE(withHeader("<SenderID>x" + longest + "</SenderID>").boundedSenderId());
}

TEST_F(RemoteDataReaderTest, ReadsWhereAnswersGo) {
  for (char const* url : {"tcp://192.0.2.7:80/", "udp://192.0.2.7:80/", "tcp://192.0.2.7:/"}) {
    auto const read = withHeader(std::string("<NotifyTo>") + url + "</NotifyTo>").notifyTo();
    ASSERT_TRUE(read) << url;
    EXPECT_EQ(read->toString(), url);
  }
  for (char const* url :
       {"", "x", "tcp:", "tcp://192.0.2.7", "tcp://192.0.2.7/", "udp://224.0.0.1:80/",
        "udp://239.255.255.255:80/", "udp://255.255.255.255:80/", "tcp://0.0.0.0:80/"}) {
    EXPECT_FALSE(withHeader(std::string("<NotifyTo>") + url + "</NotifyTo>").notifyTo()) << url;
  }
}

TEST_F(RemoteDataReaderTest, ReadsAnAddressUpToTheLongest) {
  std::string url = "tcp://192.0.2.7:80/";
  url += std::string(RemoteDataReader::cUrlLength - url.size(), 'x');
  EXPECT_TRUE(withHeader("<NotifyTo>" + url + "</NotifyTo>").notifyTo());
  EXPECT_FALSE(withHeader("<NotifyTo>" + url + "x</NotifyTo>").notifyTo());
}

TEST_F(RemoteDataReaderTest, ReadsIdentifiersOfTheElementOfTheirType) {
  std::string const id = std::string("<SubscriptionId>") + cId + "</SubscriptionId>";
  auto const read = withBody("<OnData>" + id + "</OnData>").subscriptionId("OnData");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->toString(), cId);
  EXPECT_FALSE(withBody("<OnData>" + id + "</OnData>").subscriptionId("SubscribeData"));
  EXPECT_FALSE(withBody("<OnData/>").transactionId());
  EXPECT_TRUE(withBody(std::string("<RequestData><TransactionId>{") + cId +
                       "}</TransactionId></RequestData>")
                  .transactionId());
}

TEST_F(RemoteDataReaderTest, BringsPathsIntoLocalForm) {
  EXPECT_EQ(pathOf("/Zelv/A"), "/Zelv/A");
  EXPECT_EQ(pathOf("/Zelv/"), "/Zelv/");
  EXPECT_EQ(pathOf("/Zelv[@DeviceId='x']/A"), "/Zelv/A");
  EXPECT_EQ(pathOf("/Zelv/A[b=&apos;]&apos;]"), "/Zelv/A[b=']']");
  EXPECT_EQ(pathOf("/Zelv/A&amp;lt;"), "/Zelv/A<");
}

TEST_F(RemoteDataReaderTest, GivesNoPathThatIsNotOfThisDevice) {
  for (char const* path : {"", "/", "/Zelv", "A", "/Else/A", "/Zelv[@DeviceId='x']", "/Zelv/A[",
                           "/Zelv/A[b][c", "/Zelv/A]["}) {
    log.clear();
    EXPECT_FALSE(pathOf(path)) << path;
    EXPECT_TRUE(log.has(PCRealDebug::Error, std::string("RemoteDataController::onMessage: XPath "
                                                        "'") +
                                                path + "' is not a path of this device."))
        << log.dump();
  }
}

TEST_F(RemoteDataReaderTest, ReadsAPathUpToTheLongest) {
  std::string const longest = "/Zelv/" + std::string(RemoteDataReader::cPathLength - 6, 'x');
  EXPECT_EQ(pathOf(longest), longest);
  EXPECT_FALSE(pathOf(longest + "x"));
}

TEST_F(RemoteDataReaderTest, ReadsWhatStandsInAValue) {
  auto const value = [](std::string const& aData) {
    return withBody("<OnData>" + aData + "</OnData>").value();
  };
  EXPECT_EQ(value("<Data>x</Data>"), "x");
  EXPECT_EQ(value("<Data><a b='c'/></Data>"), "<a b='c'/>");
  EXPECT_EQ(value("<Data><a/><b/></Data>"), "<a/>&#x13;<b/>");
  EXPECT_EQ(value("<Data/>"), "");
  EXPECT_EQ(value(""), "");
}

TEST_F(RemoteDataReaderTest, CutsTheTagsOfANewValueByPosition) {
  auto const value = [](std::string const& aData) {
    return withBody("<SetData>" + aData + "</SetData>").newValue();
  };
  EXPECT_EQ(value("<Data>x</Data>"), "x");
  EXPECT_EQ(value("<Data><a/><b/></Data>"), "<a/><b/>");
  EXPECT_EQ(value("<Data></Data>"), "");
  EXPECT_EQ(value("<Data/>"), "");
  EXPECT_EQ(value("<Data a='b'>x</Data>"), "a='b'>x");
  EXPECT_EQ(value(""), std::nullopt);
}

}  // namespace
}  // namespace Zelv::Controller
