#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/testing/HierarchicalDBTest.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using testing::Optional;
using Testing::repeat;

using HierarchicalDBWriting = Testing::HierarchicalDBTest;

TEST_F(HierarchicalDBWriting, SetsTheFirstTextOnly) {
  load("<a><b>one<c/>two</b></a>");
  EXPECT_EQ(write("/a/b/text()", "new"), 0);
  EXPECT_EQ(all(), "<a><b>new<c/>two</b></a>");
}

TEST_F(HierarchicalDBWriting, AddsATextAtTheEnd) {
  load("<a><b><c/></b></a>");
  EXPECT_EQ(write("/a/b/text()", "new", false), 0);
  EXPECT_EQ(all(), "<a><b><c/>new</b></a>");
}

TEST_F(HierarchicalDBWriting, WritesToTheFirstMatchOnly) {
  load("<a><b>1</b><b>2</b></a>");
  EXPECT_EQ(write("/a/b/text()", "new"), 0);
  EXPECT_EQ(all(), "<a><b>new</b><b>2</b></a>");
}

TEST_F(HierarchicalDBWriting, StoresATextAsItIs) {
  load("<a>1</a>");
  EXPECT_EQ(write("a/text()", "<&\"'>"), 0);
  EXPECT_EQ(all(), "<a>&lt;&amp;&quot;&apos;&gt;</a>");
  EXPECT_THAT(read("/a/text()"), Optional(std::string("<&\"'>")));
}

TEST_F(HierarchicalDBWriting, LeavesTheMarksOfASection) {
  load("<a><![CDATA[1]]></a>");
  EXPECT_EQ(write("/a/text()", "<2>"), 0);
  EXPECT_THAT(read("/a/text()"), Optional(std::string("\n<![CDATA[<2>]]>\n")));
}

TEST_F(HierarchicalDBWriting, MakesAPlainTextOfASectionThatTheValueWouldEnd) {
  load("<a><![CDATA[1]]></a>");
  EXPECT_EQ(write("/a/text()", "x]]><b/>"), 0);
  EXPECT_EQ(all(), "<a>x]]&gt;&lt;b/&gt;</a>");
}

TEST_F(HierarchicalDBWriting, FindsThePlaceThroughARewrittenPredicate) {
  load("<a><s><n>x</n><p>1</p></s><s><n>y</n><p>2</p></s></a>");
  EXPECT_EQ(write("/a/s[n='y']/p/text()", "3"), 0);
  EXPECT_EQ(all(), "<a><s><n>x</n><p>1</p></s><s><n>y</n><p>3</p></s></a>");
}

TEST_F(HierarchicalDBWriting, AddsAnAttributeOnlyIfToldTo) {
  load("<a><b/></a>");
  LogCapture log;
  EXPECT_EQ(write("/a/b/@x", "v", false), -1);
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "HierarchicalDB::setContent: Attribute 'x' does not exist."));
  EXPECT_EQ(all(), "<a><b/></a>");
  EXPECT_EQ(write("/a/b/@x", "v", true), 0);
  EXPECT_EQ(all(), "<a><b x='v'/></a>");
  EXPECT_EQ(write("/a/b/@x", "w", false), 0);
  EXPECT_EQ(all(), "<a><b x='w'/></a>");
}

TEST_F(HierarchicalDBWriting, StoresAnAttributeEscapedOnce) {
  load("<a x=''/>");
  EXPECT_EQ(write("/a/@x", "1 < 2 & 3"), 0);
  EXPECT_EQ(all(), "<a x='1 &amp;lt; 2 &amp;amp; 3'/>");
  EXPECT_THAT(read("/a/@x"), Optional(std::string("1 < 2 & 3")));
}

