#include "zelv/platform/Shell.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

namespace fs = std::filesystem;
using Zelv::Platform::Shell;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Testing::TestDirectories;

class ShellTest : public ::testing::Test {
 protected:
  static void put(std::string const& aPath, std::string const& aContent) {
    std::ofstream(aPath, std::ios::binary) << aContent;
  }

  static std::string content(std::string const& aPath) {
    std::ostringstream text;
    text << std::ifstream(aPath, std::ios::binary).rdbuf();
    return text.str();
  }

  static unsigned mode(std::string const& aPath) {
    struct stat status {};
    return ::stat(aPath.c_str(), &status) == 0 ? status.st_mode & 0777U : 0U;
  }

  TestDirectories mDirectories;
  std::string const& mFrom = mDirectories.readOnly();
  std::string const& mTo = mDirectories.writable();
};

TEST_F(ShellTest, CallsPlainWhatHoldsOnlyLettersDigitsAndFewSigns) {
  for (char const* const name : {"a", "Z", "0", ".", "_", "-", "/", "/mtd_rwarea/kor_config_data/",
                                 "Devices.xml.tmp", "Images_960x540", "../x"}) {
    EXPECT_TRUE(Shell::IsPlain(name)) << name;
  }
}

TEST_F(ShellTest, DoesNotCallAnythingElsePlain) {
  EXPECT_FALSE(Shell::IsPlain(""));
  EXPECT_FALSE(Shell::IsPlain(std::string("a\0b", 3)));
  for (int byte = 1; byte < 256; ++byte) {
    auto const character = static_cast<char>(byte);
    bool const plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= '0' && byte <= '9') ||
                       std::string("._-/").find(character) != std::string::npos;
    EXPECT_EQ(plain, Shell::IsPlain(std::string("a") + character)) << byte;
  }
}

TEST_F(ShellTest, RefusesLinesWithAnyOtherCharacterAndReportsThem) {
  LogCapture log;
  int refused = 0;
  for (int byte = 0; byte < 256; ++byte) {
    auto const character = static_cast<char>(byte);
    std::string const line = std::string("mkdir -m 777 -p ") + mTo + "a" + character + "b";
    bool const allowed = Shell::IsPlain(std::string(1, character)) || character == ' ' ||
                         character == '*' || character == ';';
    if (!allowed) {
      EXPECT_EQ(-1, Shell::Run(line)) << byte;
      ++refused;
    }
  }
  EXPECT_EQ(256 - 66 - 3, refused);
  EXPECT_EQ(refused,
            log.countContaining(PCRealDebug::Error, "Shell::Run: refused the line 'mkdir"));
  EXPECT_TRUE(fs::is_empty(mTo));
}

TEST_F(ShellTest, MakesADirectoryForEverybody) {
  fs::remove(mTo);
  EXPECT_EQ(0, Shell::Run("mkdir -m 777 -p " + mTo));
  EXPECT_EQ(0777U, mode(mTo));
}

TEST_F(ShellTest, MakesTheDirectoriesAbove) {
  EXPECT_EQ(0, Shell::Run("mkdir -m 777 -p " + mTo + "a/b/c"));
  EXPECT_TRUE(fs::is_directory(mTo + "a/b/c"));
  EXPECT_EQ(0777U, mode(mTo + "a/b/c"));
}

TEST_F(ShellTest, AcceptsADirectoryThatIsThere) {
  put(mTo + "kept", "text");
  EXPECT_EQ(0, Shell::Run("mkdir -m 777 -p " + mTo));
  EXPECT_EQ("text", content(mTo + "kept"));
}

TEST_F(ShellTest, FailsToMakeADirectoryInThePlaceOfAFile) {
  put(mTo + "file", "text");
  EXPECT_NE(0, Shell::Run("mkdir -m 777 -p " + mTo + "file/b"));
  EXPECT_EQ("text", content(mTo + "file"));
}

