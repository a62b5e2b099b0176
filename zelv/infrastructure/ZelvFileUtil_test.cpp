#include "zelv/infrastructure/ZelvFileUtil.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "zelv/platform/Directories.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using testing::ElementsAre;
using testing::IsEmpty;

class ZelvFileUtilTest : public testing::Test {
 protected:
  int check(bool aValidate = true) {
    return ZelvFileUtil::checkIsFileAvailable("Users.xml", mDirectories.writable(), aValidate);
  }

  std::string writable(std::string const& aName) const { return mDirectories.writable() + aName; }

  /// The three lines that copy Users.xml.
  std::vector<std::string> copying() const {
    return {"mkdir -m 777 -p " + mDirectories.writable(),
            "cp -r " + mDirectories.readOnly() + "Users.xml " + writable("Users.xml"), "sync"};
  }

  TemporaryDirectories mDirectories;
  LogCapture mLog;
};

TEST_F(ZelvFileUtilTest, EndsADirectoryInASlash) {
  std::string const rows[][2] = {{"/x", "/x/"}, {"/x/", "/x/"}, {"", "/"}, {"/", "/"}};
  for (auto const& row : rows) {
    std::string directory = row[0];
    EXPECT_EQ(ZelvFileUtil::normalizePathParameter(directory), 0);
    EXPECT_EQ(directory, row[1]);
  }
}

TEST_F(ZelvFileUtilTest, TakesOneLeadingSlashFromAFile) {
  std::string const rows[][2] = {
      {"/Users.xml", "Users.xml"}, {"Users.xml", "Users.xml"}, {"//x", "/x"}, {"", ""}, {"/", ""}};
  for (auto const& row : rows) {
    std::string file = row[0];
    EXPECT_EQ(ZelvFileUtil::normalizeFileParameter(file), 0);
    EXPECT_EQ(file, row[1]);
  }
}

TEST_F(ZelvFileUtilTest, KnowsWhetherAFileExists) {
  mDirectories.putWritable("Users.xml", "");
  EXPECT_EQ(ZelvFileUtil::checkIfFileExists(writable("Users.xml")), 0);
  EXPECT_EQ(mLog.count(PCRealDebug::Warning), 0);
  EXPECT_EQ(ZelvFileUtil::checkIfFileExists(writable("Other.xml")), -1);
  EXPECT_THAT(mLog, Logged(PCRealDebug::Warning,
                           "ZelvFileUtil::checkIfFileExists: File does not exist!!!."));
}

// ---- restoreFile

TEST_F(ZelvFileUtilTest, RestoresByThreeCommandsInOrder) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  EXPECT_EQ(ZelvFileUtil::restoreFile("Users.xml", mDirectories.writable()), 0);
  EXPECT_EQ(FakeShell::Lines(), copying());
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Users/>");
}

TEST_F(ZelvFileUtilTest, NormalisesNamesBeforeTheCommands) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  FakeShell::SetMode(FakeShell::RecordOnly);
  EXPECT_EQ(ZelvFileUtil::restoreFile("/Users.xml", "/x"), 0);
  EXPECT_THAT(FakeShell::Lines(),
              ElementsAre("mkdir -m 777 -p /x/",
                          "cp -r " + mDirectories.readOnly() + "Users.xml /x/Users.xml", "sync"));
}

TEST_F(ZelvFileUtilTest, DoesNotLookAtWhatTheCommandsAchieved) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  FakeShell::FailLinesWith("mkdir");
  FakeShell::FailLinesWith("cp");
  EXPECT_EQ(ZelvFileUtil::restoreFile("Users.xml", mDirectories.writable()), 0);
  EXPECT_EQ(FakeShell::Lines(), copying());
}

TEST_F(ZelvFileUtilTest, DoesNotRestoreWithoutAFactoryFile) {
  EXPECT_EQ(ZelvFileUtil::restoreFile("Users.xml", mDirectories.writable()), -1);
  EXPECT_THAT(mLog, Logged(PCRealDebug::Error,
                           "ZelvFileUtil::restoreFile: File doesn't exist in static folder!!!."));
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
}

TEST_F(ZelvFileUtilTest, DoesNotRestoreWithoutNames) {
  for (auto const& [file, directory] :
       std::vector<std::pair<std::string, std::string>>{{"", "/x/"}, {"f", ""}, {"", ""}}) {
    mLog.clear();
    EXPECT_EQ(ZelvFileUtil::restoreFile(file, directory), -1);
    EXPECT_THAT(mLog, Logged(PCRealDebug::Error,
                             "ZelvFileUtil::restoreFile: Invalid parameters for arguments!!!."));
    EXPECT_EQ(ZelvFileUtil::copyIfNotFound(file, directory), -1);
    EXPECT_THAT(mLog, Logged(PCRealDebug::Error,
                             "ZelvFileUtil::copyIfNotFound: Invalid parameters for arguments!!!."));
  }
}

