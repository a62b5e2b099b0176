#include "zelv/infrastructure/XPathParser.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelv::Infrastructure {

namespace {

bool isDirect(std::string const& aText) {
  XPathPlan plan;
  return XPathParser(aText, plan).parse();
}

std::string repeat(std::string const& aText, std::size_t aTimes) {
  std::string text;
  for (; aTimes > 0; --aTimes) {
    text += aText;
  }
  return text;
}

TEST(XPathParser, PlansWhatTheSystemAsksMost) {
  for (char const* const text :
       {"/a", "/a/b/text()", "/a/*[2]/@ID", "/a/b[@ID='x']/c/text()", "/a/b[@src]",
        "/a/b[@extension=\"x\"]", "/a/b/c[text()='1']/parent::*/d/text()",
        "/a/*/b[text()<1000]/parent::*/@ID", "/a/b[@d='2']/c[text()='1']/parent::*/e",
        "/u:Introduce/DeviceId/text()", "/a/b/node()", "//*[@ID='x']", "//*[@ID='x']/Name/text()",
        "/a/b[@c='1' and @d='2']/e", "/a/b[c='1']/d[text()='2']", "a/b", "@x"}) {
    EXPECT_TRUE(isDirect(text)) << text;
  }
}

TEST(XPathParser, LeavesOtherExpressionsAlone) {
  for (char const* const text : {"",
                                 "/",
                                 "//",
                                 ".",
                                 "..",
                                 "/a/..",
                                 "/a/.",
                                 "/a|/b",
                                 "(/a)",
                                 "/a/descendant::b",
                                 "/a/child::b",
                                 "/a/parent::b",
                                 "/a/@*",
                                 "/a/comment()",
                                 "/a[last()]",
                                 "/a[b or c]",
                                 "/a[not(b)]",
                                 "/a['1'=@b]",
                                 "/a[@b=@c]",
                                 "/a[@b=1+1]",
                                 "/a[b/c]",
                                 "/a[*]",
                                 "/a[.='x']",
                                 "/a/text()[1]",
                                 "/a/text()/parent::*",
                                 "/a/@b/parent::*",
                                 "/a/@b[1]",
                                 "/a:b:c",
                                 "/a:*",
                                 "//text()",
                                 "//@ID",
                                 "//a//b",
                                 "//a[1]",
                                 "//parent::*",
                                 "//a/parent::*",
                                 "//a/b/parent::*/parent::*",
                                 "/@xmlns",
                                 "/a[@xmlns:u]",
                                 "1",
                                 "'a'",
                                 "/a[1.5]",
                                 "/a[@b and 1]",
                                 "/a[@b='1'=1]"}) {
    EXPECT_FALSE(isDirect(text)) << text;
  }
}

TEST(XPathParser, AllowsBlanksBetweenTokensOnly) {
  EXPECT_TRUE(isDirect(" / a [ @b = 'x' and c ] / parent :: * / text ( ) "));
  EXPECT_TRUE(isDirect("/a[text()\t<=\n5]"));
  EXPECT_FALSE(isDirect("/ /a"));
  EXPECT_FALSE(isDirect("/a b"));
  EXPECT_FALSE(isDirect("/a[@b ! = 'x']"));
}

TEST(XPathParser, PlansAsManyStepsAsFit) {
  EXPECT_TRUE(isDirect(repeat("/a", XPathPlan::maximumSteps)));
  EXPECT_FALSE(isDirect(repeat("/a", XPathPlan::maximumSteps + 1)));
}

TEST(XPathParser, PlansAsManyTestsAsFit) {
  EXPECT_TRUE(isDirect("/a" + repeat("[@b]", XPathPlan::maximumTests)));
  EXPECT_FALSE(isDirect("/a" + repeat("[@b]", XPathPlan::maximumTests + 1)));
  EXPECT_FALSE(isDirect("/a[@b" + repeat(" and @b", XPathPlan::maximumTests) + "]"));
}

TEST(XPathParser, KnowsThatOneChildSufficesForItsParent) {
  XPathPlan plan;
  ASSERT_TRUE(XPathParser("/a/b[text()='1']/parent::*/c", plan).parse());
  EXPECT_FALSE(plan.steps[0].firstSuffices);
  EXPECT_TRUE(plan.steps[1].firstSuffices);
  EXPECT_FALSE(plan.steps[3].firstSuffices);
}

}  // namespace

}  // namespace Zelv::Infrastructure
