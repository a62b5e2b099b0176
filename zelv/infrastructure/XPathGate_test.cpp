#include "zelv/infrastructure/XPathGate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

#include "zelv/infrastructure/XPathExpression.h"
#include "zelv/infrastructure/XPathExtent.h"
#include "zelv/infrastructure/XPathResult.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Infrastructure {

namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::IsEmpty;

std::string repeat(std::string const& aText, std::size_t aTimes) {
  std::string text;
  for (; aTimes > 0; --aTimes) {
    text += aText;
  }
  return text;
}

std::string ofLength(std::size_t aLength) {
  std::string const around = "/a[@b='']";
  return "/a[@b='" + std::string(aLength - around.size(), 'x') + "']";
}

std::string withPredicates(std::size_t aCount) {
  return "/a" + repeat("[@b]", aCount);
}

std::string nested(std::size_t aDepth) {
  return "/a" + repeat("[b", aDepth) + repeat("]", aDepth);
}

// A path of n names separated by n slashes has 2n tokens.
std::string ofTokens(std::size_t aCount) {
  return repeat("/a", aCount / 2) + (aCount % 2 == 1 ? "/" : "");
}

/// Two texts that stand just below and just above a limit, and the line that says so.
struct Limit {
  char const* name;
  std::string below;
  std::string above;
  std::string line;
};

void PrintTo(Limit const& aLimit, std::ostream* aOut) {
  *aOut << aLimit.name;
}

class XPathGateLimit : public ::testing::TestWithParam<Limit> {};

TEST_P(XPathGateLimit, AdmitsInSilenceJustBelow) {
  LogCapture const log;
  EXPECT_TRUE(XPathGate(GetParam().below).admits());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(XPathGateLimit, RefusesWithAWarningJustAbove) {
  LogCapture const log;
  EXPECT_FALSE(XPathGate(GetParam().above).admits());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning, GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    XPathGate, XPathGateLimit,
    ::testing::Values(Limit{"Length", ofLength(2048), ofLength(2049),
                            "XPathGate::XPathGate: 2049 bytes refused, at most 2048."},
                      Limit{"Predicates", withPredicates(16), withPredicates(17),
                            "XPathGate::XPathGate: 17 predicates refused, at most 16."},
                      Limit{"Nesting", nested(4), nested(5),
                            "XPathGate::XPathGate: 5 nested predicates refused, at most 4."},
                      Limit{"Tokens", ofTokens(512), ofTokens(513),
                            "XPathGate::XPathGate: 513 tokens refused, at most 512."}),
    [](auto const& aInfo) { return aInfo.param.name; });

/// An expression and the largest document that it may be evaluated on.
struct Cost {
  char const* expression;
  std::uint64_t size;
};

void PrintTo(Cost const& aCost, std::ostream* aOut) {
  *aOut << aCost.expression;
}

class XPathGateCost : public ::testing::TestWithParam<Cost> {};

TEST_P(XPathGateCost, AdmitsADocumentJustBelow) {
  LogCapture const log;
  EXPECT_TRUE(XPathGate(GetParam().expression).admits(XPathExtent{GetParam().size, 0}));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(XPathGateCost, RefusesADocumentJustAbove) {
  LogCapture const log;
  EXPECT_FALSE(XPathGate(GetParam().expression).admits(XPathExtent{GetParam().size + 1, 0}));
  EXPECT_EQ(log.countContaining(PCRealDebug::Warning, "XPathGate::admits: estimated cost "), 1);
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Warning, " refused, at most 10000000."));
}

INSTANTIATE_TEST_SUITE_P(
    OfOneWay, XPathGateCost,
    ::testing::Values(Cost{"descendant::a", 10'000'000}, Cost{"//a/b", 10'000'000},
                      Cost{"//*[@a]", 10'000'000}, Cost{"//*[@a='1' or @b=\"2\"]", 10'000'000},
                      Cost{"//*[@a and @b>5]", 10'000'000}, Cost{"//*[@a<-5]", 10'000'000},
                      Cost{"//a[2]", 10'000'000}, Cost{"//a[.5]", 10'000'000},
                      Cost{"//a[position()<3]", 10'000'000}, Cost{"//a[last()]", 10'000'000},
                      Cost{"//a['b/c']", 10'000'000}));

INSTANTIATE_TEST_SUITE_P(
    OfNestedPaths, XPathGateCost,
    ::testing::Values(Cost{"descendant::a[b]", 3162}, Cost{"//a[*]", 3162},
                      Cost{"//a[.='x']", 3162}, Cost{"//a[..]", 3162},
                      Cost{"//a[text()='x']", 3162}, Cost{"//a[parent::b]", 3162},
                      Cost{"//a[string-length()>1]", 3162}, Cost{"//a[string( )='x']", 3162},
                      Cost{"//a[b='1' and c='2']", 3162}, Cost{"//a[b][c]", 3162},
                      Cost{"descendant::a[b[c]]", 215}, Cost{"//a[@x[b]]", 215},
                      Cost{"descendant::a[b[c[d]]]", 56}, Cost{"descendant::a[b[c[d[e]]]]", 25}));

INSTANTIATE_TEST_SUITE_P(OfNodesCompared, XPathGateCost,
                         ::testing::Values(Cost{"/a|/b", 3162}, Cost{"(/a/b)[2]", 3162},
                                           Cost{"//a/following::b", 3162},
                                           Cost{"//a/preceding-sibling::b", 3162},
                                           Cost{"//a[@x=@y]", 3162}, Cost{"//a[@x+1]", 3162},
                                           Cost{"//a[@x*2=2]", 3162}, Cost{"//a[@x div 2]", 3162},
                                           Cost{"//a[not(@x)]", 3162}, Cost{"//a[b=c]", 215},
                                           Cost{"//a[b<c]", 215}, Cost{"//a[count(b)=1]", 215},
                                           Cost{"//a[b=c[d=e]]", 56}));

