#include "zelv/platform/PCFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "zelv/platform/TestPlatform.h"

namespace {

namespace fs = std::filesystem;
using Zelv::Platform::Testing::TestDirectories;

class PCFileTest : public ::testing::Test {
 protected:
  PCFileTest() : mPath(mDirectories.writable() + "file") {
    std::ofstream(mPath, std::ios::binary) << "0123456789";
  }

  // How many descriptors of this process stand for the file, and whether all go at exec.
  int openCount(bool* aAllClosedOnExec = nullptr) const {
    int count = 0;
    for (auto const& entry : fs::directory_iterator("/proc/self/fd")) {
      std::error_code error;
      if (fs::read_symlink(entry.path(), error) == fs::path(mPath)) {
        ++count;
        if (aAllClosedOnExec != nullptr) {
          int const flags = ::fcntl(std::stoi(entry.path().filename().string()), F_GETFD);
          *aAllClosedOnExec = (flags & FD_CLOEXEC) != 0;
        }
      }
    }
    return count;
  }

  TestDirectories mDirectories;
  std::string const mPath;
};

TEST_F(PCFileTest, ReadsAFileToItsEnd) {
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  char buffer[8] = {};
  EXPECT_EQ(8, file.Read(buffer, sizeof buffer));
  EXPECT_EQ("01234567", std::string(buffer, 8));
  EXPECT_EQ(2, file.Read(buffer, sizeof buffer));
  EXPECT_EQ("89", std::string(buffer, 2));
  EXPECT_EQ(0, file.Read(buffer, sizeof buffer));
}

TEST_F(PCFileTest, ReadsNothingWhenNothingIsAsked) {
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  EXPECT_EQ(0, file.Read(nullptr, 0));
}

TEST_F(PCFileTest, OpensAnEmptyFile) {
  std::ofstream(mPath, std::ios::trunc).close();
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  char byte;
  EXPECT_EQ(0, file.Read(&byte, 1));
}

TEST_F(PCFileTest, OpensAPathWithADoubledSlash) {
  PCFile file;
  EXPECT_TRUE(file.Create((mDirectories.writable() + "/file").c_str(), 0));
}

TEST_F(PCFileTest, MovesItsPositionFromThreeOrigins) {
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  char byte = 0;
  EXPECT_EQ(3, file.Seek(3, PCFile::Begin));
  EXPECT_EQ(1, file.Read(&byte, 1));
  EXPECT_EQ('3', byte);
  EXPECT_EQ(6, file.Seek(2, PCFile::Current));
  EXPECT_EQ(1, file.Read(&byte, 1));
  EXPECT_EQ('6', byte);
  EXPECT_EQ(9, file.Seek(-1, PCFile::End));
  EXPECT_EQ(1, file.Read(&byte, 1));
  EXPECT_EQ('9', byte);
  EXPECT_EQ(10, file.Seek(0, PCFile::End));
}

TEST_F(PCFileTest, RefusesPositionsBeforeTheBeginningAndUnknownOrigins) {
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  EXPECT_EQ(-1, file.Seek(-1, PCFile::Begin));
  EXPECT_EQ(-1, file.Seek(0, 3));
  EXPECT_EQ(-1, file.Seek(0, -1));
}

TEST_F(PCFileTest, OpensRegularFilesOnly) {
  std::string const pipe = mDirectories.writable() + "pipe";
  ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
  PCFile file;
  EXPECT_FALSE(file.Create(mDirectories.writable().c_str(), 0));
  EXPECT_FALSE(file.Create(pipe.c_str(), 0));
  EXPECT_FALSE(file.Create("/dev/null", 0));
  EXPECT_FALSE(file.Create((mPath + "-missing").c_str(), 0));
  EXPECT_FALSE(file.Create("", 0));
  EXPECT_FALSE(file.Create(nullptr, 0));
}

TEST_F(PCFileTest, OpensALinkToARegularFile) {
  fs::create_symlink(mPath, mPath + "-link");
  PCFile file;
  EXPECT_TRUE(file.Create((mPath + "-link").c_str(), 0));
}

TEST_F(PCFileTest, RefusesOtherModesThanReading) {
  PCFile file;
  for (int const mode : {-1, 1, 2, 64}) {
    EXPECT_FALSE(file.Create(mPath.c_str(), mode));
  }
  EXPECT_TRUE(file.Create(mPath.c_str(), 0));
}

TEST_F(PCFileTest, RefusesToOpenWhatIsOpenAndKeepsIt) {
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  EXPECT_FALSE(file.Create(mPath.c_str(), 0));
  char byte = 0;
  EXPECT_EQ(1, file.Read(&byte, 1));
  EXPECT_EQ(1, openCount());
}

TEST_F(PCFileTest, FailsWhenNoneIsOpen) {
  PCFile file;
  char byte;
  EXPECT_EQ(-1, file.Read(&byte, 1));
  EXPECT_EQ(-1, file.Seek(0, PCFile::Begin));
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  file.Destroy();
  EXPECT_EQ(-1, file.Read(&byte, 1));
}

TEST_F(PCFileTest, ClosesTheFileOnceAndCanOpenAnother) {
  PCFile file;
  file.Destroy();
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  file.Destroy();
  file.Destroy();
  EXPECT_EQ(0, openCount());
  EXPECT_TRUE(file.Create(mPath.c_str(), 0));
}

TEST_F(PCFileTest, ClosesTheFileWithTheObject) {
  {
    PCFile file;
    ASSERT_TRUE(file.Create(mPath.c_str(), 0));
    EXPECT_EQ(1, openCount());
  }
  EXPECT_EQ(0, openCount());
}

TEST_F(PCFileTest, IsNotInheritedByChildren) {
  PCFile file;
  ASSERT_TRUE(file.Create(mPath.c_str(), 0));
  bool closedOnExec = false;
  EXPECT_EQ(1, openCount(&closedOnExec));
  EXPECT_TRUE(closedOnExec);
}

}  // namespace
