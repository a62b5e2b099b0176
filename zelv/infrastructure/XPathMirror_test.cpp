#include "zelv/infrastructure/XPathMirror.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "zelv/infrastructure/testing/XPathAnswers.h"

namespace Zelv::Infrastructure {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::XPathAnswers;

TEST(XPathMirror, GivesTheNodesOfTheTreeItself) {
  TiXmlDocument document;
  document.Parse("<a><b x='1'>t</b></a>");
  TiXmlElement* const b = document.RootElement()->FirstChildElement();
  XPathMirror const mirror(document);
  XPathResult result;
  mirror.select("/a/b", &document, result);
  ASSERT_EQ(result.size(), 1U);
  EXPECT_EQ(result[0].node(), b);
  mirror.select("/a/b/@x", &document, result);
  ASSERT_EQ(result.size(), 1U);
  EXPECT_EQ(result[0].attribute(), b->FirstAttribute());
  EXPECT_EQ(result[0].place(), b);
  mirror.select("/", &document, result);
  ASSERT_EQ(result.size(), 1U);
  EXPECT_EQ(result[0].node(), &document);
}

TEST(XPathMirror, BeginsRelativeExpressionsAtTheContext) {
  TiXmlDocument document;
  document.Parse("<a><b><c/></b><b><d/></b></a>");
  XPathMirror const mirror(document);
  XPathResult result;
  mirror.select("*", document.RootElement()->LastChild(), result);
  EXPECT_THAT(XPathAnswers::list(result), ElementsAre("d"));
}

TEST(XPathMirror, KeepsTextsApartThatStandSideBySide) {
  XPathAnswers tree("<a>one<![CDATA[two]]></a>");
  tree.document().RootElement()->LinkEndChild(new TiXmlText(""));
  tree.document().RootElement()->LinkEndChild(new TiXmlText("three"));
  EXPECT_THAT(tree.ofMirror("/a/text()"), ElementsAre("'one'", "'two'", "''", "'three'"));
  EXPECT_THAT(tree.ofMirror("/a[.='onetwothree']"), ElementsAre("a"));
}

TEST(XPathMirror, GivesNodesOfAllKindsInDocumentOrder) {
  XPathAnswers tree("<?xml version='1.0'?><!DOCTYPE a><a><!-- c --><?pi x?><b/>t</a><!-- d -->");
  EXPECT_THAT(tree.ofMirror("/node()"), ElementsAre("?", "?", "a", "! d "));
  EXPECT_THAT(tree.ofMirror("/a/node()"), ElementsAre("! c ", "?", "b", "'t'"));
}

TEST(XPathMirror, PutsAttributesBehindTheirElementAndBeforeItsChildren) {
  XPathAnswers tree("<a x='1' y='2'><b z='3'/></a>");
  EXPECT_THAT(tree.ofMirror("//@*|//*"), ElementsAre("a", "@x=1", "@y=2", "b", "@z=3"));
  EXPECT_THAT(tree.ofMirror("/a/@y|/a/@x"), ElementsAre("@x=1", "@y=2"));
}

TEST(XPathMirror, GivesEachNodeOnce) {
  XPathAnswers tree("<a><b/><b/></a>");
  EXPECT_THAT(tree.ofMirror("/a/b/.."), ElementsAre("a"));
  EXPECT_THAT(tree.ofMirror("/a/b|//b"), ElementsAre("b", "b"));
}

TEST(XPathMirror, TakesPrefixesForPartsOfNames) {
  XPathAnswers tree("<a><u:b/><v:b/></a>");
  EXPECT_THAT(tree.ofMirror("/a/u:b"), ElementsAre("u:b"));
}

TEST(XPathMirror, FindsNoValueThatHoldsANulByItsBeginning) {
  XPathAnswers tree("<a/>");
  tree.document().RootElement()->SetAttribute(std::string("x"), std::string("1\0", 2));
  tree.document().RootElement()->LinkEndChild(new TiXmlText(std::string("2\0", 2)));
  EXPECT_THAT(tree.ofMirror("/a[@x='1']"), IsEmpty());
  EXPECT_THAT(tree.ofMirror("/a[@x=1]"), IsEmpty());
  EXPECT_THAT(tree.ofMirror("/a[.='2']"), IsEmpty());
}

TEST(XPathMirror, HasNoResultForWhatIsNoExpressionOrNoPath) {
  XPathAnswers tree("<a/>");
  for (char const* const text : {"", "/a[", "/a[unknown()]", "$x", "1", "'a'", "true()", "/a=1"}) {
    EXPECT_THAT(tree.ofMirror(text), IsEmpty()) << text;
  }
}

TEST(XPathMirror, CopiesADeepTree) {
  TiXmlDocument document;
  TiXmlNode* deepest = &document;
  for (int level = 0; level < 1000; ++level) {
    deepest = deepest->LinkEndChild(new TiXmlElement("a"));
  }
  XPathMirror const mirror(document);
  XPathResult result;
  mirror.select("//a[not(a)]", &document, result);
  ASSERT_EQ(result.size(), 1U);
  EXPECT_EQ(result[0].node(), deepest);
}

}  // namespace

}  // namespace Zelv::Infrastructure
