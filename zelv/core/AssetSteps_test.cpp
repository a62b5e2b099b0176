#include "zelv/core/AssetSteps.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelv {
namespace {

TEST(AssetSteps, LooksForANameAtAnyDepth) {
  EXPECT_EQ(AssetSteps::m_ConstructAssetRequestByName("TVImage"), "//TVImage");
}

TEST(AssetSteps, LeavesANameThatIsAPath) {
  EXPECT_EQ(AssetSteps::m_ConstructAssetRequestByName("/Pictures/TVImage"), "/Pictures/TVImage");
  EXPECT_EQ(AssetSteps::m_ConstructAssetRequestByName("//TVImage"), "//TVImage");
}

TEST(AssetSteps, AddressesPackages) {
  EXPECT_EQ(AssetSteps::anyPackage(), "/AssetPackage");
  EXPECT_EQ(AssetSteps::packageByName("test"), "/AssetPackage[@name='test']");
  EXPECT_EQ(AssetSteps::packageByID("A984"), "/AssetPackage[@ID='A984']");
}

TEST(AssetSteps, AddressesAssetsInAPackage) {
  EXPECT_EQ(AssetSteps::assetByName("/AssetPackage[@name='p']", "a"),
            "/AssetPackage[@name='p']//a");
  EXPECT_EQ(AssetSteps::assetByName("/AssetPackage[@name='p']", "/b/a[@src='x']"),
            "/AssetPackage[@name='p']/b/a[@src='x']");
  EXPECT_EQ(AssetSteps::assetByID("/AssetPackage[@name='p']", "i"),
            "/AssetPackage[@name='p']//*[@ID='i']");
}

TEST(AssetSteps, AddressesNothingWithATextThatCouldMeanSomethingElse) {
  for (std::string const& text :
       {std::string("x' or '1'='1"), std::string("x\"y"), std::string("x[1"), std::string("x]"),
        std::string("a<b"), std::string("a&b"), std::string("a\nb"), std::string("a\0b", 3),
        std::string(129, 'x')}) {
    EXPECT_EQ(AssetSteps::packageByName(text), "") << text;
    EXPECT_EQ(AssetSteps::packageByID(text), "") << text;
    EXPECT_EQ(AssetSteps::assetByName("/AssetPackage", text), "") << text;
    EXPECT_EQ(AssetSteps::assetByID("/AssetPackage", text), "") << text;
  }
}

TEST(AssetSteps, AddressesNothingWithAUnionOfPaths) {
  for (char const* name :
       {"a|b", "/a|/b", "//a/@src | //b", "/a[1]|//b", "/a['x']|//b", "|", "/a]|["}) {
    EXPECT_EQ(AssetSteps::assetByName("/AssetPackage", name), "") << name;
  }
  for (char const* name : {"/a[b|c]", "/a[@t='x|y']", "/a[@t=\"x|']|\"]/b"}) {
    EXPECT_EQ(AssetSteps::assetByName("/AssetPackage", name), std::string("/AssetPackage") + name);
  }
}

// "//a" alone would be read from the main store.
TEST(AssetSteps, AddressesNothingBelowAPackageThatIsNowhere) {
  EXPECT_EQ(AssetSteps::assetByName("", "a"), "");
  EXPECT_EQ(AssetSteps::assetByName("", "/AssetPackage//a"), "");
  EXPECT_EQ(AssetSteps::assetByID("", "i"), "");
}

}  // namespace
}  // namespace Zelv
