#include "zelv/core/AssetRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/core/testing/AssetProviderTest.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::Logged;
using Testing::AssetProviderTest;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Testing::RecordedParts;
using ::testing::SizeIs;

std::string request(std::string const& aContent) {
  return "<AssetRequest ID='r'>" + aContent + "</AssetRequest>";
}

/// What RecordedParts notes of a text.
std::string text(std::string const& aTag, std::string const& aXml) {
  return "text <RequestContents requestID='r'>" + aTag + aXml +
         "</AssetContents></RequestContents>";
}

constexpr char const* cFailure = "text <RequestContents error='true' requestID='r' />";

class AssetRequestTest : public AssetProviderTest {
 protected:
  /// Two packages beside the built-in one.
  AssetRequestTest() {
    run("<Secret src='secret' ID='s'/>");
    load("p", "<a src='a.png' ID='1'/><b src='x/b.png' ID='2'/>", "p/");
    load("q", "<a src='a.jpg' ID='3'/><deep><c src='c.gif' ID='4'/></deep>", "/q/");
    log.clear();
  }

  static constexpr char const* cA = "<a src='a.png' ID='1'/>";
  static constexpr char const* cB = "<b src='x/b.png' ID='2'/>";
  static constexpr char const* cQ =
      "<AssetPackage ID='id of q' name='q' path='/q/'><a src='a.jpg' ID='3'/><deep><c src='c.gif' "
      "ID='4'/></deep></AssetPackage>";
};

// What can be asked for.

TEST_F(AssetRequestTest, FindsTheBuiltInImage) {
  EXPECT_EQ(ask(request("<Asset name='TVImage' />")), 0);
  EXPECT_THAT(parts.calls,
              ElementsAre(text("<AssetContents type='asset' name='TVImage' >",
                               "<TVImage src='tv.png' ID='A2CE030A-73DC-4c39-958B-E76657A31530'/>"),
                          "files tv.png|tv.png|A2CE030A-73DC-4c39-958B-E76657A31530 last"));
}

TEST_F(AssetRequestTest, FindsAWholePackageByName) {
  EXPECT_EQ(ask(request("<Package name='q'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='package' name='q' >", cQ),
                                       "files a.jpg|/q/a.jpg|3 c.gif|/q/c.gif|4 last"));
}

TEST_F(AssetRequestTest, FindsAWholePackageByID) {
  EXPECT_EQ(ask(request("<Package ID='id of q'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='package' ID='id of q' >", cQ),
                                       "files a.jpg|/q/a.jpg|3 c.gif|/q/c.gif|4 last"));
}

TEST_F(AssetRequestTest, PrefersTheNameOfAPackage) {
  EXPECT_EQ(ask(request("<Package ID='id of q' name='none'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='package' name='none' >", "")));
}

TEST_F(AssetRequestTest, TakesTheIDOfAPackageWhoseNameIsEmpty) {
  EXPECT_EQ(ask(request("<Package ID='id of q' name=''/>")), 0);
  EXPECT_THAT(parts.calls, Contains("files a.jpg|/q/a.jpg|3 c.gif|/q/c.gif|4 last"));
}

TEST_F(AssetRequestTest, FindsAnAssetByNameInAPackage) {
  EXPECT_EQ(ask(request("<Package name='q'><Asset name='c'/></Package>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='asset' name='c' package='q' >",
                                            "<c src='c.gif' ID='4'/>"),
                                       "files c.gif|/q/c.gif|4 last"));
}

TEST_F(AssetRequestTest, FindsAnAssetByIDInAPackage) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset ID='2'/></Package>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents ID='2' package='p' >", cB),
                                       "files b.png|p/x/b.png|2 last"));
}

TEST_F(AssetRequestTest, LeavesThePackageEmptyThatWasAskedForByID) {
  EXPECT_EQ(ask(request("<Package ID='id of p'><Asset name='a'/><Asset ID='2'/></Package>")), 0);
  EXPECT_THAT(parts.calls,
              ElementsAre(text("<AssetContents type='asset' name='a' package='' >", cA),
                          "files a.png|p/a.png|1", text("<AssetContents ID='2' package='' >", cB),
                          "files b.png|p/x/b.png|2 last"));
}

