#include "zelv/infrastructure/HierarchicalDB.h"

#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/testing/HierarchicalDBTest.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Testing::cNothing;
using testing::ElementsAre;
using testing::Optional;
using Testing::repeat;

using HierarchicalDBReading = Testing::HierarchicalDBTest;
using HierarchicalDBLoading = Testing::HierarchicalDBTest;

TEST_F(HierarchicalDBLoading, IsNotLoadedAtFirst) {
  EXPECT_FALSE(mDatabase.isLoaded());
}

TEST_F(HierarchicalDBLoading, TakesATextThatBeginsWithAnElement) {
  EXPECT_EQ(mDatabase.loadFromString("<a/>"), 0);
  EXPECT_TRUE(mDatabase.isLoaded());
}

TEST_F(HierarchicalDBLoading, FailsWithoutAnElement) {
  for (char const* xml : {"", " ", "text", "<!-- a -->", "<?xml version='1.0'?>", "&amp;", "<"}) {
    EXPECT_EQ(mDatabase.loadFromString(xml), -1) << xml;
    EXPECT_FALSE(mDatabase.isLoaded()) << xml;
  }
}

TEST_F(HierarchicalDBLoading, TakesATextWithSomethingBehindItsElement) {
  load("<a><b>1</b></a>more");
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("1")));
}

TEST_F(HierarchicalDBLoading, KeepsWhatStandsBeforeAnError) {
  load("<a><b>1</b><c></d></a>");
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("1")));
  EXPECT_THAT(read("/a/c/text()"), Optional(std::string()));
}

TEST_F(HierarchicalDBLoading, ReplacesTheFormerDocument) {
  load("<a><b>1</b></a>");
  load("<x><y>2</y></x>");
  EXPECT_EQ(read("/a/b/text()"), cNothing);
  EXPECT_THAT(read("/x/y/text()"), Optional(std::string("2")));
}

TEST_F(HierarchicalDBLoading, ForgetsTheFormerDocumentWhenItFails) {
  load("<a><b>1</b></a>");
  EXPECT_EQ(mDatabase.loadFromString("nothing"), -1);
  EXPECT_EQ(read("/a/b/text()"), cNothing);
  EXPECT_EQ(write("/a/b/text()", "2"), -1);
  load("<a><b>3</b></a>");
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("3")));
}

TEST_F(HierarchicalDBLoading, EndsATextAtItsFirstNul) {
  using namespace std::string_literals;
  load("<a><b>1</b>\0<b>2</b></a>"s);
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("1")));
}

TEST_F(HierarchicalDBLoading, ReadsNothingBehindATextThatEndsWithinACharacter) {
  // The library takes what such a byte announces, whether it is there or not.
  for (char const* end : {"\xF0", "\xE9", "\xC3", "\xF0\x9F", "\xF0\x9F\x98", "\xF4\xF4\xF4"}) {
    std::string const head = "<?xml version='1.0' encoding='UTF-8'?><a b='1'>";
    EXPECT_EQ(mDatabase.loadFromString(head + end), 0);
    EXPECT_EQ(mDatabase.loadFromString(head + "<c d='" + end), 0);
    EXPECT_EQ(mDatabase.loadFromString(std::string("<?xml version='") + end), -1);
    EXPECT_EQ(mDatabase.loadFromString(head + end + '\0' + "</a>"), 0);
  }
}

TEST_F(HierarchicalDBLoading, TakesElements128Deep) {
  EXPECT_EQ(mDatabase.loadFromString(repeat("<a>", 128) + "t" + repeat("</a>", 128)), 0);
  EXPECT_THAT(read(repeat("/a", 25) + "//text()"), Optional(std::string("t")));
  LogCapture log;
  EXPECT_EQ(mDatabase.loadFromString(repeat("<a>", 129) + "t" + repeat("</a>", 129)), -1);
  EXPECT_FALSE(mDatabase.isLoaded());
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "HierarchicalDB::loadFromString: Refused: elements nested too deep."));
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Error, "Failed to load XML string. kemmo 1104 : <a>"));
  load("<a/>");
}