TEST_F(ZelvFileUtilTest, LetsNoNameReachTheShellThatIsMoreThanAName) {
  using namespace std::string_literals;
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  std::string const directory = mDirectories.writable();
  for (std::string const& name :
       {"a b"s, "a;reboot"s, "$(reboot)"s, "`reboot`"s, "a|b"s, "a&b"s, "a>b"s, "a\nb"s, "a\0b"s,
        "a*"s, "a?"s, "'a"s, "\"a"s, "a\\b"s, "\xC3\xA9"s, "a=b"s, "~"s}) {
    EXPECT_EQ(ZelvFileUtil::restoreFile(name, directory), -1) << name;
    EXPECT_EQ(ZelvFileUtil::restoreFile("Users.xml", "/x/" + name), -1) << name;
    EXPECT_EQ(ZelvFileUtil::checkIsFileAvailable(name, directory, true), -1) << name;
  }
  EXPECT_EQ(ZelvFileUtil::restoreFile("Users.xml", "-x"), -1) << "no option either";
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_TRUE(mLog.has(PCRealDebug::Error,
                       "ZelvFileUtil::restoreFile: Invalid parameters for arguments!!!."));
}

TEST_F(ZelvFileUtilTest, LetsNoFileLieOutsideOfItsDirectory) {
  for (char const* file : {"..", "../Users.xml", "/../Users.xml", "a/../../Users.xml", "a/.."}) {
    EXPECT_EQ(ZelvFileUtil::restoreFile(file, mDirectories.writable()), -1) << file;
  }
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  mDirectories.putReadOnly("a..b.xml", "<a/>");
  EXPECT_EQ(ZelvFileUtil::restoreFile("a..b.xml", mDirectories.writable()), 0);
}

// ---- copyIfNotFound

TEST_F(ZelvFileUtilTest, CopiesAMissingFileOnly) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  EXPECT_EQ(ZelvFileUtil::copyIfNotFound("Users.xml", mDirectories.writable()), 0);
  EXPECT_EQ(FakeShell::Lines(), copying());
  mDirectories.putWritable("Users.xml", "<Changed/>");
  FakeShell::ClearLines();
  EXPECT_EQ(ZelvFileUtil::copyIfNotFound("/Users.xml", mDirectories.writable()), 0);
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Changed/>");
}

// ---- checkIsFileAvailable

TEST_F(ZelvFileUtilTest, LeavesAGoodFileAlone) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  mDirectories.putWritable("Users.xml", "<Users>1</Users>");
  EXPECT_EQ(check(), 0);
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Users>1</Users>");
}

TEST_F(ZelvFileUtilTest, NeedsNoFactoryFileForAGoodFile) {
  mDirectories.putWritable("Users.xml", "<Users/>");
  EXPECT_EQ(check(), 0);
}

TEST_F(ZelvFileUtilTest, BringsAMissingFileAndItsDirectory) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  mDirectories.removeWritableDirectory();
  EXPECT_EQ(check(), 0);
  EXPECT_EQ(FakeShell::Lines(), copying());
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Users/>");
}

TEST_F(ZelvFileUtilTest, ReplacesAFileThatDoesNotLoad) {
  using namespace std::string_literals;
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  for (std::string const& content : {""s, "<Users>"s, "<Users><User></Users>"s,
                                     "\x7F"
                                     "ELF\0\1\2"s,
                                     " \n"s, "no xml"s}) {
    mDirectories.putWritable("Users.xml", content);
    mLog.clear();
    FakeShell::ClearLines();
    EXPECT_EQ(check(), 0) << content;
    EXPECT_EQ(FakeShell::Lines(), copying());
    EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Users/>");
    EXPECT_THAT(mLog, Logged(PCRealDebug::Notable,
                             "ZelvFileUtil::checkIsFileAvailable: File successfully restored!"));
  }
}

TEST_F(ZelvFileUtilTest, AcceptsACorruptFileWhenNotAskedToValidate) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  mDirectories.putWritable("Users.xml", "");
  EXPECT_EQ(check(false), 0);
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "");
}

TEST_F(ZelvFileUtilTest, ReplacesAFileThatCannotBeRead) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  mDirectories.putWritable("Users.xml", "<Users>1</Users>");
  FakeFiles::FailNth(FakeFiles::Read);
  EXPECT_EQ(check(), 0);
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Users/>");
}

TEST_F(ZelvFileUtilTest, FailsWithoutFileAndFactoryFile) {
  EXPECT_EQ(check(), -1);
  EXPECT_EQ(check(false), -1);
}

TEST_F(ZelvFileUtilTest, LeavesACorruptFileWithoutAFactoryFile) {
  mDirectories.putWritable("Users.xml", "<Users>");
  EXPECT_EQ(check(), -1);
  EXPECT_EQ(mDirectories.getWritable("Users.xml"), "<Users>");
}