TEST_F(AssetRequestTest, FindsAnAssetByIDAnywhere) {
  EXPECT_EQ(ask(request("<Asset ID='2'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='asset' ID='2' >", cB),
                                       "files b.png|p/x/b.png|2 last"));
}

TEST_F(AssetRequestTest, PrefersTheNameOfAnAsset) {
  EXPECT_EQ(ask(request("<Asset ID='2' name='none'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='asset' name='none' >", "")));
}

TEST_F(AssetRequestTest, FindsAnAssetByAPathBelowItsPackage) {
  EXPECT_EQ(ask(request("<Package name='q'><Asset name='/deep/c'/></Package>")), 0);
  EXPECT_EQ(ask(request("<Asset name='/deep/c'/>")), 0);
  EXPECT_EQ(ask(request("<Asset name='//c'/>")), 0);
  EXPECT_EQ(ask(request("<Asset name='/c'/>")), 0);
  EXPECT_THAT(
      parts.calls,
      ElementsAre(text("<AssetContents type='asset' name='/deep/c' package='q' >",
                       "<c src='c.gif' ID='4'/>"),
                  "files c.gif|/q/c.gif|4 last",
                  text("<AssetContents type='asset' name='/deep/c' >", "<c src='c.gif' ID='4'/>"),
                  "files c.gif|/q/c.gif|4 last",
                  text("<AssetContents type='asset' name='//c' >", "<c src='c.gif' ID='4'/>"),
                  "files c.gif|/q/c.gif|4 last",
                  text("<AssetContents type='asset' name='/c' >", "")));
}

// The directory is that of the first package, for all of them. Whoever gives two assets one name
// puts their files beside each other, and names both in both packages.
TEST_F(AssetRequestTest, TakesTheDirectoryOfTheFirstPackageThatHasTheName) {
  EXPECT_EQ(ask(request("<Asset name='a'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='asset' name='a' >",
                                            std::string(cA) + "&#x13;<a src='a.jpg' ID='3'/>"),
                                       "files a.png|p/a.png|1 a.jpg|p/a.jpg|3|refused last"));
}

TEST_F(AssetRequestTest, OpensAFileInTheDirectoryOfTheFirstPackageThatNamesIt) {
  load("o", "<other src='a.jpg' ID='8'/>", "p/");
  EXPECT_EQ(ask(request("<Asset name='a'/>")), 0);
  EXPECT_EQ(parts.calls.back(), "files a.png|p/a.png|1 a.jpg|p/a.jpg|3 last");
}

TEST_F(AssetRequestTest, OpensNoFileThatIsPutTogetherFromTwoPackages) {
  load("root", "<x src='none' ID='8'/>", "/etc/");
  load("source", "<y src='shadow' ID='9'/>", "");
  for (char const* name : {"/*[@ID='8' or @ID='9']", "//*", "/x/@src | //y", "x|//y"}) {
    parts.calls.clear();
    ask(request("<Asset name=\"" + std::string(name) + "\"/>"));
    EXPECT_THAT(parts.calls, Not(Contains(HasSubstr("/etc/shadow|9 ")))) << name;
    EXPECT_THAT(parts.calls, Not(Contains(HasSubstr("noneshadow")))) << name;
  }
}

// The result is no longer escaped, so that such a source is cut at the mark.
TEST_F(AssetRequestTest, OpensNoFileWhoseNameWasCut) {
  load("cut", "<x ID='9' src=\"it's\"/>");
  ask(request("<Package name='cut'/>"));
  EXPECT_THAT(parts.calls, Not(Contains("files it|it|9 last")));
}

TEST_F(AssetRequestTest, TakesThePathInTheDocumentAndNotTheOneOfLoading) {
  EXPECT_EQ(ask(request("<Package name='test'/>")), 0);
  EXPECT_EQ(parts.calls.back(), "files tv.png|tv.png|A2CE030A-73DC-4c39-958B-E76657A31530 last");
}