TEST_F(HierarchicalDBLoading, Takes256AttributesOfAnElement) {
  std::string xml = "<a";
  for (int index = 0; index < 256; ++index) {
    xml += " n" + std::to_string(index) + "='" + std::to_string(index) + "'";
  }
  EXPECT_EQ(mDatabase.loadFromString(xml + "/>"), 0);
  EXPECT_THAT(read("/a/@n255"), Optional(std::string("255")));
  EXPECT_EQ(mDatabase.loadFromString(xml + " more=''/>"), -1);
}

TEST_F(HierarchicalDBLoading, TakesTextsOf16Megabytes) {
  std::string const filling((std::size_t{16} << 20) - 7, 'x');
  EXPECT_EQ(mDatabase.loadFromString("<a>" + filling + "</a>"), 0);
  EXPECT_EQ(mDatabase.loadFromString("<a>" + filling + "x</a>"), -1);
}

TEST_F(HierarchicalDBReading, NeedsNoLeadingSlash) {
  load("<Zelv><Devices><Model>M</Model></Devices></Zelv>");
  EXPECT_THAT(read("Zelv/Devices/Model/text()"), Optional(std::string("M")));
  EXPECT_THAT(read("/Zelv/Devices/Model/text()"), Optional(std::string("M")));
}

TEST_F(HierarchicalDBReading, GivesAnEmptyTextForAnElementWithoutText) {
  load("<a><b/></a>");
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string()));
  EXPECT_EQ(read("/a/c/text()"), cNothing);
  EXPECT_EQ(read("/a/b/@x"), cNothing);
  EXPECT_EQ(read("/a/b/node()"), cNothing);
  EXPECT_EQ(read("/text()"), cNothing);
}

TEST_F(HierarchicalDBReading, FindsAnElementWithoutTextThroughAPredicate) {
  load("<a><b><c>1</c><d/></b></a>");
  EXPECT_THAT(read("/a/b[c='1']/d/text()"), Optional(std::string()));
  EXPECT_EQ(read("/a/b[c='2']/d/text()"), cNothing);
}

TEST_F(HierarchicalDBReading, JoinsSeveralMatchesAsAMultiString) {
  load("<a><b>one</b><b>two</b></a>");
  auto const result = read("/a/b/text()");
  EXPECT_THAT(result, Optional(std::string("one&#x13;two")));
  EXPECT_THAT(MultiString::split(*result), ElementsAre("one", "two"));
}

TEST_F(HierarchicalDBReading, GivesTheBareValueOfAnAttribute) {
  load("<Envelope><Device ID='A1'/><Device ID='B2'/><Device/></Envelope>");
  EXPECT_THAT(read("/Envelope/Device/@ID"), Optional(std::string("A1&#x13;B2")));
}

TEST_F(HierarchicalDBReading, GivesAnEmptyAttributeAsAnEmptyText) {
  load("<a><b x=''/><b x=''/></a>");
  EXPECT_THAT(read("/a/b/@x"), Optional(std::string("&#x13;")));
}

TEST_F(HierarchicalDBReading, GivesElementsAsCompactXml) {
  load("<a>\n <b x=\"1\">\n  <c>t</c>\n  <d/>\n </b>\n</a>");
  EXPECT_THAT(read("/a/b"), Optional(std::string("<b x='1'><c>t</c><d/></b>")));
}

TEST_F(HierarchicalDBReading, GivesEachChildAsAnItem) {
  load("<OnData><Data>text<b/><!--c--><d>1</d></Data></OnData>");
  EXPECT_THAT(read("/OnData/Data/node()"),
              Optional(std::string("text&#x13;<b/>&#x13;<!--c-->&#x13;<d>1</d>")));
}

TEST_F(HierarchicalDBReading, GivesNames) {
  load("<Envelope><Body><Hello/><Bye/></Body></Envelope>");
  EXPECT_THAT(read("/*[1]/name()"), Optional(std::string("Envelope")));
  EXPECT_THAT(read("/Envelope/Body/*[1]/name()"), Optional(std::string("Hello")));
  EXPECT_THAT(read("/Envelope/Body/*/name()"), Optional(std::string("Hello&#x13;Bye")));
  EXPECT_EQ(read("/Envelope/Body/*[3]/name()"), cNothing);
}