TEST_F(ShellTest, CopiesAllFilesOfADirectory) {
  put(mFrom + "Devices.xml", "devices");
  put(mFrom + "tv.png", "picture");
  EXPECT_EQ(0, Shell::Run("cp " + mFrom + "* " + mTo));
  EXPECT_EQ("devices", content(mTo + "Devices.xml"));
  EXPECT_EQ("picture", content(mTo + "tv.png"));
}

TEST_F(ShellTest, FailsToCopyFromAnEmptyDirectory) {
  EXPECT_NE(0, Shell::Run("cp " + mFrom + "* " + mTo));
}

TEST_F(ShellTest, CopiesAFileOverAnother) {
  put(mFrom + "Users.xml", "factory");
  put(mTo + "Users.xml", "a corrupt one that is longer");
  EXPECT_EQ(0, Shell::Run("cp -r " + mFrom + "Users.xml " + mTo + "Users.xml"));
  EXPECT_EQ("factory", content(mTo + "Users.xml"));
}

TEST_F(ShellTest, CopiesADirectoryWithWhatIsInIt) {
  fs::create_directory(mFrom + "pictures");
  put(mFrom + "pictures/tv.png", "picture");
  EXPECT_EQ(0, Shell::Run("cp -r " + mFrom + "pictures " + mTo));
  EXPECT_EQ("picture", content(mTo + "pictures/tv.png"));
}

TEST_F(ShellTest, LeavesDirectoriesOutWhenCopyingFiles) {
  fs::create_directory(mFrom + "pictures");
  put(mFrom + "Users.xml", "users");
  EXPECT_NE(0, Shell::Run("cp " + mFrom + "* " + mTo));
  EXPECT_EQ("users", content(mTo + "Users.xml"));
  EXPECT_FALSE(fs::exists(mTo + "pictures"));
}

TEST_F(ShellTest, FailsToCopyAFileThatIsNotThere) {
  EXPECT_NE(0, Shell::Run("cp -r " + mFrom + "Users.xml " + mTo + "Users.xml"));
  EXPECT_FALSE(fs::exists(mTo + "Users.xml"));
}

TEST_F(ShellTest, FailsToCopyIntoADirectoryThatIsNotThere) {
  put(mFrom + "Users.xml", "users");
  put(mFrom + "Mime.xml", "mime");
  EXPECT_NE(0, Shell::Run("cp " + mFrom + "* " + mTo + "missing/"));
}

TEST_F(ShellTest, OpensAllFilesOfADirectoryToEverybody) {
  put(mTo + "Devices.xml", "devices");
  put(mTo + "Users.xml", "users");
  fs::permissions(mTo + "Devices.xml", fs::perms::owner_read);
  EXPECT_EQ(0, Shell::Run("cd " + mTo + "; chmod 777 *"));
  EXPECT_EQ(0777U, mode(mTo + "Devices.xml"));
  EXPECT_EQ(0777U, mode(mTo + "Users.xml"));
}

TEST_F(ShellTest, GivesTheStatusOfTheLastCommand) {
  put(mTo + "Users.xml", "users");
  EXPECT_EQ(0, Shell::Run("cp " + mTo + "missing " + mTo + "x; cd " + mTo + "; chmod 777 *"));
  EXPECT_NE(0, Shell::Run("cd " + mTo + "; cp missing x"));
}

TEST_F(ShellTest, Gives127ForACommandThatItDoesNotKnow) {
  EXPECT_EQ(127, Shell::Run("zelv-knows-no-such-command"));
}

TEST_F(ShellTest, DoesNothingForAnEmptyLine) {
  EXPECT_EQ(0, Shell::Run(""));
}

TEST_F(ShellTest, ForcesTheWritableFileSystemToTheStorage) {
  EXPECT_EQ(0, Shell::Run("sync"));
}

TEST_F(ShellTest, FailsToForceADirectoryThatIsNotThere) {
  fs::remove(mTo);
  EXPECT_EQ(-1, Shell::Run("sync"));
}

}  // namespace