TEST_F(HierarchicalDBWriting, AddsNoAttributeThatCouldNotBeReadBack) {
  load("<a/>");
  LogCapture log;
  for (char const* name : {"", " ", "x y", "1", "x='1' y", "x>", "x/", "-x", "\xEF\xBB\xBFx"}) {
    EXPECT_EQ(write(std::string("/a/@") + name, "v", true), -1) << name;
  }
  EXPECT_EQ(all(), "<a/>");
  EXPECT_TRUE(
      log.has(PCRealDebug::Error, "HierarchicalDB::setContent: Attribute 'x y' does not exist."));
  EXPECT_EQ(write("/a/@good", "v", true), 0);
}

TEST_F(HierarchicalDBWriting, AppendsAnElementThatIsNotThere) {
  load("<Devices><Mobile ID='y'/></Devices>");
  EXPECT_EQ(write("/Devices/Mobile[@ID='x']", "<Mobile ID='x'><Name>n</Name></Mobile>"), 0);
  EXPECT_EQ(all(), "<Devices><Mobile ID='y'/><Mobile ID='x'><Name>n</Name></Mobile></Devices>");
}

TEST_F(HierarchicalDBWriting, ReplacesAllMatches) {
  load("<a><b i='1'>1</b><c/><b i='1'>2</b><b i='2'/></a>");
  EXPECT_EQ(write("/a/b[@i='1']", "<b i='1'>3</b>"), 0);
  EXPECT_EQ(all(), "<a><c/><b i='2'/><b i='1'>3</b></a>");
}

TEST_F(HierarchicalDBWriting, DeletesAllMatchesWithAnEmptyValue) {
  load("<a><b/><c/><b/></a>");
  EXPECT_EQ(write("/a/b", ""), 0);
  EXPECT_EQ(all(), "<a><c/></a>");
  EXPECT_EQ(write("/a/b", ""), 0) << "nothing there any more";
}

TEST_F(HierarchicalDBWriting, LinksAllTopLevelElements) {
  load("<a><c>0</c></a>");
  EXPECT_EQ(write("/a/c", "<c>1</c><c>2</c>"), 0);
  EXPECT_EQ(all(), "<a><c>1</c><c>2</c></a>");
}

TEST_F(HierarchicalDBWriting, LinksCommentsAndDeclarationsBesideAnElement) {
  load("<a/>");
  EXPECT_EQ(write("/a/c", "<?xml version='1.0'?><!--n--><c/>"), 0);
  EXPECT_EQ(all(), "<a><?xml version=\"1.0\" encoding=\"\" standalone=\"\" ?><!--n--><c/></a>");
}

TEST_F(HierarchicalDBWriting, LinksNothingForAPlainText) {
  load("<a><c>1</c></a>");
  EXPECT_EQ(write("/a/c", "plain"), 0);
  EXPECT_EQ(all(), "<a/>");
}

TEST_F(HierarchicalDBWriting, LinksNothingForAnElementWithTextBehindIt) {
  load("<a><c>1</c></a>");
  EXPECT_EQ(write("/a/c", "<c>2</c>more"), 0);
  EXPECT_EQ(all(), "<a/>");
}

TEST_F(HierarchicalDBWriting, TakesWhiteSpaceBehindTheLastElementForText) {
  // The library stops before it, not at the end.
  load("<a><c>1</c></a>");
  EXPECT_EQ(write("/a/c", "<c>2</c>\n"), 0);
  EXPECT_EQ(all(), "<a/>");
}

TEST_F(HierarchicalDBWriting, LosesTheOldElementToAValueWithoutAnyElement) {
  for (char const* value : {" ", "<!--c-->", "<!DOCTYPE x>", "<?xml version='1.0'?>"}) {
    load("<a><c>1</c></a>");
    EXPECT_EQ(write("/a/c", value), 0) << value;
    EXPECT_EQ(all(), "<a/>") << value;
  }
}