TEST_F(AssetRequestTest, MakesThePathOfAPackageWithoutOneTheSourceItself) {
  load("e", "<e src='e/e.png' ID='5'/>", "");
  EXPECT_EQ(ask(request("<Asset ID='5'/>")), 0);
  EXPECT_EQ(parts.calls.back(), "files e.png|e/e.png|5 last");
}

TEST_F(AssetRequestTest, SendsAssetsWithinAnAssetToo) {
  load("n", "<o src='o' ID='6'><i src='i' ID='7'/></o>");
  EXPECT_EQ(ask(request("<Asset name='o'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='asset' name='o' >",
                                            "<o src='o' ID='6'><i src='i' ID='7'/></o>"),
                                       "files o|o|6 i|i|7 last"));
}

TEST_F(AssetRequestTest, AnswersForWhatIsNotThereWithAnEmptyElement) {
  EXPECT_EQ(ask(request("<Package name='none'/><Package ID='none'><Asset name='a'/></Package>"
                        "<Asset name='none'/><Asset ID='none'/>")),
            0);
  EXPECT_THAT(parts.calls,
              ElementsAre(text("<AssetContents type='package' name='none' >", ""),
                          text("<AssetContents type='asset' name='a' package='' >", ""),
                          text("<AssetContents type='asset' name='none' >", ""),
                          text("<AssetContents type='asset' ID='none' >", "")));
}

TEST_F(AssetRequestTest, AnswersForAPackageWithoutAssetsWithAnEmptyElement) {
  load("empty", "<folder/>");
  EXPECT_EQ(ask(request("<Package name='empty'/>")), 0);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='package' name='empty' >", "")));
}

// Order, and the flag.

TEST_F(AssetRequestTest, AnswersPackagesBeforeAssetsAndFlagsTheVeryLast) {
  EXPECT_EQ(ask(request("<Asset ID='1'/><Package name='q'/><Asset ID='2'/><Package name='p'/>")),
            0);
  EXPECT_THAT(parts.calls, SizeIs(8));
  EXPECT_EQ(parts.calls[1], "files a.jpg|/q/a.jpg|3 c.gif|/q/c.gif|4");
  EXPECT_EQ(parts.calls[3], "files a.png|p/a.png|1 b.png|p/x/b.png|2");
  EXPECT_EQ(parts.calls[5], "files a.png|p/a.png|1");
  EXPECT_EQ(parts.calls[7], "files b.png|p/x/b.png|2 last");
}

TEST_F(AssetRequestTest, FlagsTheAssetOfTheLastPackageOnly) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset name='a'/></Package>"
                        "<Package name='q'><Asset name='a'/></Package>")),
            0);
  EXPECT_THAT(parts.lasts, ElementsAre(false, true));
}

TEST_F(AssetRequestTest, AnswersNamesBeforeIDsAndFlagsTheLastID) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset ID='2'/><Asset name='a'/><Asset ID='1'/>"
                        "<Asset name='b'/></Package>")),
            0);
  EXPECT_THAT(
      parts.calls,
      ElementsAre(
          text("<AssetContents type='asset' name='a' package='p' >", cA), "files a.png|p/a.png|1",
          text("<AssetContents type='asset' name='b' package='p' >", cB), "files b.png|p/x/b.png|2",
          text("<AssetContents ID='2' package='p' >", cB), "files b.png|p/x/b.png|2",
          text("<AssetContents ID='1' package='p' >", cA), "files a.png|p/a.png|1 last"));
}

TEST_F(AssetRequestTest, FlagsTheLastNameWhenNoIDFollows) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset name='a'/><Asset name='b'/></Package>")), 0);
  EXPECT_THAT(parts.lasts, ElementsAre(false, true));
}

TEST_F(AssetRequestTest, FlagsNothingInAPackageThatIsFollowedByAnAsset) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset name='a'/></Package><Asset ID='1'/>")), 0);
  EXPECT_THAT(parts.lasts, ElementsAre(false, true));
}

TEST_F(AssetRequestTest, SkipsEmptyNamesAndIDs) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset name=''/><Asset name='a'/><Asset ID=''/>"
                        "<Asset ID='2'/></Package>")),
            0);
  EXPECT_THAT(parts.lasts, ElementsAre(false, true));
}

