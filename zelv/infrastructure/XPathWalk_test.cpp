#include "zelv/infrastructure/XPathWalk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "zelv/infrastructure/XPathParser.h"
#include "zelv/infrastructure/testing/XPathAnswers.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Infrastructure {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::XPathAnswers;

/// Walks one expression with a budget.
class Walked {
 public:
  Walked(std::string const& aXml, std::string aExpression, std::uint64_t aBudget)
      : mExpression(std::move(aExpression)) {
    mDocument.Parse(aXml.c_str());
    EXPECT_TRUE(XPathParser(mExpression, mPlan).parse()) << mExpression;
    mWhole = XPathWalk(mPlan, mResult, aBudget).run(&mDocument);
  }

  bool whole() const { return mWhole; }
  std::size_t matches() const { return mResult.size(); }

 private:
  std::string mExpression;
  TiXmlDocument mDocument;
  XPathPlan mPlan;
  XPathResult mResult;
  bool mWhole = false;
};

TEST(XPathWalk, LooksAtNoMoreNodesThanItsBudget) {
  char const* const xml = "<a><b/><b/><b/></a>";
  EXPECT_TRUE(Walked(xml, "/a/b", 4).whole());
  EXPECT_EQ(Walked(xml, "/a/b", 4).matches(), 3U);
  EXPECT_FALSE(Walked(xml, "/a/b", 3).whole());
  EXPECT_TRUE(Walked(xml, "//b", 4).whole());
  EXPECT_FALSE(Walked(xml, "//b", 3).whole());
  EXPECT_TRUE(Walked(xml, "/a/node()", 4).whole());
  EXPECT_FALSE(Walked(xml, "/a/node()", 3).whole());
  EXPECT_TRUE(Walked(xml, "/a[b='x']", 4).whole());
  EXPECT_FALSE(Walked(xml, "/a[b='x']", 3).whole());
  EXPECT_TRUE(Walked(xml, "/a/*[4]", 4).whole());
  EXPECT_FALSE(Walked(xml, "/a/*[4]", 3).whole());
}

TEST(XPathWalk, StopsAtThePositionThatWasAskedFor) {
  std::string xml = "<a>";
  for (int count = 0; count < 1000; ++count) {
    xml += "<b/>";
  }
  EXPECT_TRUE(Walked(xml + "</a>", "/a/*[2]", 3).whole());
}

TEST(XPathWalk, GoesToAParentOnceForAllItsChildren) {
  XPathAnswers tree("<a><b><c/><c/></b><b><d/></b><b><c/></b></a>");
  EXPECT_THAT(tree.of("/a/b/c/parent::*"), ElementsAre("b", "b"));
  EXPECT_THAT(tree.of("/a/b/c/parent::*/parent::*"), ElementsAre("a"));
  EXPECT_THAT(tree.of("/a/b/parent::*/b/parent::*/b/c"), ElementsAre("c", "c", "c"));
}

TEST(XPathWalk, RestoresDocumentOrderBelowNestedMatches) {
  XPathAnswers tree(
      "<a i='1'><x>1</x><a i='2'><x>2</x><a i='3'><x>3</x></a><x>4</x></a><x>5</x></a>");
  EXPECT_THAT(tree.of("//a/x/text()"), ElementsAre("'1'", "'2'", "'3'", "'4'", "'5'"));
  EXPECT_THAT(tree.of("//a/@i"), ElementsAre("@i=1", "@i=2", "@i=3"));
  EXPECT_THAT(tree.of("//a[@i='2']/x/text()"), ElementsAre("'2'", "'4'"));
}

TEST(XPathWalk, ComparesEachTextOfAnElement) {
  XPathAnswers tree("<a><b>x<c/>y</b><b>1<c/>2</b></a>");
  EXPECT_THAT(tree.of("/a/b[text()='y']/text()"), ElementsAre("'x'", "'y'"));
  EXPECT_THAT(tree.of("/a/b[text()!='y']/text()"), ElementsAre("'x'", "'y'", "'1'", "'2'"));
  EXPECT_THAT(tree.of("/a/b[text()>1]/text()"), ElementsAre("'1'", "'2'"));
  EXPECT_THAT(tree.of("/a/b[text()='xy']"), IsEmpty());
}

TEST(XPathWalk, ComparesAllTextOfAChildAtOnce) {
  XPathAnswers tree("<a><b>1<c>2<d><![CDATA[3]]></d></c></b><b/></a>");
  EXPECT_THAT(tree.of("/a[b='123']"), ElementsAre("a"));
  EXPECT_THAT(tree.of("/a[b=123]"), ElementsAre("a"));
  EXPECT_THAT(tree.of("/a[b='']"), ElementsAre("a"));
  EXPECT_THAT(tree.of("/a[b='12']"), IsEmpty());
}

TEST(XPathWalk, FindsEqualTextInCdata) {
  XPathAnswers tree("<a><b><![CDATA[x]]></b></a>");
  EXPECT_THAT(tree.of("/a/b[text()='x']/text()"), ElementsAre("'x'"));
}

TEST(XPathWalk, FindsNoTextThatHoldsANulByItsBeginning) {
  XPathAnswers tree("<a><b/></a>");
  tree.document().RootElement()->FirstChild()->LinkEndChild(new TiXmlText(std::string("x\0y", 3)));
  EXPECT_THAT(tree.of("/a/b[text()='x']"), IsEmpty());
  EXPECT_THAT(tree.ofMirror("/a/b[text()='x']"), IsEmpty());
}

// Looks 31 times at aWidth children: 16 times for the tests of "a", 15 times to find "c".
XPathAnswers::List lookOften(int aWidth) {
  XPathAnswers tree("<a/>");
  TiXmlElement* const top = tree.document().RootElement();
  for (int count = 0; count < aWidth; ++count) {
    top->LinkEndChild(new TiXmlElement("b"));
  }
  top->LastChild()->LinkEndChild(new TiXmlText("x"));
  top->LinkEndChild(new TiXmlElement("c"));
  std::string expression = "/a[b='x'";
  for (int times = 0; times < 15; ++times) {
    expression += " and b='x'";
  }
  expression += "]";
  for (int times = 0; times < 15; ++times) {
    expression += "/c/parent::*";
  }
  return tree.of(expression);
}

TEST(XPathWalk, FinishesJustBelowTheLimitOfItsCost) {
  Platform::Fake::LogCapture const log;
  EXPECT_THAT(lookOften(320'000), ElementsAre("a"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(XPathWalk, HasNoResultAndAWarningJustAboveTheLimitOfItsCost) {
  Platform::Fake::LogCapture const log;
  EXPECT_THAT(lookOften(325'000), IsEmpty());
  EXPECT_THAT(log, Platform::Fake::Logged(
                       PCRealDebug::Warning,
                       "XPathExpression::evaluate: more than 10000000 nodes to look at, refused."));
}

}  // namespace

}  // namespace Zelv::Infrastructure