TEST_F(HierarchicalDBWriting, ChangesNothingForAPathThatALimitRefuses) {
  std::string predicates;
  for (int count = 0; count < 17; ++count) {
    predicates += "[@x='1']";
  }
  load("<a><b x='1'>old</b></a>");
  EXPECT_EQ(write("/a/b" + predicates, "<b>new</b>"), -1);
  EXPECT_EQ(write("/a/b" + predicates, ""), -1);
  EXPECT_EQ(write("/a/b[@x='" + std::string(2048, 'x') + "']", "<b>new</b>"), -1);
  EXPECT_EQ(all(), "<a><b x='1'>old</b></a>");
  EXPECT_EQ(write("/a/b" + predicates.substr(8), "<b>new</b>"), 0);
  EXPECT_EQ(all(), "<a><b>new</b></a>");
}

TEST_F(HierarchicalDBWriting, LinksAWholePhoneWithAnEndTagThatIsNotItsOwn) {
  load("<Devices/>");
  std::string const services(5000, 's');
  EXPECT_EQ(write("/Devices/Mobile[@ID='x']", "<Mobile ID='x'><Name>n</Name><Services>" + services +
                                                  "</Services><LastHeartBeat>1</LastHeartBeat>"
                                                  "</RemoteTV>"),
            0);
  EXPECT_THAT(read("/Devices/*[LastHeartBeat<2]/@ID"), Optional(std::string("x")));
  EXPECT_THAT(read("/Devices/Mobile[@ID='x']/Services/text()"), Optional(services));
}

TEST_F(HierarchicalDBWriting, LinksWhatStandsBeforeAnErrorInTheValue) {
  load("<Devices><Mobile ID='x'>old</Mobile></Devices>");
  // Devices announce themselves with the end tag of another element.
  EXPECT_EQ(write("/Devices/Mobile[@ID='x']", "<Mobile ID='x'><Name>n</Name></RemoteTV>"), 0);
  EXPECT_EQ(all(), "<Devices><Mobile ID='x'><Name>n</Name></Mobile></Devices>");
}

TEST_F(HierarchicalDBWriting, DoesNotUseTheNameOfItsLastStep) {
  load("<a/>");
  EXPECT_EQ(write("/a/b", "<c/>"), 0);
  EXPECT_EQ(all(), "<a><c/></a>");
}

TEST_F(HierarchicalDBWriting, RemovesAllAndAddsBelowTheFirstParent) {
  load("<a><p><b/></p><p><b/></p></a>");
  EXPECT_EQ(write("/a/p/b", "<c/>"), 0);
  EXPECT_EQ(all(), "<a><p><c/></p><p/></a>");
}

TEST_F(HierarchicalDBWriting, TakesOutTextsAndCommentsToo) {
  load("<a><b>t<!--c--><d/></b></a>");
  EXPECT_EQ(write("/a/b/node()", ""), 0);
  EXPECT_EQ(all(), "<a><b/></a>");
}

TEST_F(HierarchicalDBWriting, FailsSilentlyWithoutAParent) {
  load("<a/>");
  LogCapture log;
  for (char const* path : {"/a/b/c", "/a/b/text()", "/a/b/@x", "/b/c", "/a", "a", "", "/", "//"}) {
    EXPECT_EQ(write(path, "<v/>", true), -1) << path;
  }
  EXPECT_THAT(log.lines(), testing::IsEmpty());
  EXPECT_EQ(all(), "<a/>");
}

TEST_F(HierarchicalDBWriting, FailsBelowWhatIsNoElement) {
  load("<a x='1'>t</a>");
  for (char const* path : {"/a/text()/b", "/a/text()/text()", "/a/@x/b", "/a/@x/text()"}) {
    EXPECT_EQ(write(path, "<v/>", true), -1) << path;
  }
  EXPECT_EQ(all(), "<a x='1'>t</a>");
}

TEST_F(HierarchicalDBWriting, ThrowsForAPredicateThatCannotBeRewrittenAndChangesNothing) {
  load("<a><b><c/></b></a>");
  for (char const* path : {"/a/b[1]", "/a/b[c]/d", "/a/b[1]/text()", "/a/*[0]"}) {
    EXPECT_THROW(write(path, "<v/>", true), std::out_of_range) << path;
  }
  EXPECT_EQ(all(), "<a><b><c/></b></a>");
}

