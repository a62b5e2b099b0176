#include "zelv/platform/fake/TemporaryDirectories.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "zelv/platform/Directories.h"
#include "zelv/platform/Entropy.h"
#include "zelv/platform/PCAlarm.h"
#include "zelv/platform/PCMath.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/Shell.h"
#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeEntropy.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeMath.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelv::Platform::Directories;
using Zelv::Platform::Shell;
using Zelv::Platform::Fake::TemporaryDirectories;
namespace Fake = Zelv::Platform::Fake;
namespace fs = std::filesystem;

TEST(TemporaryDirectories, AreTheDirectoriesOfTheSetWhileTheyLive) {
  std::string root;
  {
    TemporaryDirectories const directories;
    root = directories.root();
    EXPECT_EQ(Directories::ReadOnly(), directories.readOnly());
    EXPECT_EQ(Directories::Writable(), directories.writable());
    EXPECT_TRUE(fs::is_empty(directories.readOnly()));
    EXPECT_TRUE(fs::is_empty(directories.writable()));
    EXPECT_EQ(root, TemporaryDirectories::currentRoot());
  }
  EXPECT_FALSE(fs::exists(root));
  EXPECT_EQ("/mtd_appdata/Images_960x540/Quorl/", Directories::ReadOnly());
  EXPECT_EQ("/mtd_rwarea/kor_config_data/", Directories::Writable());
  EXPECT_EQ("", TemporaryDirectories::currentRoot());
}

TEST(TemporaryDirectories, MayStandInALineOfTheShell) {
  TemporaryDirectories const directories;
  EXPECT_TRUE(Shell::IsPlain(directories.readOnly()));
  EXPECT_TRUE(Shell::IsPlain(directories.writable()));
}

TEST(TemporaryDirectories, AreFreshForEachTest) {
  std::string first;
  {
    TemporaryDirectories const directories;
    first = directories.root();
  }
  TemporaryDirectories const directories;
  EXPECT_NE(first, directories.root());
}

TEST(TemporaryDirectories, TakeAndGiveFiles) {
  TemporaryDirectories const directories;
  directories.putWritable("b", std::string("1\0\n2", 4));
  directories.putWritable("a", "old");
  directories.putWritable("a", "new");
  directories.putReadOnly("deep/er/file", "factory");
  EXPECT_EQ(std::string("1\0\n2", 4), directories.getWritable("b"));
  EXPECT_EQ("new", directories.getWritable("a"));
  EXPECT_TRUE(directories.hasWritable("a"));
  EXPECT_FALSE(directories.hasWritable("c"));
  EXPECT_THAT(directories.listWritable(), ElementsAre("a", "b"));
  EXPECT_TRUE(fs::exists(directories.readOnly() + "deep/er/file"));
  directories.removeWritable("a");
  EXPECT_THAT(directories.listWritable(), ElementsAre("b"));
  EXPECT_THROW(directories.getWritable("a"), std::runtime_error);
}

TEST(TemporaryDirectories, CanBeASetThatNeverStartedBefore) {
  TemporaryDirectories const directories;
  directories.putWritable("a", "text");
  directories.removeWritableDirectory();
  EXPECT_FALSE(fs::exists(directories.writable()));
  EXPECT_THAT(directories.listWritable(), IsEmpty());
}

TEST(TemporaryDirectories, TakeFactoryFilesFromADirectory) {
  TemporaryDirectories const directories;
  fs::create_directory(directories.root() + "source");
  directories.putWritable("../source/Users.xml", "users");
  directories.fillReadOnlyFrom(directories.root() + "source");
  EXPECT_TRUE(fs::exists(directories.readOnly() + "Users.xml"));
}

TEST(TemporaryDirectories, ResetAllFakes) {
  auto directories = std::make_unique<TemporaryDirectories>();
  Fake::FakeAlarm::FailNextCreates(1);
  Fake::FakeClock::SetWall(1);
  Fake::FakeEntropy::FailAll();
  Fake::FakeFiles::FailFrom(Fake::FakeFiles::Open);
  PCMath::Random(1);
  Fake::FakeShell::FailLinesWith("");
  Fake::FakeThreads::FailNext(1);
  directories.reset();

  class EmptyThread : public virtual PCThread {
   public:
    ~EmptyThread() override { Destroy(); }

   protected:
    void t_Main() override {}
  } thread;
  PCAlarm alarm;
  char byte;
  EXPECT_TRUE(alarm.Create(nullptr, 1, 1));
  EXPECT_EQ(Fake::FakeClock::cStartWall, PCTime::EpochTime());
  EXPECT_TRUE(Zelv::Platform::Entropy::Fill(&byte, 1));
  EXPECT_EQ(0, Fake::FakeFiles::Count(Fake::FakeFiles::Open));
  EXPECT_THAT(Fake::FakeMath::Seeds(), IsEmpty());
  EXPECT_EQ(0, Shell::Run(""));
  EXPECT_NE(0, thread.Create("thread", 4096));
}

}  // namespace
