#include "zelv/core/AssetTexts.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelv {
namespace {

TEST(AssetTexts, PutsTagAndAssetsIntoTheResult) {
  EXPECT_EQ(AssetTexts::result("r1", "<AssetContents type='asset' name='a' >", "<a/>"),
            "<RequestContents requestID='r1'><AssetContents type='asset' name='a' ><a/>"
            "</AssetContents></RequestContents>");
}

TEST(AssetTexts, ClosesTheTagAtOnceWhenNothingWasFound) {
  EXPECT_EQ(AssetTexts::result("r1", "<AssetContents ID='i' package='' >", ""),
            "<RequestContents requestID='r1'><AssetContents ID='i' package='' ></AssetContents>"
            "</RequestContents>");
}

TEST(AssetTexts, NamesTheRequestInAFailure) {
  EXPECT_EQ(AssetTexts::failure("r1"), "<RequestContents error='true' requestID='r1' />");
}

TEST(AssetTexts, HasATagForEachKindOfQuestion) {
  EXPECT_EQ(AssetTexts::packageByName("p"), "<AssetContents type='package' name='p' >");
  EXPECT_EQ(AssetTexts::packageByID("i"), "<AssetContents type='package' ID='i' >");
  EXPECT_EQ(AssetTexts::assetByName("a", "p"),
            "<AssetContents type='asset' name='a' package='p' >");
  EXPECT_EQ(AssetTexts::assetByID("i", "p"), "<AssetContents ID='i' package='p' >");
  EXPECT_EQ(AssetTexts::assetAnywhereByName("a"), "<AssetContents type='asset' name='a' >");
  EXPECT_EQ(AssetTexts::assetAnywhereByID("i"), "<AssetContents type='asset' ID='i' >");
}

TEST(AssetTexts, LeavesThePackageEmptyThatWasAskedForByID) {
  EXPECT_EQ(AssetTexts::assetByName("a", ""), "<AssetContents type='asset' name='a' package='' >");
  EXPECT_EQ(AssetTexts::assetByID("i", ""), "<AssetContents ID='i' package='' >");
}

TEST(AssetTexts, GrowsWithWhatWasAskedAndFound) {
  std::string const id(512 * 1024, 'i');
  std::string const xml(1024 * 1024, 'x');
  EXPECT_EQ(AssetTexts::failure(id), "<RequestContents error='true' requestID='" + id + "' />");
  EXPECT_EQ(AssetTexts::result(id, AssetTexts::packageByName(id), xml),
            "<RequestContents requestID='" + id + "'><AssetContents type='package' name='" + id +
                "' >" + xml + "</AssetContents></RequestContents>");
}

TEST(AssetTexts, ReadsNoPercentSignAsAFormat) {
  EXPECT_EQ(AssetTexts::failure("%s%n"), "<RequestContents error='true' requestID='%s%n' />");
}

}  // namespace
}  // namespace Zelv