TEST_F(AssetRequestTest, TakesAPackageWithEmptyAssetsAlone) {
  EXPECT_EQ(ask(request("<Package name='p'><Asset name='' ID=''/></Package>")), 0);
  EXPECT_THAT(parts.calls, Contains("files a.png|p/a.png|1 b.png|p/x/b.png|2 last"));
}

TEST_F(AssetRequestTest, EchoesTheIDOfTheRequest) {
  EXPECT_EQ(ask("<AssetRequest ID='other'><Asset name='none'/></AssetRequest>"), 0);
  EXPECT_THAT(parts.texts,
              ElementsAre("<RequestContents requestID='other'><AssetContents type='asset' "
                          "name='none' ></AssetContents></RequestContents>"));
}

TEST_F(AssetRequestTest, GoesOnWhenAPartCannotBeSent) {
  parts.result = false;
  EXPECT_EQ(ask(request("<Asset ID='1'/><Asset ID='2'/>")), 0);
  EXPECT_THAT(parts.calls, SizeIs(4));
}

// Failures.

struct Failure {
  std::string request;
  std::string text;
  /// How many parts went out before.
  std::size_t parts;
};

std::string tooNested() {
  std::string text;
  for (int level = 0; level < 200; ++level) {
    text += "&lt;b&gt;";
  }
  return text;
}

class FailingAssetRequest : public AssetRequestTest,
                            public ::testing::WithParamInterface<Failure> {};

TEST_P(FailingAssetRequest, LogsWhyAndDropsTheRest) {
  EXPECT_EQ(ask(GetParam().request), -1);
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Error, GetParam().text)) << log.dump();
  EXPECT_THAT(parts.calls, SizeIs(GetParam().parts));
}

INSTANTIATE_TEST_SUITE_P(
    Requests, FailingAssetRequest,
    ::testing::Values(
        Failure{"no XML",
                "AssetProvider::handleAssetRequest() failed to read incoming message from string!: "
                "no XML\n",
                0},
        Failure{"",
                "AssetProvider::handleAssetRequest() failed to read incoming message from "
                "string!: \n",
                0},
        Failure{"<AssetRequest><Asset name='a'/></AssetRequest>",
                "AssetProvider::handleAssetRequest() failed to read request ID from HDB\n", 0},
        Failure{"<Other ID='r'><Asset name='a'/></Other>",
                "AssetProvider::handleAssetRequest() failed to read request ID from HDB\n", 0},
        Failure{request("<Other/>"),
                "AssetProvider::handleAssetRequest() no packages or assests found!\n", 0},
        Failure{
            request("<Asset ID='1'/><Asset name='a'>" + tooNested() + "</Asset><Asset ID='2'/>"),
            "AssetProvider::handleAssetRequest() parsing error, could not read asset request: "
            "<Asset name='a'>",
            2},
        Failure{request("<Package name='p'/><Package name='q'>" + tooNested() + "</Package>"),
                "AssetProvider::handleAssetRequest() parsing error, could not read asset request: "
                "<Package name='q'>",
                2},
        Failure{request("<Package name='p'/><Package/><Asset ID='1'/>"),
                "AssetProvider::handleAssetRequest() parsing error, could not read package id or "
                "name\n",
                2},
        Failure{request("<Package name='' ID=''/>"),
                "AssetProvider::handleAssetRequest() parsing error, could not read package id or "
                "name\n",
                0},
        Failure{request("<Asset ID='1'/><Asset/><Asset ID='2'/>"),
                "AssetProvider::handleAssetRequest() parsing error, asset request contained no "
                "name or id",
                2}));

TEST_F(AssetRequestTest, TellsOfAnElementWithoutIDAndDropsTheRest) {
  load("bad", "<x src='x'/>");
  EXPECT_EQ(ask(request("<Asset ID='1'/><Asset name='x'/><Asset ID='2'/>")), -1);
  EXPECT_THAT(parts.calls, ElementsAre(text("<AssetContents type='asset' ID='1' >", cA),
                                       "files a.png|p/a.png|1", cFailure));
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "KOR::AssetProvider::m_SendResponse() An error ocurred:"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "Error: could not read from HDB: try and get id from specific asset"));
}

