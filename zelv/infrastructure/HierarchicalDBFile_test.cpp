#include <gmock/gmock.h>
#include <tinyxml.h>

#include <cstdio>
#include <random>
#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/testing/HierarchicalDBTest.h"
#include "zelv/platform/DurableFile.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::DurableFile;
using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using Testing::cNothing;
using testing::ElementsAre;
using testing::Optional;

constexpr std::size_t cMaxFile = std::size_t{4} << 20;

class HierarchicalDBFile : public Testing::HierarchicalDBTest {
 protected:
  std::string path(std::string const& aName) const { return mDirectories.writable() + aName; }

  int loadFile(std::string const& aContent) {
    mDirectories.putWritable("a.xml", aContent);
    return mDatabase.loadFromFile(path("a.xml"));
  }

  int save() { return mDatabase.saveToFile(path("a.xml.tmp")); }

  std::string saved() const { return mDirectories.getWritable("a.xml.tmp"); }

  TemporaryDirectories mDirectories;
};

using HierarchicalDBLoadingFile = HierarchicalDBFile;
using HierarchicalDBSavingFile = HierarchicalDBFile;

// ---- Loading

TEST_F(HierarchicalDBLoadingFile, TakesAFile) {
  LogCapture log;
  EXPECT_EQ(loadFile("<?xml version=\"1.0\"?>\n<a>\n  <b>1</b>\n</a>\n"), 0);
  EXPECT_TRUE(mDatabase.isLoaded());
  EXPECT_THAT(read("/a/b/text()"), Optional(std::string("1")));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "HierarchicalDB::loadFromFile: TXML LoadFile returned true ."));
  EXPECT_EQ(log.count(PCRealDebug::Error), 0);
}

TEST_F(HierarchicalDBLoadingFile, FailsForWhatIsNoWellFormedFile) {
  using namespace std::string_literals;
  for (std::string const& content :
       {""s, " "s, "text"s, "<a>"s, "<a></b>"s, "<a b='1' b='2'/>"s, "<!-- a -->"s, "\0<a/>"s,
        "<a>\0</a>"s, "\x7F"s + "ELF\0\1\2\3"s, "<a>&#xZZ;</a>"s}) {
    LogCapture log;
    EXPECT_EQ(loadFile(content), -1) << content;
    EXPECT_FALSE(mDatabase.isLoaded());
    EXPECT_EQ(read("/a/text()"), cNothing);
    EXPECT_THAT(
        log, Logged(PCRealDebug::Error, "HierarchicalDB::loadFromFile: Failed to load XML file: " +
                                            path("a.xml") + " "));
  }
}

TEST_F(HierarchicalDBLoadingFile, TellsWhetherTheFileItselfWasGood) {
  LogCapture log;
  EXPECT_EQ(loadFile("<!-- no element -->"), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "HierarchicalDB::loadFromFile: TXML LoadFile returned true ."));
  log.clear();
  EXPECT_EQ(loadFile("<a>"), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "HierarchicalDB::loadFromFile: TXML LoadFile returned false ."));
}

TEST_F(HierarchicalDBLoadingFile, FailsForWhatIsNoRegularFile) {
  using namespace std::string_literals;
  for (std::string const& path :
       {path("missing.xml"), mDirectories.writable(), ""s, "/dev/null"s, "/dev/zero"s, "\0"s}) {
    EXPECT_EQ(mDatabase.loadFromFile(path), -1) << path;
    EXPECT_FALSE(mDatabase.isLoaded());
  }
}

TEST_F(HierarchicalDBLoadingFile, FailsWhenTheFileCannotBeRead) {
  FakeFiles::FailNth(FakeFiles::Read);
  EXPECT_EQ(loadFile("<a/>"), -1);
  EXPECT_EQ(mDatabase.loadFromFile(path("a.xml")), 0);
}

TEST_F(HierarchicalDBLoadingFile, MayBeRepeated) {
  EXPECT_EQ(loadFile("<a>"), -1);
  EXPECT_EQ(loadFile("<a>1</a>"), 0);
  EXPECT_EQ(loadFile("<a>2</a>"), 0);
  EXPECT_THAT(read("/a/text()"), Optional(std::string("2")));
}

TEST_F(HierarchicalDBLoadingFile, MakesEveryLineEndALineFeed) {
  ASSERT_EQ(loadFile("<a><![CDATA[1\r\n2\r3\n4\r\r\n5]]></a>\r"), 0);
  EXPECT_THAT(read("/a/text()"), Optional(std::string("\n<![CDATA[1\n2\n3\n4\n\n5]]>\n")));
}

TEST_F(HierarchicalDBLoadingFile, TakesFilesOf4Megabytes) {
  std::string const filling(cMaxFile - 7, 'x');
  EXPECT_EQ(loadFile("<a>" + filling + "</a>"), 0);
  LogCapture log;
  EXPECT_EQ(loadFile("<a>" + filling + "x</a>"), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "XmlFile::read: File too long: " + path("a.xml")));
}

