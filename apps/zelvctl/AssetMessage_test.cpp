#include "apps/zelvctl/AssetMessage.h"

#include <gmock/gmock.h>

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;

std::string request(AssetMessage const& aMessage, std::string const& aQuestions) {
  return "<Body><AssetRequest ID='" + aMessage.requestId() + "'>" + aQuestions +
         "</AssetRequest></Body></Envelope>";
}

TEST(AssetMessage, IsAnEnvelopeOfItsSender) {
  Options options;
  options.assets = {"TVImage"};
  std::string const guid = "[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}";
  AssetMessage const message("me", options);
  EXPECT_THAT(message.requestId(), MatchesRegex(guid));
  EXPECT_THAT(message.text(), MatchesRegex("<Envelope><Header><MessageID>" + guid +
                                           "</MessageID><SenderID>me</SenderID></Header><Body>.*"));
  EXPECT_THAT(message.text(), EndsWith(request(message, "<Asset name='TVImage' />")));
  EXPECT_NE(message.requestId(), AssetMessage("me", options).requestId());
}

TEST(AssetMessage, AsksForAssetsAnywhereByNameThenByIdentifier) {
  Options options;
  options.assets = {"b", "/a[@x=\"1\"]"};
  options.assetIds = {"A2CE"};
  AssetMessage const message("me", options);
  EXPECT_THAT(message.text(),
              EndsWith(request(
                  message, "<Asset name='b' /><Asset name='/a[@x=\"1\"]' /><Asset ID='A2CE' />")));
  EXPECT_THAT(message.things(),
              ElementsAre("asset 'b'", "asset '/a[@x=\"1\"]'", "asset with the ID 'A2CE'"));
}

TEST(AssetMessage, AsksForWholePackages) {
  Options options;
  options.packages = {"test", "more"};
  options.packageIds = {"A984"};
  AssetMessage const message("me", options);
  EXPECT_THAT(message.text(),
              EndsWith(request(
                  message, "<Package name='test' /><Package name='more' /><Package ID='A984' />")));
  EXPECT_THAT(message.things(),
              ElementsAre("package 'test'", "package 'more'", "package with the ID 'A984'"));
}

TEST(AssetMessage, AsksForAssetsInAPackage) {
  Options options;
  options.packages = {"test"};
  options.assetIds = {"1"};
  options.assets = {"a", "b"};
  AssetMessage const message("me", options);
  EXPECT_THAT(message.text(), EndsWith(request(message,
                                               "<Package name='test'><Asset name='a' /><Asset "
                                               "name='b' /><Asset ID='1' /></Package>")));
  EXPECT_THAT(message.things(),
              ElementsAre("asset 'a' in package 'test'", "asset 'b' in package 'test'",
                          "asset with the ID '1' in package 'test'"));
}

TEST(AssetMessage, AsksForAssetsInAPackageOfAnIdentifier) {
  Options options;
  options.packageIds = {"A984"};
  options.assets = {"a"};
  AssetMessage const message("me", options);
  EXPECT_THAT(message.text(),
              EndsWith(request(message, "<Package ID='A984'><Asset name='a' /></Package>")));
  EXPECT_THAT(message.things(), ElementsAre("asset 'a' in package with the ID 'A984'"));
}

TEST(AssetMessage, AsksForEachThingOnce) {
  Options options;
  options.assets = {"a", "b", "a"};
  options.assetIds = {"a", "a"};
  AssetMessage const message("me", options);
  EXPECT_THAT(message.things(), ElementsAre("asset 'a'", "asset 'b'", "asset with the ID 'a'"));
}

}  // namespace
}  // namespace ZelvCtl