TEST_F(HierarchicalDBWriting, BreaksAtASlashWithinTheLastPredicate) {
  load("<a><b x='1/2'/></a>");
  EXPECT_EQ(write("/a/b[@x='1/2']", ""), -1);
  EXPECT_EQ(all(), "<a><b x='1/2'/></a>");
}

TEST_F(HierarchicalDBWriting, RemovesNestedMatchesOnce) {
  load("<a><b><b><b/></b></b><c/></a>");
  EXPECT_EQ(write("/a/descendant::b", ""), 0);
  EXPECT_EQ(all(), "<a><c/></a>");
}

TEST_F(HierarchicalDBWriting, NeverRemovesTheRoot) {
  load("<a><b><c/></b>t</a>");
  EXPECT_EQ(write("/a/descendant-or-self::*", ""), 0);
  EXPECT_EQ(all(), "<a>t</a>");
  EXPECT_EQ(write("/a/.", ""), 0);
  EXPECT_EQ(write("/a/ancestor-or-self::node()", ""), 0);
  EXPECT_THAT(read("/a/text()"), Optional(std::string("t")));
}

TEST_F(HierarchicalDBWriting, DeletesTheTargetItselfOnlyWithoutAValue) {
  load("<a><b><c/></b></a>");
  LogCapture log;
  EXPECT_EQ(write("/a/b/ancestor-or-self::b", "<v/>"), -1);
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error,
                     "HierarchicalDB::setContent: Refused: the value would be linked into what "
                     "it replaces."));
  EXPECT_EQ(all(), "<a><b><c/></b></a>");
  EXPECT_EQ(write("/a/b/ancestor-or-self::b", "plain"), 0);
  EXPECT_EQ(all(), "<a/>");
}

TEST_F(HierarchicalDBWriting, DoesNotLinkEndTagsThatWouldCloseTheirNewParent) {
  load("<a/>");
  EXPECT_EQ(write("/a/x", "<x></x></x></a><y/>"), 0);
  EXPECT_EQ(all(), "<a><x/><y/></a>");
}

TEST_F(HierarchicalDBWriting, DoesNotLinkDeclarationsThatWouldNotSurvivePrinting) {
  for (char const* declaration :
       {"<?xml version='\"'?>", "<?xml encoding='a\"b'?>", "<?xml standalone='&quot;'?>",
        "<?xml version='&amp;#xZ;'?>", "<?xml version='\xC3' encoding='latin1'?>"}) {
    load("<a/>");
    EXPECT_EQ(write("/a/x", std::string(declaration) + "<x>" + declaration + "</x>"), 0);
    EXPECT_EQ(all(), "<a><x/></a>") << declaration;
  }
}

TEST_F(HierarchicalDBWriting, RefusesAValueThatNestsTooDeepForItsPlace) {
  load(repeat("<a>", 27) + repeat("</a>", 27));
  std::string const parent = repeat("/a", 27);
  std::string const fits = repeat("<b>", 101) + repeat("</b>", 101);
  EXPECT_EQ(write(parent + "/b", fits), 0);
  std::string const before = all();
  LogCapture log;
  EXPECT_EQ(write(parent + "/b", "<b>" + fits + "</b>"), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "HierarchicalDB::setContent: Refused: elements nested too deep."));
  EXPECT_EQ(all(), before);
  EXPECT_EQ(mDatabase.loadFromString(before), 0) << "so that what was written loads again";
}