TEST_F(HierarchicalDBLoadingFile, RefusesWhatNestsTooDeep) {
  LogCapture log;
  EXPECT_EQ(loadFile(Testing::repeat("<a>", 128) + Testing::repeat("</a>", 128)), 0);
  EXPECT_EQ(loadFile(Testing::repeat("<a>", 129) + Testing::repeat("</a>", 129)), -1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "HierarchicalDB::loadFromFile: Refused: elements nested too deep."));
}

TEST_F(HierarchicalDBLoadingFile, GivesWhatTheLibraryGivesForTheSameFile) {
  static char const* const pieces[] = {"<a>",
                                       "</a>",
                                       "<b x='1'/>",
                                       "\r",
                                       "\n",
                                       "\r\n",
                                       "\t",
                                       " ",
                                       "text",
                                       "<!--",
                                       "-->",
                                       "&lt;",
                                       "&#x41;",
                                       "&#",
                                       "<![CDATA[",
                                       "]]>",
                                       "<?xml version='1.0'?>",
                                       "</b>",
                                       "<c y=\"\r\n\">",
                                       "</c>",
                                       "<!DOCTYPE a>"};
  LogCapture quiet;
  std::mt19937 random(20240712);
  int good = 0;
  for (int turn = 0; turn < 3000; ++turn) {
    std::string content = turn % 2 != 0 ? "<a>" : "";
    for (unsigned count = random() % 8; count > 0; --count) {
      content += pieces[random() % std::size(pieces)];
    }
    content += turn % 2 != 0 ? "</a>" : "";
    if (turn % 16 == 0) {
      content += std::string(1, '\0') + "<z/>";
    }
    int const result = loadFile(content);
    TiXmlDocument library(path("a.xml").c_str());
    bool const expected = library.LoadFile(TIXML_ENCODING_UNKNOWN);
    ASSERT_EQ(result == 0, expected && library.FirstChildElement() != nullptr) << content;
    if (result == 0) {
      ++good;
      ASSERT_EQ(save(), 0) << content;
      library.SaveFile(path("library.xml").c_str());
      ASSERT_EQ(saved(), mDirectories.getWritable("library.xml")) << content;
    }
  }
  EXPECT_GT(good, 300);
}

// ---- Saving

TEST_F(HierarchicalDBSavingFile, WritesTheLayoutOfTheLibrary) {
  load("<?xml version='1.0' encoding='UTF-8'?><a x='1'><b/>text<c>1</c></a>");
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(saved(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
            "<a x=\"1\">\n    <b />text\n    <c>1</c>\n</a>\n");
}

TEST_F(HierarchicalDBSavingFile, KeepsTheMarkOfUtf8) {
  load("\xEF\xBB\xBF<a/>");
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(saved(), "\xEF\xBB\xBF<a />\n");
  load("<a/>");
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(saved(), "<a />\n");
}

TEST_F(HierarchicalDBSavingFile, WritesWhatLoadsAsTheSame) {
  load("<a x='&amp;lt;'><b>1 &lt; 2</b><!--c--><![CDATA[<d>]]></a>");
  std::string const before = all();
  ASSERT_EQ(save(), 0);
  ASSERT_EQ(mDatabase.loadFromFile(path("a.xml.tmp")), 0);
  EXPECT_EQ(all(), before);
}

TEST_F(HierarchicalDBSavingFile, SyncsBehindTheFile) {
  load("<a/>");
  EXPECT_EQ(save(), 0);
  EXPECT_THAT(FakeShell::Lines(), ElementsAre("sync"));
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Sync), 1) << "and the file by itself";
}

struct Fault {
  char const* name;
  void (*bringAbout)();
};

class HierarchicalDBSavingFault : public HierarchicalDBFile,
                                  public testing::WithParamInterface<Fault> {};

TEST_P(HierarchicalDBSavingFault, IsReportedAndLeavesTreeAndOldFile) {
  mDirectories.putWritable("a.xml", "<old/>");
  load("<a>1</a>");
  LogCapture log;
  GetParam().bringAbout();
  EXPECT_EQ(save(), -1);
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "HierarchicalDB::saveToFile: Failed to save XML file."));
  EXPECT_THAT(FakeShell::Lines(), ElementsAre("sync"));
  EXPECT_EQ(all(), "<a>1</a>");
  EXPECT_EQ(mDirectories.getWritable("a.xml"), "<old/>");
  FakeFiles::Reset();
  EXPECT_EQ(save(), 0) << "the next one may succeed";
  EXPECT_TRUE(DurableFile::Replace(path("a.xml.tmp"), path("a.xml")));
  EXPECT_EQ(mDirectories.getWritable("a.xml"), "<a>1</a>\n");
}

INSTANTIATE_TEST_SUITE_P(
    Faults, HierarchicalDBSavingFault,
    testing::Values(Fault{"Open", [] { FakeFiles::FailNth(FakeFiles::Open); }},
                    Fault{"Write", [] { FakeFiles::FailNth(FakeFiles::Write); }},
                    Fault{"Sync", [] { FakeFiles::FailNth(FakeFiles::Sync); }},
                    Fault{"Close", [] { FakeFiles::FailNth(FakeFiles::Close); }},
                    Fault{"DiskFull", [] { FakeFiles::DiskFullAfter(3); }}),
    [](auto const& aInfo) { return aInfo.param.name; });

