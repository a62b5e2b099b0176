#include "apps/zelvctl/AssetAnswer.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

std::string answer(std::string const& aAssets) {
  return "<RequestContents requestID='r1'><AssetContents type='asset' name='a' >" + aAssets +
         "</AssetContents></RequestContents>";
}

/// "name id source" of each.
std::string described(std::string const& aText) {
  AssetAnswer const read(aText);
  std::string text;
  for (Asset const& asset : read.assets()) {
    text += asset.name + " " + asset.id + " " + asset.source + ";";
  }
  return text;
}

TEST(AssetAnswer, DescribesAnAsset) {
  AssetAnswer const read(answer("<TVImage src='tv.png' ID='A2CE' />"));
  EXPECT_EQ(read.requestId(), "r1");
  EXPECT_FALSE(read.isFailure());
  EXPECT_EQ(described(answer("<TVImage src='tv.png' ID='A2CE' />")), "TVImage A2CE tv.png;");
}

TEST(AssetAnswer, DescribesAPackageWhereverItsAssetsStand) {
  EXPECT_EQ(described(answer("<AssetPackage ID='p' name='n' path=''><a ID='1' src='x/y.png'><b "
                             "src='z' ID='2'/></a><dir ID='3'><c src='w'/></dir></AssetPackage>")),
            "a 1 x/y.png;b 2 z;c  w;");
}

TEST(AssetAnswer, DescribesSeveralAssetsOfOneName) {
  EXPECT_EQ(described(answer("<a src='1' ID='1'/>&#x13;<a src='2' ID='2'/>")), "a 1 1;a 2 2;");
}

TEST(AssetAnswer, TakesTextWhoseEntitiesWereResolved) {
  EXPECT_EQ(described(answer("<a src='b & c' ID='1' title='x<y'>1 & 2 > 0</a>")), "a 1 b & c;");
}

TEST(AssetAnswer, HoldsNothingWhenNothingWasFound) {
  EXPECT_EQ(described(answer("")), "");
}

TEST(AssetAnswer, TellsOfAFailure) {
  AssetAnswer const read("<RequestContents error='true' requestID='r1' />");
  EXPECT_TRUE(read.isFailure());
  EXPECT_EQ(read.requestId(), "r1");
  EXPECT_TRUE(read.assets().empty());
}

TEST(AssetAnswer, RefusesWhatIsNoDescription) {
  for (char const* text :
       {"", "text", "<html/>", "<RequestContents>", "<RequestContents requestID='",
        "<RequestContents><AssetContents></RequestContents>"}) {
    EXPECT_THROW(AssetAnswer{text}, AssetAnswer::Malformed) << text;
  }
}

TEST(AssetAnswer, TakesAnyNesting) {
  std::string text;
  for (int level = 0; level < 100000; ++level) {
    text += "<x>";
  }
  text += "<a src='1' ID='1'/>";
  for (int level = 0; level < 100000; ++level) {
    text += "</x>";
  }
  EXPECT_EQ(described(answer(text)), "a 1 1;");
}

TEST(AssetAnswer, BoundsTheNumberOfAssets) {
  std::string assets;
  for (std::size_t count = 0; count < AssetAnswer::MaxAssets; ++count) {
    assets += "<a src=''/>";
  }
  EXPECT_EQ(AssetAnswer(answer(assets)).assets().size(), AssetAnswer::MaxAssets);
  EXPECT_THROW(AssetAnswer(answer(assets + "<a src=''/>")), AssetAnswer::Malformed);
}

}  // namespace
}  // namespace ZelvCtl
