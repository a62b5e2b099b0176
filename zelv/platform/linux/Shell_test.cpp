#include "zelv/platform/Shell.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "zelv/platform/TestPlatform.h"

namespace {

using Zelv::Platform::Shell;
using Zelv::Platform::Testing::TestDirectories;

class ShellOnLinux : public ::testing::Test {
 protected:
  // Runs a script, which may hold what a line may not.
  int runScript(std::string const& aScript) {
    std::string const path = mDirectories.writable() + "script";
    std::ofstream(path) << "cd " << mDirectories.writable() << "\n" << aScript << "\n";
    return Shell::Run("sh " + path);
  }

  std::string output() const {
    std::ostringstream text;
    text << std::ifstream(mDirectories.writable() + "out").rdbuf();
    return text.str();
  }

  TestDirectories mDirectories;
};

TEST_F(ShellOnLinux, GivesTheExitStatusOfTheLine) {
  EXPECT_EQ(0, Shell::Run("exit 0"));
  EXPECT_EQ(3, Shell::Run("exit 3"));
  EXPECT_EQ(255, Shell::Run("exit 255"));
}

TEST_F(ShellOnLinux, GivesTheSignalThatEndedTheLineAbove128) {
  EXPECT_EQ(128 + SIGTERM, runScript("kill -TERM $$"));
}

TEST_F(ShellOnLinux, TakesNoLineForAnOptionOfTheShell) {
  EXPECT_EQ(127, Shell::Run("-x"));
}

TEST_F(ShellOnLinux, GivesChildrenTheStandardDescriptorsOnly) {
  int const inherited = ::fcntl(STDOUT_FILENO, F_DUPFD, 100);
  ASSERT_GE(inherited, 100);
  EXPECT_EQ(0, runScript("for fd in 0 1 2 " + std::to_string(inherited) +
                         "; do test -e /proc/$$/fd/$fd && echo $fd; done > out; exit 0"));
  ::close(inherited);
  EXPECT_EQ("0\n1\n2\n", output());
}

TEST_F(ShellOnLinux, GivesChildrenNoBlockedAndNoIgnoredSignals) {
  struct sigaction ignore {};
  struct sigaction before {};
  ignore.sa_handler = SIG_IGN;
  ::sigaction(SIGUSR1, &ignore, &before);
  std::thread([this] {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    EXPECT_EQ(0, runScript("sed -n 's/^Sig[BI][lg][kn]:.//p' /proc/self/status > out"));
  }).join();
  ::sigaction(SIGUSR1, &before, nullptr);
  std::istringstream masks(output());
  unsigned long long blocked = ~0ULL;
  unsigned long long ignored = ~0ULL;
  masks >> std::hex >> blocked >> ignored;
  EXPECT_EQ(0U, blocked);
  EXPECT_EQ(0U, ignored >> (SIGUSR1 - 1) & 1U);
}

TEST_F(ShellOnLinux, FailsWhenTheHostTakesItsChildrensStatus) {
  struct sigaction ignore {};
  struct sigaction before {};
  ignore.sa_handler = SIG_IGN;
  ::sigaction(SIGCHLD, &ignore, &before);
  EXPECT_EQ(-1, Shell::Run("exit 0"));
  ::sigaction(SIGCHLD, &before, nullptr);
}

TEST_F(ShellOnLinux, NeedsNoProcessToSync) {
  struct sigaction ignore {};
  struct sigaction before {};
  ignore.sa_handler = SIG_IGN;
  // With a process for it, its status would be lost as above.
  ::sigaction(SIGCHLD, &ignore, &before);
  EXPECT_EQ(0, Shell::Run("sync"));
  ::sigaction(SIGCHLD, &before, nullptr);
}

TEST_F(ShellOnLinux, RunsOnSeveralThreadsAtOnce) {
  std::thread other([] { EXPECT_EQ(5, Shell::Run("exit 5")); });
  EXPECT_EQ(6, Shell::Run("exit 6"));
  other.join();
}

}  // namespace