TEST_F(AssetRequestTest, TellsOfAnElementWithAnEmptySource) {
  load("bad", "<x src='' ID='9'/>");
  EXPECT_EQ(ask(request("<Package name='bad'/><Package name='p'/>")), -1);
  EXPECT_THAT(parts.calls, ElementsAre(cFailure));
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Error: src or id was missing for element"));
}

TEST_F(AssetRequestTest, TellsOfAFailureAmongTheAssetsOfAPackage) {
  load("bad", "<x src='x'/><y src='y' ID='9'/>");
  EXPECT_EQ(ask(request("<Package name='bad'><Asset name='x'/><Asset name='y'/></Package>")), -1);
  EXPECT_THAT(parts.calls, ElementsAre(cFailure));
  EXPECT_EQ(ask(request("<Package name='bad'><Asset ID='9'/><Asset name='x'/></Package>")), -1);
  EXPECT_THAT(parts.calls, ElementsAre(cFailure, cFailure));
}

/// Reads of a branch that fail from the given one on.
class FailingReads : public ::testing::TestWithParam<int> {};

TEST_P(FailingReads, AreToldAsAFailure) {
  char const* const errors[] = {"m_SendResponse: Failed get asset chunk data!",
                                "m_SendResponse: Failed get chunk data!",
                                "m_SendResponse: Failed get path data!"};
  Platform::Fake::LogCapture const log;
  RecordedParts parts;
  int reads = 0;
  auto const read = [&reads](std::string const&, std::string& aResult) {
    aResult = "<a src='1' ID='1'/>";
    return reads++ < GetParam() ? 0 : -1;
  };
  EXPECT_EQ(AssetRequest(
                read, [](auto&) {}, parts)
                .handle(request("<Asset name='a'/>")),
            -1);
  EXPECT_THAT(parts.calls, ElementsAre(cFailure));
  EXPECT_THAT(log, Logged(PCRealDebug::Error, std::string("Error: ") + errors[GetParam()]));
}

INSTANTIATE_TEST_SUITE_P(Each, FailingReads, ::testing::Values(0, 1, 2));

TEST(AssetRequest, ReadsThreePathsForOneAsset) {
  RecordedParts parts;
  std::vector<std::string> paths;
  auto const read = [&paths](std::string const& aPath, std::string& aResult) {
    paths.push_back(aPath);
    aResult = paths.size() == 3 ? "there/&#x13;elsewhere/" : "<a src='1' ID='1'/>";
    return 0;
  };
  EXPECT_EQ(AssetRequest(
                read, [](auto&) {}, parts)
                .handle(request("<Package name='p'><Asset name='a'/>"
                                "</Package>")),
            0);
  EXPECT_THAT(paths,
              ElementsAre("/AssetPackage[@name='p']//a",
                          "/AssetPackage[@name='p']//a/descendant-or-self::*[@src]",
                          "/AssetPackage[@name='p']//a/ancestor-or-self::AssetPackage/@path"));
  EXPECT_EQ(parts.calls.back(), "files 1|there/1|1|refused last");
}

TEST(AssetRequest, ReadsOnePathForWhatIsNotThere) {
  RecordedParts parts;
  int reads = 0;
  auto const read = [&reads](std::string const&, std::string&) {
    ++reads;
    return 0;
  };
  EXPECT_EQ(AssetRequest(
                read, [](auto&) {}, parts)
                .handle(request("<Asset name='a'/>")),
            0);
  EXPECT_EQ(reads, 1);
}

// What a stranger may ask.

class HostileName : public AssetRequestTest, public ::testing::WithParamInterface<char const*> {};