TEST_F(HierarchicalDBReading, GivesTheTextOfWhatHasNoName) {
  load("<a x='v&amp;lt;'>t&amp;lt;</a>");
  EXPECT_THAT(read("/a/@x/name()"), Optional(std::string("v<")));
  EXPECT_THAT(read("/a/text()/name()"), Optional(std::string("t<")));
}

TEST_F(HierarchicalDBReading, CutsTheEndOfAPathThatAsksForNamesAnywhere) {
  load("<a><b/></a>");
  // "/a/b/name()/123456" loses its last seven characters, not its "/name()".
  EXPECT_EQ(read("/a/b/name()/123456"), cNothing);
  EXPECT_EQ(read("/name()"), cNothing);
  EXPECT_EQ(read("name()"), cNothing);
}

TEST_F(HierarchicalDBReading, UnescapesAllOfAnElement) {
  load("<a><b x='1 &lt; 2'>3 &lt; 4 &amp; 5</b></a>");
  EXPECT_THAT(read("/a/b"), Optional(std::string("<b x='1 < 2'>3 < 4 & 5</b>")));
}

TEST_F(HierarchicalDBReading, GivesATextAsItIsButForEntitiesWithinIt) {
  struct {
    char const* xml;
    char const* text;
  } const rows[] = {
      {"plain", "plain"},
      {"1 &lt; 2 &gt; 3", "1 < 2 > 3"},
      {"&quot;a&quot; &apos;b&apos;", "\"a\" 'b'"},
      {"a &amp; b", "a & b"},
      {"&amp;lt;", "<"},
      {"&amp;amp;", "&"},
      {"&amp;amp;lt;", "<"},
      {"&amp;quot;", "&quot;"},
      {"&amp;apos;", "'"},
      {"&amp;#x13;", "&#x13;"},
      {"a&#x0A;b", "a&#x0A;b"},
      {"a&#x13;b", "a&#x13;b"},
      {"&#x0;", "&#x00;"},
      {"\xC3\xA9\x80\xFF", "\xC3\xA9\x80\xFF"},
  };
  for (auto const& row : rows) {
    load(std::string("<a x='") + row.xml + "'>" + row.xml + "</a>");
    EXPECT_THAT(read("/a/text()"), Optional(std::string(row.text))) << row.xml;
    EXPECT_THAT(read("/a/@x"), Optional(std::string(row.text))) << row.xml;
  }
}

TEST_F(HierarchicalDBReading, UnescapesEachOfSeveralItems) {
  load("<a><b>&amp;</b><b>amp;lt;</b><b>&amp;lt;</b><b>plain</b><b><c>&lt;</c></b></a>");
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("&&#x13;amp;lt;&#x13;<&#x13;plain")));
  EXPECT_THAT(read("/a/b/node()"),
              Optional(std::string("&&#x13;amp;lt;&#x13;<&#x13;plain&#x13;<c><</c>")));
}

TEST_F(HierarchicalDBReading, GivesASectionWithItsMarks) {
  load("<a><![CDATA[1 < 2]]></a>");
  EXPECT_THAT(read("/a/text()"), Optional(std::string("\n<![CDATA[1 < 2]]>\n")));
}

TEST_F(HierarchicalDBReading, KnowsAllFormsOfPathsThatTheSystemUses) {
  load(
      "<u:R><D ID='x' src='s'><N>n</N><V>7</V></D><D ID=\"y\"><N>m</N><V>9</V></D>"
      "<P><AssetPackage><Q><DescriptorFile>f</DescriptorFile></Q></AssetPackage></P></u:R>");
  struct {
    char const* path;
    char const* result;
  } const rows[] = {
      {"/u:R/D/N/text()", "n&#x13;m"},
      {"/*/D/N/text()", "n&#x13;m"},
      {"/u:R/*[2]/N/text()", "m"},
      {"/u:R/D[@ID='x']/N/text()", "n"},
      {"/u:R/D[@ID=\"y\"]/N/text()", "m"},
      {"/u:R/D[@src]/@ID", "x"},
      {"/u:R/D[N='m']/@ID", "y"},
      {"/u:R/D[V<8]/@ID", "x"},
      {"/u:R/D[V>8]/@ID", "y"},
      {"/u:R/*[V<8]/@ID", "x"},
      {"/u:R/D[N='n' and @ID='x']/V/text()", "7"},
      {"/u:R/D[N='m' and V='9']/@ID", "y"},
      {"/u:R/D/N/parent::*/@ID", "x&#x13;y"},
      {"/u:R/descendant::DescriptorFile/text()", "f"},
      {"/u:R/P/descendant-or-self::*/name()", "P&#x13;AssetPackage&#x13;Q&#x13;DescriptorFile"},
      {"/u:R/P/AssetPackage/Q/ancestor-or-self::AssetPackage/name()", "AssetPackage"},
      {"//*[@ID='x']/N/text()", "n"},
      {"/u:R/D[@ID='x']/node()", "<N>n</N>&#x13;<V>7</V>"},
  };
  for (auto const& row : rows) {
    EXPECT_THAT(read(row.path), Optional(std::string(row.result))) << row.path;
  }
}