TEST_F(HierarchicalDBSavingFile, LeavesTheOldFileWhenItCannotBeReplaced) {
  mDirectories.putWritable("a.xml", "<old/>");
  load("<a/>");
  ASSERT_EQ(save(), 0);
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_FALSE(DurableFile::Replace(path("a.xml.tmp"), path("a.xml")));
  EXPECT_EQ(mDirectories.getWritable("a.xml"), "<old/>");
}

TEST_F(HierarchicalDBSavingFile, FailsInADirectoryThatIsMissing) {
  load("<a/>");
  EXPECT_EQ(mDatabase.saveToFile(path("no/such/a.xml")), -1);
  EXPECT_EQ(mDatabase.saveToFile(mDirectories.writable()), -1);
  EXPECT_EQ(mDatabase.saveToFile(""), -1);
}

TEST_F(HierarchicalDBSavingFile, FailsWithoutADocument) {
  EXPECT_EQ(save(), -1);
  EXPECT_EQ(mDatabase.loadFromString(""), -1);
  EXPECT_EQ(save(), -1);
  EXPECT_FALSE(mDirectories.hasWritable("a.xml.tmp"));
  EXPECT_EQ(FakeShell::Count("sync"), 2) << "also after a failure";
}

TEST_F(HierarchicalDBSavingFile, DoesNotAskWhetherTheDocumentWasLoaded) {
  // A file with an error is not loaded, but what was read of it can be written.
  ASSERT_EQ(loadFile("<a><b>1</b>"), -1);
  EXPECT_EQ(save(), 0);
  EXPECT_EQ(saved(), "<a>\n    <b>1</b>\n</a>\n");
}

TEST_F(HierarchicalDBSavingFile, WritesFilesOf4Megabytes) {
  // "<a>", "</a>" and the line end.
  std::string const filling(cMaxFile - 8, 'x');
  load("<a>" + filling + "</a>");
  ASSERT_EQ(save(), 0);
  EXPECT_EQ(saved().size(), cMaxFile);
  EXPECT_EQ(mDatabase.loadFromFile(path("a.xml.tmp")), 0);

  load("<a>" + filling + "x</a>");
  LogCapture log;
  EXPECT_EQ(save(), -1);
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "HierarchicalDB::saveToFile: Refused: document too long."));
  EXPECT_EQ(saved().size(), cMaxFile) << "the file was not touched";
}

TEST_F(HierarchicalDBSavingFile, DoesNotLetIndentationFillTheMemory) {
  load(Testing::repeat("<a>", 127) + Testing::repeat("<b/>", 500000) +
       Testing::repeat("</a>", 127));
  EXPECT_EQ(save(), -1);
  EXPECT_FALSE(mDirectories.hasWritable("a.xml.tmp"));
}

TEST_F(HierarchicalDBSavingFile, WritesNothingThatWouldNotLoadAgain) {
  // Printed between double quotes, this is no declaration any more.
  load("<?xml version='\" version '?><a/>");
  LogCapture log;
  EXPECT_EQ(save(), -1);
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "HierarchicalDB::saveToFile: Failed to save XML file."));
  EXPECT_FALSE(mDirectories.hasWritable("a.xml.tmp"));
}

TEST_F(HierarchicalDBSavingFile, SavesAfterAnythingThatAStrangerMayWrite) {
  using namespace std::string_literals;
  std::string const values[] = {"<x></x></x>"s,
                                "<x></x></a><y/>"s,
                                "<?xml version='\"'?><x/>"s,
                                "<x><?xml encoding='&#34;'?></x>"s,
                                "]]>"s,
                                "<![CDATA[a"s,
                                "<x><![CDATA[a]]"s,
                                "<!--a"s,
                                "<x><!--a"s,
                                "\xF0"s,
                                "<x>\xF0</x>"s,
                                "<\xEF\xBB\xBFx/>"s,
                                "<x \xEF\xBB\xBFy=''/>"s,
                                "a\0b"s,
                                "\r\n\t\x01\x1F"s,
                                "<x y='&#0;'>&#0;</x>"s,
                                "&#xZZ;"s,
                                "<x>&#xZZ;</x>"s,
                                "<!x><y/>"s,
                                "< x><y/>"s,
                                "<x><!"s,
                                "<x y='"s,
                                "<1/><x/>"s};
  std::string const paths[] = {"/a/b/text()", "/a/c/text()", "/a/@x", "/a/@", "/a/@y z", "/a/x"};
  for (char const* head : {"", "<?xml version='1.0' encoding='UTF-8'?>", "\xEF\xBB\xBF"}) {
    for (std::string const& value : values) {
      for (std::string const& path : paths) {
        LogCapture quiet;
        load(head + std::string("<a x='1'><b><![CDATA[t]]></b><c/></a>"));
        write(path, value, true);
        EXPECT_EQ(save(), 0) << head << path << " " << value;
      }
    }
  }
}

}  // namespace
}  // namespace Zelv::Infrastructure
