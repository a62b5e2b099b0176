#include "zelv/infrastructure/XPathExpression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zelv/infrastructure/testing/XPathAnswers.h"

namespace Zelv::Infrastructure {

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using Testing::XPathAnswers;

char const* const devices =
    "<?xml version='1.0'?><!-- a home -->"
    "<Devices><Mobile ID='p1' on='1'><Name>Phone</Name><LastHeartBeat>5000</LastHeartBeat>"
    "<Services><Service><Name>Data</Name><Port>1</Port></Service>"
    "<Service><Name>Command</Name><Port>2</Port></Service></Services></Mobile>"
    "<Mobile ID='p2'><Name>Pad</Name><LastHeartBeat>900</LastHeartBeat></Mobile>"
    "<TV ID=\"t1\"><Name>Set</Name><!-- loud --><LastHeartBeat>900</LastHeartBeat></TV>"
    "text<u:Introduce><DeviceId>d</DeviceId></u:Introduce></Devices>";

/// An expression, what it gives, and whether it must need no copy of the document.
struct Form {
  char const* expression;
  XPathAnswers::List answers;
  bool direct;
};

void PrintTo(Form const& aForm, std::ostream* aOut) {
  *aOut << aForm.expression;
}

class XPathForms : public ::testing::TestWithParam<Form> {};

TEST_P(XPathForms, GivesItsMatchesInDocumentOrder) {
  XPathAnswers home(devices);
  XPathExpression const expression(GetParam().expression);
  EXPECT_EQ(expression.isDirect(), GetParam().direct);
  EXPECT_THAT(home.of(expression), ElementsAreArray(GetParam().answers));
  EXPECT_THAT(home.ofMirror(GetParam().expression), ElementsAreArray(GetParam().answers));
}

INSTANTIATE_TEST_SUITE_P(
    ChildSteps, XPathForms,
    ::testing::Values(
        Form{"/Devices", {"Devices"}, true}, Form{"/Devices/Mobile", {"Mobile", "Mobile"}, true},
        Form{"/Devices/*/Name/text()", {"'Phone'", "'Pad'", "'Set'"}, true},
        Form{"/*", {"Devices"}, true}, Form{"/Devices/u:Introduce/DeviceId/text()", {"'d'"}, true},
        Form{" / Devices / TV / Name ", {"Name"}, true}, Form{"/Devices/mobile", {}, true},
        Form{"/devices", {}, true}, Form{"/Devices/Introduce", {}, true}));

INSTANTIATE_TEST_SUITE_P(
    Positions, XPathForms,
    ::testing::Values(Form{"/Devices/*[2]/@ID", {"@ID=p2"}, true},
                      Form{"/Devices/*[4]", {"u:Introduce"}, true}, Form{"/Devices/*[5]", {}, true},
                      Form{"/Devices/*[0]", {}, true}, Form{"/*[1]", {"Devices"}, true},
                      Form{"/Devices/*/Services/*[2]/Port/text()", {"'2'"}, true},
                      Form{"/Devices/*[@ID][3]/@ID", {"@ID=t1"}, true},
                      Form{"/Devices/*[2][@on]/@ID", {}, true},
                      Form{"/Devices/*[ 01 ]/@ID", {"@ID=p1"}, true},
                      Form{"/Devices/*[99999999999999999999]", {}, true},
                      Form{"/Devices/*[1.5]", {}, false}, Form{"/Devices/*[-1]", {}, false},
                      Form{"/Devices/*[last()]", {"u:Introduce"}, false}));

INSTANTIATE_TEST_SUITE_P(
    Attributes, XPathForms,
    ::testing::Values(Form{"/Devices/Mobile[@ID='p2']/Name/text()", {"'Pad'"}, true},
                      Form{"/Devices/*[@ID=\"t1\"]", {"TV"}, true},
                      Form{"/Devices/*[@on]/@ID", {"@ID=p1"}, true},
                      Form{"/Devices/*/@ID", {"@ID=p1", "@ID=p2", "@ID=t1"}, true},
                      Form{"/Devices/*[@ID!='p1']/@ID", {"@ID=p2", "@ID=t1"}, true},
                      Form{"/Devices/*[@ID='p1' and @on='1']/@ID", {"@ID=p1"}, true},
                      Form{"/Devices/*[@ID='p2' and @on='1']/@ID", {}, true},
                      Form{"/Devices/*[@on=1]/@ID", {"@ID=p1"}, true},
                      Form{"/Devices/*[@ID='p1' or @ID='t1']/@ID", {"@ID=p1", "@ID=t1"}, false},
                      Form{"/Devices/Mobile/@*", {"@ID=p1", "@on=1", "@ID=p2"}, false},
                      Form{"/Devices/Mobile/@none", {}, true}, Form{"/@ID", {}, true}));

INSTANTIATE_TEST_SUITE_P(
    Texts, XPathForms,
    ::testing::Values(
        Form{"/Devices/*/LastHeartBeat[text()<1000]/parent::*/@ID", {"@ID=p2", "@ID=t1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()>900]/parent::*/@ID", {"@ID=p1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()<=900]/parent::*/@ID", {"@ID=p2", "@ID=t1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()>=5000]/parent::*/@ID", {"@ID=p1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()=900]/parent::*/@ID", {"@ID=p2", "@ID=t1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()!=900]/parent::*/@ID", {"@ID=p1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()!='900']/parent::*/@ID", {"@ID=p1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()<'1000']/parent::*/@ID", {"@ID=p2", "@ID=t1"}, true},
        Form{"/Devices/*/LastHeartBeat[text()<-1]", {}, true},
        Form{"/Devices/*/Name[text()<1000]", {}, true},
        Form{"/Devices/*/Name[text()!=1000]/text()", {"'Phone'", "'Pad'", "'Set'"}, true},
        Form{"/Devices/Mobile/Services/Service/Name[text()='Command']/parent::*/Port/text()",
             {"'2'"},
             true},
        Form{"/Devices/Mobile[@ID='p1']/Name[text()='Phone']/parent::*/@on", {"@on=1"}, true},
        Form{"/Devices/*/Name[text()='Pad']/parent::*/LastHeartBeat[text()='900']/parent::*/@ID",
             {"@ID=p2"},
             true}));

INSTANTIATE_TEST_SUITE_P(
    ChildrenCompared, XPathForms,
    ::testing::Values(Form{"/Devices/Mobile[Name='Pad']/@ID", {"@ID=p2"}, true},
                      Form{"/Devices/*[LastHeartBeat<1000]/@ID", {"@ID=p2", "@ID=t1"}, true},
                      Form{"/Devices/*[Services]/@ID", {"@ID=p1"}, true},
                      Form{"/Devices/Mobile[Services='Data1Command2']/@ID", {"@ID=p1"}, true}));

INSTANTIATE_TEST_SUITE_P(
    LastSteps, XPathForms,
    ::testing::Values(Form{"/Devices/TV/node()", {"Name", "! loud ", "LastHeartBeat"}, true},
                      Form{"/Devices/text()", {"'text'"}, true},
                      Form{"/node()", {"?", "! a home ", "Devices"}, true},
                      Form{"/Devices/*[1]/Services", {"Services"}, true},
                      Form{"/Devices/TV/text()", {}, true}));

INSTANTIATE_TEST_SUITE_P(
    Axes, XPathForms,
    ::testing::Values(
        Form{"descendant::Port", {"Port", "Port"}, false},
        Form{"/Devices/TV/descendant-or-self::*", {"TV", "Name", "LastHeartBeat"}, false},
        Form{"/Devices/Mobile/Services/Service/ancestor-or-self::Mobile/@ID", {"@ID=p1"}, false},
        Form{"//*[@ID='t1']", {"TV"}, true},
        Form{"//Name/text()", {"'Phone'", "'Data'", "'Command'", "'Pad'", "'Set'"}, true},
        Form{"//Service/Name[text()='Data']/parent::*/Port/text()", {"'1'"}, true},
        Form{"/Devices//Port", {"Port", "Port"}, true},
        Form{"//Port/parent::*", {"Service", "Service"}, false},
        Form{"//Port/..", {"Service", "Service"}, false},
        Form{"//Service[2]/Port/text()", {"'2'"}, false},
        Form{"//Mobile//Port", {"Port", "Port"}, false}, Form{"/parent::*", {}, true},
        Form{"/Devices/parent::*", {}, true}, Form{"/Devices/Mobile/parent::*", {"Devices"}, true},
        Form{"/Devices/Mobile/parent::*[1]/@ID", {}, true},
        Form{"/Devices/*/Name/parent::*[2]", {}, true}));

INSTANTIATE_TEST_SUITE_P(
    OtherExpressions, XPathForms,
    ::testing::Values(Form{"Mobile/@ID", {"@ID=p1", "@ID=p2"}, true},
                      Form{"/Devices/TV|/Devices/*[1]", {"Mobile", "TV"}, false},
                      Form{"/", {"?"}, false}, Form{"/Devices/u:*", {"u:Introduce"}, false}));

class XPathNonsense : public ::testing::TestWithParam<std::string> {};

TEST_P(XPathNonsense, HasNoResult) {
  XPathAnswers home(devices);
  EXPECT_THAT(home.of(GetParam()), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Expressions, XPathNonsense,
    ::testing::Values("", " ", "//", "///", "/Devices/", "/Devices//", "/Devices[", "/Devices]",
                      "/Devices[]", "/Devices['x]", "/Devices[\"x]", "/Devices[@ID='p1]", "[", "]",
                      "@", "/@", "/Devices/@", "a:b:c", "/Devices/a::*", "/Devices/text(",
                      "/Devices/text()/", "/Devices/text())", "/Devices/unknown()",
                      "/Devices/Mobile[text()=='x']", "/Devices/Mobile[text()=]",
                      "/Devices/Mobile[and]", "/Devices/Mobile[@ID='p1' and]", "/Devices/1",
                      "/Devices/Mobile[$x]", "/Devices/#", "1+1", "'text'", "count(/Devices)",
                      "true()", "/Devices = 1", "/Devices/Mobile/@xmlns", "/Devices/Mobile[(1]"));

TEST(XPathExpression, HasNoResultForATextThatHoldsANul) {
  XPathAnswers home(devices);
  EXPECT_THAT(home.of(std::string("/Devices\0", 9)), IsEmpty());
  EXPECT_THAT(home.of(std::string("/Devices/Mobile[@ID='p1\0']", 26)), IsEmpty());
}

TEST(XPathExpression, HasNoResultForAMegabyte) {
  XPathAnswers home(devices);
  EXPECT_THAT(home.of(std::string(1 << 20, '/')), IsEmpty());
  EXPECT_THAT(home.of("/Devices" + std::string(1 << 20, '[')), IsEmpty());
  EXPECT_THAT(home.of("/Devices[@a='" + std::string(1 << 20, 'x') + "']"), IsEmpty());
}

TEST(XPathExpression, HasNoResultForBrokenUtf8) {
  XPathAnswers home(devices);
  EXPECT_THAT(home.of("/Devices/Mobile[@ID!='\xFF']"), IsEmpty());
  EXPECT_THAT(home.of("/Devices/Mobile[@ID!='\xC3']"), IsEmpty());
}

TEST(XPathExpression, TakesTextOfOtherLanguagesAsNamesAndLiterals) {
  XPathAnswers tree("<a><gr\xC3\xBC\xC3\x9F v='\xE6\x97\xA5'/></a>");
  EXPECT_THAT(tree.of("/a/gr\xC3\xBC\xC3\x9F[@v='\xE6\x97\xA5']"),
              ElementsAre("gr\xC3\xBC\xC3\x9F"));
}

TEST(XPathExpression, KeepsItsTextUnlessRefused) {
  EXPECT_EQ(XPathExpression("/a/b").text(), "/a/b");
  EXPECT_EQ(XPathExpression("/a[").text(), "");
}

TEST(XPathExpression, GivesTheSameAgainAndOnAnotherDocument) {
  XPathExpression const expression("/a/b/text()");
  XPathAnswers one("<a><b>1</b></a>");
  XPathAnswers other("<a><b>2</b></a>");
  EXPECT_THAT(one.of(expression), ElementsAre("'1'"));
  EXPECT_THAT(other.of(expression), ElementsAre("'2'"));
  EXPECT_THAT(one.of(expression), ElementsAre("'1'"));
}

TEST(XPathExpression, CanBeMoved) {
  XPathExpression moved("/a/b[@x='y']");
  XPathExpression const expression(std::move(moved));
  XPathAnswers tree("<a><b x='y'/></a>");
  EXPECT_THAT(tree.of(expression), ElementsAre("b"));
}

TEST(XPathExpression, FindsNothingWithoutAContext) {
  XPathResult result;
  XPathExpression("/a").evaluate(nullptr, result);
  EXPECT_TRUE(result.empty());
}

TEST(XPathExpression, FindsNothingInATreeWithoutADocument) {
  TiXmlElement detached("a");
  detached.LinkEndChild(new TiXmlElement("b"));
  XPathResult result;
  XPathExpression("/a/b").evaluate(&detached, result);
  EXPECT_TRUE(result.empty());
  XPathExpression("b").evaluate(&detached, result);
  EXPECT_TRUE(result.empty());
}

TEST(XPathExpression, FindsNothingInAnEmptyDocument) {
  TiXmlDocument document;
  XPathResult result;
  for (char const* const text : {"/a", "//*", "/node()", "descendant::a", "/*[1]"}) {
    XPathExpression(text).evaluate(&document, result);
    EXPECT_TRUE(result.empty()) << text;
  }
}

TEST(XPathExpression, StartsAtTheDocumentWhateverTheContextIfAbsolute) {
  XPathAnswers tree("<a><b><c/></b></a>");
  TiXmlNode const* const c = tree.document().RootElement()->FirstChild()->FirstChild();
  XPathResult result;
  for (char const* const text : {"/a/b", "/descendant::b"}) {
    XPathExpression(text).evaluate(c, result);
    EXPECT_THAT(XPathAnswers::list(result), ElementsAre("b")) << text;
  }
}

TEST(XPathExpression, ForgetsFormerMatches) {
  XPathAnswers tree("<a><b/></a>");
  XPathResult result;
  XPathExpression("/a/b").evaluate(&tree.document(), result);
  XPathExpression("/a/c").evaluate(&tree.document(), result);
  EXPECT_TRUE(result.empty());
}

TEST(XPathExpression, MayBeEvaluatedByManyThreadsAtOnce) {
  XPathAnswers home(devices);
  XPathExpression const walked("/Devices/*/LastHeartBeat[text()<1000]/parent::*/@ID");
  XPathExpression const mirrored("/descendant::*[@ID='p2' or @ID='t1']/@ID");
  TiXmlNode const* const top = home.document().RootElement();
  auto const evaluate = [&](std::size_t& aMatches) {
    XPathResult result;
    for (int times = 0; times < 50; ++times) {
      walked.evaluate(top, result);
      aMatches += result.size();
      mirrored.evaluate(top, result);
      aMatches += result.size();
    }
  };
  std::array<std::size_t, 4> matches{};
  std::vector<std::thread> threads;
  threads.reserve(matches.size());
  for (std::size_t& count : matches) {
    threads.emplace_back(evaluate, std::ref(count));
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_THAT(matches, ::testing::Each(200U));
}

}  // namespace

}  // namespace Zelv::Infrastructure