TEST_F(HierarchicalDBReading, GivesTheSameAgainAfterAChange) {
  load("<a><b>1</b></a>");
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("1")));
  ASSERT_EQ(write("/a/b/text()", "2"), 0);
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("2")));
  ASSERT_EQ(write("/a/b", ""), 0);
  EXPECT_EQ(read("/a/b/text()"), cNothing);
}

TEST_F(HierarchicalDBReading, AnswersMorePathsThanItRemembers) {
  std::string xml = "<a>";
  for (int index = 0; index < 100; ++index) {
    xml += "<n" + std::to_string(index) + ">" + std::to_string(index) + "</n" +
           std::to_string(index) + ">";
  }
  load(xml + "</a>");
  for (int turn = 0; turn < 3; ++turn) {
    for (int index = 0; index < 100; ++index) {
      std::string const number = std::to_string(index);
      ASSERT_THAT(read("/a/n" + number + "/text()"), Optional(number));
    }
  }
}

TEST_F(HierarchicalDBReading, ThrowsForAPredicateThatCannotBeRewritten) {
  load("<a><b><c/></b></a>");
  for (char const* path : {"/a/b[1]", "/a/b[c]", "/a/*[0]", "/a/b[1]/c/text()"}) {
    std::string result = "from before";
    EXPECT_THROW(mDatabase.getContent(path, result), std::out_of_range) << path;
    EXPECT_EQ(result, "");
    EXPECT_THROW(mDatabase.getContent(path, result), std::out_of_range) << "again: " << path;
  }
}

TEST_F(HierarchicalDBReading, MayReadIntoThePathItself) {
  load("<a>1</a>");
  std::string path = "/a/text()";
  EXPECT_EQ(mDatabase.getContent(path, path), 0) << "the whole document: the path was cleared";
  EXPECT_EQ(path, "<a>1</a>");
}

TEST_F(HierarchicalDBReading, GivesAResultOf8Megabytes) {
  constexpr std::size_t limit = std::size_t{8} << 20;
  load("<a><b>" + std::string(limit, 'x') + "</b></a>");
  auto const result = read("/a/b/text()");
  ASSERT_TRUE(result);
  EXPECT_EQ(result->size(), limit);

  load("<a><b>" + std::string(limit + 1, 'x') + "</b></a>");
  LogCapture log;
  EXPECT_EQ(read("/a/b/text()"), cNothing);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "HierarchicalDB::getContent: Result too long. aXPath='/a/b/text()'."));
  EXPECT_THAT(read("/a/b/name()"), Optional(std::string("b"))) << "other reads go on";
}

TEST_F(HierarchicalDBReading, RefusesADeepTreeThatAsksForEachOfItsParts) {
  load(repeat("<a>", 120) + std::string(100 * 1024, 'x') + repeat("</a>", 120));
  LogCapture log;
  EXPECT_EQ(read("//*"), cNothing);
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Error, "Result too long"));
}

TEST_F(HierarchicalDBReading, SerialisesTheDocumentBehindWhatIsThere) {
  load("<a><b>1</b></a>");
  std::string text = "before ";
  EXPECT_EQ(mDatabase.serialize(text, -1), 0);
  EXPECT_EQ(text, "before <a><b>1</b></a>");
  text.clear();
  EXPECT_EQ(mDatabase.serialize(text, 0), 0);
  EXPECT_EQ(text, "<a>\n <b>1</b>\n</a>\n");
}

