#include "zelv/core/AssetFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::ElementsAre;

std::vector<std::string> filesOf(std::string const& aElements, std::string const& aRootPath) {
  std::vector<std::string> texts;
  for (AssetFileObject const& file : AssetFiles::of(aElements, aRootPath)) {
    texts.push_back(file.getFileName() + "|" + file.getPath() + "|" + file.getID());
  }
  return texts;
}

std::string failureOf(std::string const& aElements) {
  try {
    AssetFiles::of(aElements, "");
  } catch (std::runtime_error const& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST(AssetFiles, JoinsTheItemsOfAMultiStringAndCountsThem) {
  std::string text = "from before";
  EXPECT_EQ(AssetFiles::m_ConcatMultiString("<a/>&#x13;<b/>&#x13;<c/>", text), 3U);
  EXPECT_EQ(text, "<a/><b/><c/>");
  EXPECT_EQ(AssetFiles::m_ConcatMultiString("<a/>", text), 1U);
  EXPECT_EQ(text, "<a/>");
  EXPECT_EQ(AssetFiles::m_ConcatMultiString("", text), 0U);
  EXPECT_EQ(text, "");
}

TEST(AssetFiles, MakesAFileOfEachElementInOrder) {
  EXPECT_THAT(filesOf("<b src=\"two.png\" ID=\"2\"/>&#x13;<a src='one.png' ID='1'/>", ""),
              ElementsAre("two.png|two.png|2", "one.png|one.png|1"));
}

TEST(AssetFiles, TakesTheNameBehindTheLastSlash) {
  EXPECT_THAT(filesOf("<a src='x/y/one.png' ID='1'/>", ""), ElementsAre("one.png|x/y/one.png|1"));
}

TEST(AssetFiles, TakesAllOfASourceThatEndsInASlash) {
  EXPECT_THAT(filesOf("<a src='x/y/' ID='1'/>", ""), ElementsAre("x/y/|x/y/|1"));
}

TEST(AssetFiles, PutsTheRootPathInFrontAsItIs) {
  EXPECT_THAT(filesOf("<a src='one.png' ID='1'/>", "/data/"),
              ElementsAre("one.png|/data/one.png|1"));
  EXPECT_THAT(filesOf("<a src='one.png' ID='1'/>", "/data"), ElementsAre("one.png|/dataone.png|1"));
  EXPECT_THAT(filesOf("<a src='/one.png' ID='1'/>", ""), ElementsAre("one.png|/one.png|1"));
}

TEST(AssetFiles, CountsOnlyTheElementsThemselves) {
  EXPECT_THAT(filesOf("<a src='1' ID='1'><b src='2' ID='2'/></a>&#x13;<b src='2' ID='2'/>", ""),
              ElementsAre("1|1|1", "2|2|2"));
}

TEST(AssetFiles, RefusesAnElementWithoutASource) {
  EXPECT_EQ(failureOf("<a ID='1'/>"),
            "could not read from HDB: try and get src from specific asset");
}

TEST(AssetFiles, RefusesAnElementWithoutAnID) {
  EXPECT_EQ(failureOf("<a src='1' ID='1'/>&#x13;<a src='1'/>"),
            "could not read from HDB: try and get id from specific asset");
}

TEST(AssetFiles, RefusesAnEmptySourceOrIDAndTellsTheDetails) {
  LogCapture log;
  EXPECT_EQ(failureOf("<a src='' ID='1'/>"), "src or id was missing for element");
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Details were: name: a src:  id: 1\n"));
  EXPECT_EQ(failureOf("<x/>&#x13;<b src='x' ID=''/>"),
            "could not read from HDB: try and get src from specific asset");
  EXPECT_EQ(failureOf("<b src='x' ID=''/>"), "src or id was missing for element");
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Details were: name: b src: x id: \n"));
}

TEST(AssetFiles, RefusesWhatIsNoXml) {
  EXPECT_EQ(failureOf(std::string(128, '<') + "&#x13;<a/>").substr(0, 9), "could not");
  std::string nested;
  for (int level = 0; level < 200; ++level) {
    nested += "<a src='1' ID='1'>";
  }
  EXPECT_EQ(failureOf(nested), "could not read xml data!");
}

TEST(AssetFiles, MakesAsManyAsAPackageHasAndNoMoreThanTheBound) {
  std::string const element = "<a src='1' ID='1'/>";
  std::string text = element;
  for (std::size_t count = 1; count < AssetFiles::maximumFiles; ++count) {
    text += "&#x13;" + element;
  }
  EXPECT_EQ(AssetFiles::of(text, "").size(), AssetFiles::maximumFiles);
  EXPECT_EQ(failureOf(text + "&#x13;" + element), "too many files for one answer");
}

}  // namespace
}  // namespace Zelv