TEST_F(ZelvFileUtilTest, FindsACopyThatFailedByLoadingIt) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  mDirectories.putWritable("Users.xml", "<Users>");
  // As on a full disk.
  FakeShell::FailLinesWith("cp");
  EXPECT_EQ(check(), -1);
  EXPECT_EQ(FakeShell::Lines(), copying());
  FakeShell::Reset();
  EXPECT_EQ(check(), 0) << "the next start tries again";
}

TEST_F(ZelvFileUtilTest, FailsWhenTheFactoryFileIsCorruptToo) {
  mDirectories.putReadOnly("Users.xml", "<Users>");
  EXPECT_EQ(check(), -1);
  EXPECT_EQ(FakeShell::Lines().size(), 6U) << "once because it was missing, once as a repair";
}

// ---- Texts of the log

struct LogRow {
  PCRealDebug::Level level;
  std::string text;
};

bool operator==(Platform::Fake::LogLine const& aLine, LogRow const& aRow) {
  return aLine.level == aRow.level && aLine.text == aRow.text;
}

class ZelvFileUtilLog : public ZelvFileUtilTest {
 protected:
  /// Compares all lines of checkIsFileAvailable(), in order.
  void expectLines(std::vector<LogRow> const& aRows) {
    std::vector<Platform::Fake::LogLine> lines;
    for (auto const& line : mLog.lines()) {
      if (line.text.starts_with("ZelvFileUtil::checkIsFileAvailable")) {
        lines.push_back(line);
      }
    }
    ASSERT_EQ(lines.size(), aRows.size()) << mLog.dump();
    for (std::size_t index = 0; index < lines.size(); ++index) {
      EXPECT_TRUE(lines[index] == aRows[index]) << lines[index].text << "\ninstead of\n"
                                                << aRows[index].text;
    }
  }

  LogRow const mEntry{PCRealDebug::Error, "ZelvFileUtil::checkIsFileAvailable: Entry."};
  LogRow const mExit{PCRealDebug::Error, "ZelvFileUtil::checkIsFileAvailable: Exit."};
  LogRow const mFail{PCRealDebug::Error, "ZelvFileUtil::checkIsFileAvailable: Exit. (fail)"};
  LogRow const mChecking{PCRealDebug::Notable,
                         "ZelvFileUtil::checkIsFileAvailable: Checking file 'Users.xml' in "
                         "directory '" +
                             mDirectories.writable() + "' and validating XML integrity."};
  LogRow const mValidating{PCRealDebug::Notable,
                           "ZelvFileUtil::checkIsFileAvailable: Validating XML.  Full path: '" +
                               writable("Users.xml") + "'"};
};

TEST_F(ZelvFileUtilLog, TellsOfAGoodFile) {
  mDirectories.putWritable("Users.xml", "<Users/>");
  check();
  expectLines({mEntry, mChecking, mValidating, mExit});
}

TEST_F(ZelvFileUtilLog, TellsOfAFileThatIsOnlyThere) {
  mDirectories.putWritable("Users.xml", "<Users/>");
  check(false);
  expectLines({mEntry,
               {PCRealDebug::Notable,
                "ZelvFileUtil::checkIsFileAvailable: Checking file 'Users.xml' in directory '" +
                    mDirectories.writable() + "'."},
               mExit});
}

TEST_F(ZelvFileUtilLog, TellsOfAFileThatIsNowhere) {
  check();
  expectLines({mEntry,
               mChecking,
               mFail,
               {PCRealDebug::Error,
                "ZelvFileUtil::checkIsFileAvailable: error!! file Users.xml not found in r/o "
                "area!!!"}});
}

TEST_F(ZelvFileUtilLog, TellsOfARepair) {
  mDirectories.putReadOnly("Users.xml", "<Users/>");
  mDirectories.putWritable("Users.xml", "");
  check();
  expectLines(
      {mEntry,
       mChecking,
       mValidating,
       {PCRealDebug::Notable, "ZelvFileUtil::checkIsFileAvailable: File successfully restored!"},
       mExit});
}

TEST_F(ZelvFileUtilLog, TellsOfARepairWithoutAFactoryFile) {
  mDirectories.putWritable("Users.xml", "");
  check();
  expectLines({mEntry,
               mChecking,
               mValidating,
               mFail,
               {PCRealDebug::Error,
                "ZelvFileUtil::checkIsFileAvailable: error!! file Users.xml failed to restore from "
                "the r/o area!!!"}});
}

TEST_F(ZelvFileUtilLog, TellsOfARepairInVain) {
  mDirectories.putReadOnly("Users.xml", "");
  mDirectories.putWritable("Users.xml", "");
  check();
  expectLines({mEntry,
               mChecking,
               mValidating,
               mFail,
               {PCRealDebug::Error,
                "ZelvFileUtil::checkIsFileAvailable: error!! file Users.xml is corrupted!!! (xml "
                "check)"}});
}

}  // namespace
}  // namespace Zelv::Infrastructure