struct LogRow {
  PCRealDebug::Level level;
  char const* text;
  void (*bringAbout)(HierarchicalDB&);
};

class HierarchicalDBLog : public testing::TestWithParam<LogRow> {};

TEST_P(HierarchicalDBLog, HoldsTheTextAtItsLevel) {
  HierarchicalDB database;
  LogCapture log;
  GetParam().bringAbout(database);
  EXPECT_EQ(log.count(GetParam().level, GetParam().text), 1) << log.dump();
}

std::string sResult;

INSTANTIATE_TEST_SUITE_P(
    Texts, HierarchicalDBLog,
    testing::Values(
        LogRow{PCRealDebug::Error,
               "HierarchicalDB::loadFromString: Failed to load XML string. kemmo 1104 : no xml",
               [](HierarchicalDB& aDatabase) { aDatabase.loadFromString("no xml"); }},
        LogRow{PCRealDebug::Warning, "HierarchicalDB::serialize: Document not loaded.",
               [](HierarchicalDB& aDatabase) { EXPECT_EQ(aDatabase.serialize(sResult, -1), -1); }},
        LogRow{PCRealDebug::Error, "HierarchicalDB::getContent: aXPath='/a'.",
               [](HierarchicalDB& aDatabase) {
                 sResult = "from before";
                 EXPECT_EQ(aDatabase.getContent("/a", sResult), -1);
                 EXPECT_EQ(sResult, "");
               }},
        LogRow{PCRealDebug::Warning, "HierarchicalDB::getContent: Document not loaded.",
               [](HierarchicalDB& aDatabase) { aDatabase.getContent("/a", sResult); }},
        LogRow{PCRealDebug::Trace, "HierarchicalDB::getContent: Exit.",
               [](HierarchicalDB& aDatabase) { aDatabase.getContent("/a", sResult); }},
        LogRow{PCRealDebug::Warning, "HierarchicalDB::setContent: Document not loaded.",
               [](HierarchicalDB& aDatabase) {
                 EXPECT_EQ(aDatabase.setContent("/a/b", "", true), -1);
               }},
        LogRow{PCRealDebug::Error, "HierarchicalDB::setContent: Attribute 'x' does not exist.",
               [](HierarchicalDB& aDatabase) {
                 aDatabase.loadFromString("<a/>");
                 EXPECT_EQ(aDatabase.setContent("/a/@x", "", false), -1);
               }},
        LogRow{PCRealDebug::Trace, "HierarchicalDB::setContent: Exit.",
               [](HierarchicalDB& aDatabase) {
                 aDatabase.loadFromString("<a/>");
                 EXPECT_EQ(aDatabase.setContent("/a/text()", "", false), 0);
               }}));

TEST_F(HierarchicalDBReading, LogsInThisOrderWhenNothingIsLoaded) {
  LogCapture log;
  EXPECT_EQ(read("/a"), cNothing);
  ASSERT_EQ(log.lines().size(), 3U);
  EXPECT_EQ(log.lines()[0].text, "HierarchicalDB::getContent: aXPath='/a'.");
  EXPECT_EQ(log.lines()[1].text, "HierarchicalDB::getContent: Document not loaded.");
  EXPECT_EQ(log.lines()[2].text, "HierarchicalDB::getContent: Exit.");
}

TEST_F(HierarchicalDBReading, IsSilentAboutWhatItDoesNotFind) {
  load("<a/>");
  LogCapture log;
  EXPECT_EQ(read("/a/b/text()"), cNothing);
  EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(HierarchicalDBReading, OffersItsRewritingOfPaths) {
  std::string path = "/a/b[c='1']/d";
  mDatabase.translateXPath(path);
  EXPECT_EQ(path, "/a/b/c[text()='1']/parent::*/d");
  std::string name;
  std::string condition;
  mDatabase.separateXPath("[Name='x']", name, condition);
  EXPECT_EQ(name, "Name");
  EXPECT_EQ(condition, "='x']");
}

}  // namespace
}  // namespace Zelv::Infrastructure