TEST(XPathGate, CountsTheLevelsForSeveralStepsThroughThem) {
  XPathGate const once("//a");
  XPathGate const twice("//a/ancestor::b");
  EXPECT_TRUE(once.admits(XPathExtent{1000, 10'000'001}));
  EXPECT_TRUE(twice.admits(XPathExtent{1000, 10'000'000}));
  EXPECT_FALSE(twice.admits(XPathExtent{1000, 10'000'001}));
}

TEST(XPathGate, CountsLongPathsTwice) {
  XPathGate const fifteen(repeat("/..", 15));
  XPathGate const sixteen(repeat("/..", 16));
  EXPECT_TRUE(fifteen.admits(XPathExtent{10'000'000, 0}));
  EXPECT_TRUE(sixteen.admits(XPathExtent{5'000'000, 0}));
  EXPECT_FALSE(sixteen.admits(XPathExtent{5'000'001, 0}));
}

TEST(XPathGate, RefusesACostThatNoNumberHolds) {
  EXPECT_FALSE(XPathGate("//a[b[c[d[e]]]]").admits(XPathExtent{UINT64_MAX, UINT64_MAX}));
}

TEST(XPathGate, RefusesTheMalformedInSilence) {
  LogCapture const log;
  for (std::string const& text :
       {std::string("/a["), std::string("/a]"), std::string("/a(]"), std::string("/a[(])"),
        std::string("/a['b]"), std::string("/a[\"b]"), std::string("/a\0", 3), std::string("/\x01"),
        std::string("/a[@b='\x1B']"), std::string("/\x80"), std::string("/\xC0\xAF"),
        std::string("/\xC1\x81"), std::string("/\xE0\x80\x80"), std::string("/\xED\xA0\x80"),
        std::string("/\xF0\x80\x80\x80"), std::string("/\xF4\x90\x80\x80"), std::string("/\xF5"),
        std::string("/\xE2\x82"), std::string("/\xF0\x9F\x98")}) {
    EXPECT_FALSE(XPathGate(text).admits()) << text;
    EXPECT_FALSE(XPathGate(text).admits(XPathExtent{})) << text;
  }
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(XPathGate, AdmitsCharactersOfEveryLength) {
  EXPECT_TRUE(
      XPathGate("/\xC2\xA0/\xE0\xA0\x80/\xED\x9F\xBF/\xF0\x90\x80\x80/\xF4\x8F\xBF\xBF").admits());
}

TEST(XPathGate, TakesBracketsInLiteralsForText) {
  EXPECT_TRUE(XPathGate("/a[@b='[[[[[[']").admits());
  EXPECT_TRUE(XPathGate("/a[@b=\"]'(\"]").admits());
}

TEST(XPathGate, RefusesBracketsWithoutEnd) {
  LogCapture const log;
  EXPECT_FALSE(XPathGate(std::string(100, '[')).admits());
  EXPECT_FALSE(XPathGate(std::string(100, '(') + "/a" + std::string(100, ')')).admits());
  EXPECT_EQ(log.countContaining(PCRealDebug::Warning, " refused, at most "), 2);
}

TEST(XPathGate, LetsEvaluationGoOnAfterARefusal) {
  TiXmlDocument document;
  TiXmlElement* const top = document.LinkEndChild(new TiXmlElement("a"))->ToElement();
  // The document, its element, and 3,160 more: just what one nested path may look at.
  for (int count = 0; count < 3160; ++count) {
    top->LinkEndChild(new TiXmlElement("b"));
  }
  LogCapture const log;
  XPathExpression const expression("descendant::b[../b]");
  XPathResult result;
  expression.evaluate(top, result);
  EXPECT_EQ(result.size(), 3160U);
  EXPECT_THAT(log.lines(), IsEmpty());

  top->LinkEndChild(new TiXmlElement("b"));
  expression.evaluate(top, result);
  EXPECT_TRUE(result.empty());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "XPathGate::admits: estimated cost 10004569 refused, at most 10000000."));

  XPathExpression("/a/b").evaluate(top, result);
  EXPECT_EQ(result.size(), 3161U);
}

TEST(XPathGate, LetsLiteralsOfOrdinaryTextBeQuoted) {
  for (char const* const text : {"", "Phone of Ann", "2cb63c08-01e0-41cd-950e-1566f18e0983", "a>b",
                                 "gr\xC3\xBC\xC3\x9F", "/a/b=c!(d)"}) {
    EXPECT_TRUE(XPathGate::isQuotableLiteral(text)) << text;
  }
}

TEST(XPathGate, LetsNoLiteralBeQuotedThatCouldChangeTheMeaning) {
  for (std::string const& text :
       {std::string("it's"), std::string("\""), std::string("a[1"), std::string("]"),
        std::string("<"), std::string("&amp;"), std::string("\n"), std::string("a\0b", 3),
        std::string("\x1F"), std::string("\x7F")}) {
    EXPECT_FALSE(XPathGate::isQuotableLiteral(text)) << text;
  }
}

TEST(XPathGate, LetsLiteralsBeQuotedUpToALength) {
  EXPECT_TRUE(XPathGate::isQuotableLiteral(std::string(128, 'x')));
  EXPECT_FALSE(XPathGate::isQuotableLiteral(std::string(129, 'x')));
}

}  // namespace

}  // namespace Zelv::Infrastructure
