#include "zelv/platform/fake/FakeFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "zelv/platform/DurableFile.h"
#include "zelv/platform/PCFile.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace {

using Zelv::Platform::DurableFile;
using Zelv::Platform::Fake::FakeFiles;
using Zelv::Platform::Fake::TemporaryDirectories;

int descriptors() {
  std::filesystem::directory_iterator const directory("/proc/self/fd");
  return static_cast<int>(std::distance(begin(directory), end(directory)));
}

class FakeFilesTest : public ::testing::Test {
 protected:
  FakeFilesTest() : mPath(mDirectories.writable() + "file") {}

  bool write(std::string const& aContent) const {
    return DurableFile::Write(mPath, aContent.data(), aContent.size());
  }

  TemporaryDirectories const mDirectories;
  std::string const mPath;
};

TEST_F(FakeFilesTest, MakesASeekFail) {
  ASSERT_TRUE(write("content"));
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  FakeFiles::FailNth(FakeFiles::Seek, 2);
  EXPECT_EQ(file.Seek(0, PCFile::End), 7);
  EXPECT_EQ(file.Seek(0, PCFile::Begin), -1);
  EXPECT_EQ(file.Seek(0, PCFile::Begin), 0);
}

TEST_F(FakeFilesTest, MakesAWriteFailAtEachOfItsSteps) {
  int const before = descriptors();
  for (FakeFiles::Call const call :
       {FakeFiles::Open, FakeFiles::Write, FakeFiles::Sync, FakeFiles::Close}) {
    FakeFiles::FailNth(call);
    EXPECT_FALSE(write("text")) << call;
    EXPECT_TRUE(write("text")) << call;
  }
  EXPECT_EQ(before, descriptors());
}

TEST_F(FakeFilesTest, MakesAReplacementFailWithTheOldFileInItsPlace) {
  mDirectories.putWritable("file", "old");
  mDirectories.putWritable("file.tmp", "new");
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_FALSE(DurableFile::Replace(mPath + ".tmp", mPath));
  EXPECT_EQ("old", mDirectories.getWritable("file"));
  EXPECT_EQ("new", mDirectories.getWritable("file.tmp"));
}

TEST_F(FakeFilesTest, MakesAReplacementFailWithTheNewFileInItsPlaceWhenOnlyTheLastStepFails) {
  int const before = descriptors();
  for (FakeFiles::Call const call : {FakeFiles::Open, FakeFiles::Sync, FakeFiles::Close}) {
    mDirectories.putWritable("file", "old");
    mDirectories.putWritable("file.tmp", "new");
    FakeFiles::FailNth(call);
    EXPECT_FALSE(DurableFile::Replace(mPath + ".tmp", mPath)) << call;
    EXPECT_EQ("new", mDirectories.getWritable("file")) << call;
  }
  EXPECT_EQ(before, descriptors());
}

TEST_F(FakeFilesTest, MakesARemovalFail) {
  mDirectories.putWritable("file", "text");
  FakeFiles::FailNth(FakeFiles::Remove);
  EXPECT_FALSE(DurableFile::Remove(mPath));
  EXPECT_TRUE(mDirectories.hasWritable("file"));
  EXPECT_TRUE(DurableFile::Remove(mPath));
}

TEST_F(FakeFilesTest, FailsTheNthCallAlone) {
  FakeFiles::FailNth(FakeFiles::Sync, 3);
  EXPECT_TRUE(write("1"));
  EXPECT_TRUE(write("2"));
  EXPECT_FALSE(write("3"));
  EXPECT_TRUE(write("4"));
}

TEST_F(FakeFilesTest, FailsEveryCallFromTheNthOn) {
  FakeFiles::FailFrom(FakeFiles::Open, 2);
  EXPECT_TRUE(write("1"));
  EXPECT_FALSE(write("2"));
  EXPECT_FALSE(write("3"));
  FakeFiles::Reset();
  EXPECT_TRUE(write("4"));
}

TEST_F(FakeFilesTest, FillsTheDiskWithinAWrite) {
  FakeFiles::DiskFullAfter(6);
  EXPECT_TRUE(write("1234"));
  EXPECT_FALSE(write("5678"));
  EXPECT_EQ("56", mDirectories.getWritable("file"));
  EXPECT_EQ(3, FakeFiles::Count(FakeFiles::Write));
  EXPECT_FALSE(write("9"));
  EXPECT_TRUE(write(""));
  FakeFiles::Reset();
  EXPECT_TRUE(write("5678"));
}

TEST_F(FakeFilesTest, MakesReadersFail) {
  mDirectories.putWritable("file", "text");
  PCFile file;
  FakeFiles::FailNth(FakeFiles::Open);
  EXPECT_FALSE(file.Create(mPath.c_str(), 0));
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  FakeFiles::FailNth(FakeFiles::Read, 2);
  char buffer[2];
  EXPECT_EQ(2, file.Read(buffer, sizeof buffer));
  EXPECT_EQ(-1, file.Read(buffer, sizeof buffer));
  EXPECT_EQ(2, file.Read(buffer, sizeof buffer));
}

TEST_F(FakeFilesTest, CountsCallsSinceReset) {
  EXPECT_EQ(0, FakeFiles::Count(FakeFiles::Open));
  FakeFiles::FailNth(FakeFiles::Open, 2);
  write("1");
  write("2");
  EXPECT_EQ(2, FakeFiles::Count(FakeFiles::Open));
  EXPECT_EQ(1, FakeFiles::Count(FakeFiles::Close));
  FakeFiles::Reset();
  EXPECT_EQ(0, FakeFiles::Count(FakeFiles::Open));
}

}  // namespace
