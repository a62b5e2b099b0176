#include "zelv/platform/DurableFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "zelv/platform/TestPlatform.h"

namespace {

namespace fs = std::filesystem;
using Zelv::Platform::DurableFile;
using Zelv::Platform::Testing::TestDirectories;

class DurableFileTest : public ::testing::Test {
 protected:
  DurableFileTest() : mPath(mDirectories.writable() + "file") {}

  static std::string content(std::string const& aPath) {
    std::ostringstream text;
    text << std::ifstream(aPath, std::ios::binary).rdbuf();
    return text.str();
  }

  static bool write(std::string const& aPath, std::string const& aContent) {
    return DurableFile::Write(aPath, aContent.data(), aContent.size());
  }

  TestDirectories mDirectories;
  std::string const mPath;
};

TEST_F(DurableFileTest, WritesANewFile) {
  EXPECT_TRUE(write(mPath, std::string("a\0b", 3)));
  EXPECT_EQ(std::string("a\0b", 3), content(mPath));
}

TEST_F(DurableFileTest, WritesOverALongerFile) {
  ASSERT_TRUE(write(mPath, std::string(1000, 'x')));
  EXPECT_TRUE(write(mPath, "short"));
  EXPECT_EQ("short", content(mPath));
}

TEST_F(DurableFileTest, WritesAnEmptyFile) {
  EXPECT_TRUE(DurableFile::Write(mPath, nullptr, 0));
  EXPECT_TRUE(fs::exists(mPath));
  EXPECT_EQ("", content(mPath));
}

TEST_F(DurableFileTest, WritesALargeFile) {
  std::string large(5 * 1024 * 1024, '.');
  for (std::size_t i = 0; i < large.size(); i += 4096) {
    large[i] = static_cast<char>('a' + i / 4096 % 26);
  }
  EXPECT_TRUE(write(mPath, large));
  EXPECT_TRUE(content(mPath) == large);
}

TEST_F(DurableFileTest, FailsWithoutItsDirectory) {
  EXPECT_FALSE(write(mDirectories.writable() + "missing/file", "text"));
}

TEST_F(DurableFileTest, FailsToWriteADirectory) {
  EXPECT_FALSE(write(mDirectories.writable(), "text"));
}

TEST_F(DurableFileTest, FailsOnAFullDisk) {
  EXPECT_FALSE(write("/dev/full", "text"));
}

TEST_F(DurableFileTest, FailsAtOnceOnAPipeThatNobodyReads) {
  std::string const pipe = mDirectories.writable() + "pipe";
  ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
  EXPECT_FALSE(write(pipe, "text"));
}

TEST_F(DurableFileTest, TakesNoPathThatIsEmptyOrHoldsANul) {
  std::string const cut = mPath + std::string("\0.tmp", 5);
  ASSERT_TRUE(write(mPath, "kept"));
  EXPECT_FALSE(write("", "text"));
  EXPECT_FALSE(write(cut, "text"));
  EXPECT_FALSE(DurableFile::Replace(cut, mPath));
  EXPECT_FALSE(DurableFile::Replace(mPath, cut));
  EXPECT_FALSE(DurableFile::Remove(cut));
  EXPECT_EQ("kept", content(mPath));
}

TEST_F(DurableFileTest, PutsAFileInThePlaceOfAnother) {
  ASSERT_TRUE(write(mPath, "old"));
  ASSERT_TRUE(write(mPath + ".tmp", "new"));
  EXPECT_TRUE(DurableFile::Replace(mPath + ".tmp", mPath));
  EXPECT_EQ("new", content(mPath));
  EXPECT_FALSE(fs::exists(mPath + ".tmp"));
}

TEST_F(DurableFileTest, PutsAFileWhereNoneWas) {
  ASSERT_TRUE(write(mPath + ".tmp", "new"));
  EXPECT_TRUE(DurableFile::Replace(mPath + ".tmp", mPath));
  EXPECT_EQ("new", content(mPath));
}

TEST_F(DurableFileTest, KeepsTheOldFileWhenThereIsNoNewOne) {
  ASSERT_TRUE(write(mPath, "old"));
  EXPECT_FALSE(DurableFile::Replace(mPath + ".tmp", mPath));
  EXPECT_EQ("old", content(mPath));
}

TEST_F(DurableFileTest, ReplacesFilesNamedRelativeToTheCurrentDirectory) {
  fs::path const before = fs::current_path();
  fs::current_path(mDirectories.writable());
  EXPECT_TRUE(write("a", "new"));
  EXPECT_TRUE(DurableFile::Replace("a", "b"));
  fs::current_path(before);
  EXPECT_EQ("new", content(mDirectories.writable() + "b"));
}

TEST_F(DurableFileTest, RemovesAFile) {
  ASSERT_TRUE(write(mPath, "text"));
  EXPECT_TRUE(DurableFile::Remove(mPath));
  EXPECT_FALSE(fs::exists(mPath));
}

TEST_F(DurableFileTest, HasRemovedAFileThatIsNotThere) {
  EXPECT_TRUE(DurableFile::Remove(mPath));
}

TEST_F(DurableFileTest, DoesNotRemoveADirectory) {
  EXPECT_FALSE(DurableFile::Remove(mDirectories.writable()));
  EXPECT_TRUE(fs::exists(mDirectories.writable()));
}

}  // namespace
