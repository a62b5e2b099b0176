#include "zelv/platform/fake/FakeShell.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "zelv/platform/Shell.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelv::Platform::Shell;
using Zelv::Platform::Fake::FakeShell;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::TemporaryDirectories;

TEST(FakeShell, RecordsTheLinesInOrder) {
  TemporaryDirectories const directories;
  Shell::Run("mkdir -m 777 -p " + directories.writable() + "a");
  Shell::Run("sync");
  Shell::Run("sync");
  EXPECT_THAT(FakeShell::Lines(),
              ElementsAre("mkdir -m 777 -p " + directories.writable() + "a", "sync", "sync"));
  EXPECT_EQ(2, FakeShell::Count("sync"));
  EXPECT_EQ(0, FakeShell::Count("syn"));
  FakeShell::ClearLines();
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
}

TEST(FakeShell, DoesNotRecordLinesThatAreRefused) {
  LogCapture log;
  EXPECT_EQ(-1, Shell::Run("echo $HOME"));
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_TRUE(log.has(PCRealDebug::Error, "Shell::Run: refused the line 'echo $HOME'"));
}

TEST(FakeShell, OnlyRecordsWhenToldSo) {
  TemporaryDirectories const directories;
  FakeShell::SetMode(FakeShell::RecordOnly);
  EXPECT_EQ(0, Shell::Run("mkdir -m 777 -p " + directories.writable() + "a"));
  EXPECT_EQ(0, Shell::Run("no-such-command"));
  EXPECT_FALSE(directories.hasWritable("a"));
  EXPECT_EQ(2U, FakeShell::Lines().size());
}

TEST(FakeShell, FailsLinesThatHoldATextAndDoesNothingForThem) {
  TemporaryDirectories const directories;
  FakeShell::FailLinesWith("mkdir", 3);
  FakeShell::FailLinesWith("Users.xml");
  directories.putReadOnly("Users.xml", "users");
  EXPECT_EQ(3, Shell::Run("mkdir -m 777 -p " + directories.writable() + "a"));
  EXPECT_EQ(1, Shell::Run("cp -r " + directories.readOnly() + "Users.xml " +
                          directories.writable() + "Users.xml"));
  EXPECT_EQ(0, Shell::Run("sync"));
  EXPECT_THAT(directories.listWritable(), IsEmpty());
  EXPECT_EQ(3U, FakeShell::Lines().size());
}

TEST(FakeShell, TouchesNothingOutsideTheTestsDirectories) {
  TemporaryDirectories const directories;
  directories.putReadOnly("file", "text");
  EXPECT_EQ(1, Shell::Run("mkdir -m 777 -p /tmp/zelv-must-not-be-made"));
  EXPECT_EQ(1, Shell::Run("mkdir -m 777 -p " + directories.writable() + "../../x"));
  EXPECT_EQ(1, Shell::Run("cp " + directories.readOnly() + "file /tmp/zelv-must-not-be-made"));
  EXPECT_EQ(1, Shell::Run("cp -r /etc/hostname " + directories.writable() + "hostname"));
  EXPECT_EQ(1, Shell::Run("cd /tmp; chmod 777 *"));
  EXPECT_EQ(1, Shell::Run("chmod 777 *"));
  EXPECT_FALSE(std::filesystem::exists("/tmp/zelv-must-not-be-made"));
  EXPECT_THAT(directories.listWritable(), IsEmpty());
}

TEST(FakeShell, FailsEveryLineOverFilesWithoutTestDirectories) {
  EXPECT_EQ(1, Shell::Run("mkdir -m 777 -p /tmp/zelv-must-not-be-made"));
  EXPECT_EQ(-1, Shell::Run("sync"));
  FakeShell::Reset();
}

TEST(FakeShell, FailsFormsOfCommandsThatTheSystemDoesNotUse) {
  TemporaryDirectories const directories;
  EXPECT_EQ(1, Shell::Run("mkdir " + directories.writable() + "a"));
  EXPECT_EQ(1, Shell::Run("mkdir -m 700 -p " + directories.writable() + "a"));
  EXPECT_EQ(1, Shell::Run("cd " + directories.writable() + "; chmod 700 *"));
  EXPECT_EQ(1, Shell::Run("cp"));
  EXPECT_THAT(directories.listWritable(), IsEmpty());
}

TEST(FakeShell, ForgetsLinesModeAndFaults) {
  TemporaryDirectories const directories;
  FakeShell::SetMode(FakeShell::RecordOnly);
  FakeShell::FailLinesWith("mkdir");
  Shell::Run("sync");
  FakeShell::Reset();
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_EQ(0, Shell::Run("mkdir -m 777 -p " + directories.writable() + "a"));
  EXPECT_TRUE(directories.hasWritable("a"));
}

}  // namespace