TEST_F(HierarchicalDBWriting, RefusesTheAttributeAfterThe256th) {
  load("<a><b/></a>");
  for (int index = 0; index < 256; ++index) {
    ASSERT_EQ(write("/a/b/@n" + std::to_string(index), "v", true), 0);
  }
  LogCapture log;
  EXPECT_EQ(write("/a/b/@more", "v", true), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "HierarchicalDB::setContent: Refused: too many attributes in one "
                          "element."));
  EXPECT_EQ(write("/a/b/@n255", "w", true), 0);
  EXPECT_EQ(mDatabase.loadFromString(all()), 0);

  std::string many = "<c";
  for (int index = 0; index < 257; ++index) {
    many += " n" + std::to_string(index) + "=''";
  }
  load("<a><c/></a>");
  EXPECT_EQ(write("/a/c", many + "/>"), -1);
  EXPECT_EQ(all(), "<a><c/></a>");
}

TEST_F(HierarchicalDBWriting, RefusesToGrowWithoutBound) {
  load("<a><b/></a>");
  LogCapture log;
  std::string const megabyte(std::size_t{1} << 20, 'x');
  int written = 0;
  while (written < 100 && write("/a/no", "<b>" + megabyte + "</b>") == 0) {
    ++written;
  }
  EXPECT_GE(written, 30);
  EXPECT_LE(written, 32);
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "HierarchicalDB::setContent: Refused: document too long."));
  EXPECT_EQ(write("/a/b/text()", megabyte), -1);
  EXPECT_EQ(write("/a/b/@x", megabyte, true), -1);
  EXPECT_EQ(write("/a/b", ""), 0);
  EXPECT_EQ(write("/a/b", "<b>" + megabyte + "</b>"), 0) << "what is removed gives its room back";
}

TEST_F(HierarchicalDBWriting, WritesTheSamePlaceForEver) {
  load("<a><b/></a>");
  std::string const megabyte(std::size_t{1} << 20, 'x');
  for (int turn = 0; turn < 100; ++turn) {
    ASSERT_EQ(write("/a/b/text()", megabyte), 0) << turn;
  }
}

TEST_F(HierarchicalDBWriting, RefusesWhatWouldSwallowATagOfADocumentInUtf8) {
  std::string const before =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"\" ?><a x='1'>t</a>";
  LogCapture log;
  for (char const* end : {"\xE9", "caf\xE9", "\xF0\x9F\x98", "\xC3\xA9\xC3"}) {
    load(before);
    EXPECT_EQ(write("/a/text()", end), -1) << end;
    EXPECT_EQ(write("/a/@x", end), -1) << end;
    EXPECT_EQ(write("/a/b", std::string("<b>") + end + "</b>"), -1) << end;
    EXPECT_EQ(write("/a/b", std::string("<b x='") + end + "'/>"), -1) << end;
    EXPECT_EQ(all(), before);
  }
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "HierarchicalDB::setContent: Refused: broken UTF-8."));
  EXPECT_EQ(write("/a/b",
                  "<\xEF\xBB\xBF"
                  "b/>"),
            -1);
  EXPECT_EQ(write("/a/b", "<b \xEF\xBB\xBFx='1'/>"), -1);
  EXPECT_EQ(write("/a/text()",
                  "<\xF0<\xF0"
                  "ab"),
            -1)
      << "as printed it ends within a character";
  EXPECT_EQ(write("/a/text()", "caf\xC3\xA9"), 0);
  EXPECT_EQ(write("/a/text()",
                  "\xE9"
                  "ab"),
            0)
      << "it ends with its own bytes";
}

TEST_F(HierarchicalDBWriting, TakesAnyByteInADocumentThatIsNotUtf8) {
  for (char const* head : {"", "<?xml version='1.0' encoding='ISO-8859-1'?>"}) {
    load(std::string(head) + "<a x=''/>");
    EXPECT_EQ(write("/a/text()", "caf\xE9"), 0);
    EXPECT_EQ(write("/a/@x", "caf\xE9"), 0);
    EXPECT_EQ(write("/a/b", "<b>caf\xE9</b>"), 0);
    EXPECT_THAT(read("/a/b/text()"), Optional(std::string("caf\xE9")));
  }
}

}  // namespace
}  // namespace Zelv::Infrastructure