TEST_P(HostileName, FindsNothing) {
  std::string const name = GetParam();
  EXPECT_EQ(ask(request("<Package name=\"" + name + "\"/><Package ID=\"" + name +
                        "\"><Asset ID='1'/><Asset name='a'/></Package><Package name='p'><Asset "
                        "name=\"" +
                        name + "\"/><Asset ID=\"" + name + "\"/></Package><Asset name=\"" + name +
                        "\"/><Asset ID=\"" + name + "\"/>")),
            0);
  EXPECT_THAT(parts.texts, SizeIs(7));
  EXPECT_THAT(parts.lasts, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Texts, HostileName,
                         ::testing::Values("x' or '1'='1", "']", "p'][@name='p", "*[@src]",
                                           "a['1'='1']", "a[1"));

TEST_F(AssetRequestTest, NeverReachesTheMainStore) {
  for (std::string const name :
       {"Secret", "/Secret", "//Secret", "/../Assets/Secret", "/..//Secret", "]/../Secret",
        "/Secret|//Secret", "//* | /Assets/*", "/ancestor::*//Secret",
        "/ancestor-or-self::node()"}) {
    ask(request("<Asset name=\"" + name + "\"/><Package name='p'><Asset name=\"" + name +
                "\"/></Package><Package name=\"" + name + "\"/>"));
  }
  ask(request("<Asset ID='s'/>"));
  EXPECT_THAT(parts.calls, Not(Contains(HasSubstr("secret"))));
}

TEST_F(AssetRequestTest, AnswersAPathThatCannotBeReadAsOneThatIsNotThere) {
  EXPECT_EQ(ask(request("<Asset name='/a[1]'/><Asset name='/a['/><Asset name='/'/>")), 0);
  EXPECT_THAT(parts.texts, SizeIs(3));
  EXPECT_THAT(parts.lasts, IsEmpty());
}

// The one who opens the file refuses it.
TEST_F(AssetRequestTest, GivesPathsThatClimbAsTheyAre) {
  load("up", "<x src='../x' ID='9'/>", "/data/");
  EXPECT_EQ(ask(request("<Asset name='x'/>")), 0);
  EXPECT_EQ(parts.calls.back(), "files x|/data/../x|9|refused last");
}

TEST_F(AssetRequestTest, GrowsItsTextsWithALongID) {
  std::string const id(256 * 1024, 'r');
  EXPECT_EQ(ask("<AssetRequest ID='" + id + "'><Asset ID='1'/></AssetRequest>"), 0);
  EXPECT_EQ(parts.texts.front(), "<RequestContents requestID='" + id +
                                     "'><AssetContents type='asset' ID='1' >" + cA +
                                     "</AssetContents></RequestContents>");
}

TEST_F(AssetRequestTest, AnswersForABoundedNumberOfThings) {
  std::string things;
  for (std::size_t count = 0; count < AssetRequest::maximumThings; ++count) {
    things += "<Asset ID='none'/>";
  }
  EXPECT_EQ(ask(request(things)), 0);
  EXPECT_THAT(parts.calls, SizeIs(AssetRequest::maximumThings));
  parts.calls.clear();
  EXPECT_EQ(ask(request(things + "<Asset ID='1'/>")), -1);
  EXPECT_THAT(parts.calls, SizeIs(AssetRequest::maximumThings + 1));
  EXPECT_EQ(parts.calls.back(), cFailure);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetRequest::answer: Request 'r' asks for more than 1024 things."));
}

TEST_F(AssetRequestTest, EndsWhenTheResponseWasGivenUp) {
  parts.reaction = [] { throw std::runtime_error("given up"); };
  EXPECT_THROW(ask(request("<Asset ID='1'/><Asset ID='2'/>")), std::runtime_error);
  EXPECT_THAT(parts.texts, SizeIs(2));
  EXPECT_THAT(parts.lasts, IsEmpty());
}

TEST_F(AssetRequestTest, GoesOnWithAPackageThatIsUnloadedMeanwhile) {
  parts.reaction = [this] { write("/AssetPackage[@name='p']", ""); };
  EXPECT_EQ(ask(request("<Package name='p'/><Package name='p'/>")), 0);
  EXPECT_THAT(parts.calls, SizeIs(3));
  EXPECT_EQ(parts.calls[1], "files a.png|p/a.png|1 b.png|p/x/b.png|2");
  EXPECT_EQ(parts.calls[2], text("<AssetContents type='package' name='p' >", ""));
}

}  // namespace
}  // namespace Zelv
