#include "zelv/platform/linux/ErrorStream.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "zelv/platform/PCRealDebug.h"

namespace {

using Zelv::Platform::ErrorStream;

/// Another file in the place of standard error for a scope.
class StandardErrorReplaced {
 public:
  explicit StandardErrorReplaced(int aDescriptor) : mBefore(::dup(STDERR_FILENO)) {
    ::dup2(aDescriptor, STDERR_FILENO);
  }
  StandardErrorReplaced(StandardErrorReplaced const&) = delete;
  StandardErrorReplaced& operator=(StandardErrorReplaced const&) = delete;
  ~StandardErrorReplaced() {
    ::dup2(mBefore, STDERR_FILENO);
    ::close(mBefore);
  }

 private:
  int mBefore;
};

TEST(ErrorStream, WritesEachLineByOneCall) {
  // Keeps what one call writes apart from what the next one writes.
  int ends[2];
  ASSERT_EQ(0, ::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends));
  {
    StandardErrorReplaced const replaced(ends[0]);
    PCRealDebug::Print(PCRealDebug::Error, "first '%s'", "a\nb");
    PCRealDebug::Print(PCRealDebug::Warning, "second");
  }
  char buffer[256];
  EXPECT_EQ("zelv error: first 'a\\nb'\n",
            std::string(buffer, static_cast<std::size_t>(::read(ends[1], buffer, sizeof buffer))));
  EXPECT_EQ("zelv warning: second\n",
            std::string(buffer, static_cast<std::size_t>(::read(ends[1], buffer, sizeof buffer))));
  ::close(ends[0]);
  ::close(ends[1]);
}

TEST(ErrorStream, SurvivesAPipeThatNobodyReads) {
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  ::close(ends[0]);
  {
    StandardErrorReplaced const replaced(ends[1]);
    ErrorStream::WriteLine("lost");
  }
  ::close(ends[1]);
  sigset_t pending;
  ::sigpending(&pending);
  EXPECT_EQ(0, ::sigismember(&pending, SIGPIPE));
  sigset_t blocked;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_EQ(0, ::sigismember(&blocked, SIGPIPE));
}

TEST(ErrorStream, LeavesASignalAloneThatWasPendingBefore) {
  sigset_t pipeSignal;
  sigset_t before;
  ::sigemptyset(&pipeSignal);
  ::sigaddset(&pipeSignal, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &pipeSignal, &before);
  ::raise(SIGPIPE);
  int ends[2];
  ASSERT_EQ(0, ::pipe(ends));
  ::close(ends[0]);
  {
    StandardErrorReplaced const replaced(ends[1]);
    ErrorStream::WriteLine("lost");
  }
  ::close(ends[1]);
  timespec const now{};
  EXPECT_EQ(SIGPIPE, ::sigtimedwait(&pipeSignal, nullptr, &now));
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(ErrorStream, SurvivesStandardErrorBeingClosed) {
  int const before = ::dup(STDERR_FILENO);
  ::close(STDERR_FILENO);
  ErrorStream::WriteLine("lost");
  ::dup2(before, STDERR_FILENO);
  ::close(before);
  ::testing::internal::CaptureStderr();
  ErrorStream::WriteLine("found");
  EXPECT_EQ("found\n", ::testing::internal::GetCapturedStderr());
}

// The thread sanitizer's own search for deadlocks ends a child that is made while a lock is held.
#ifndef __SANITIZE_THREAD__
void logInChild() {
  PCRealDebug::SetSink(nullptr, nullptr);
  PCRealDebug::Print(PCRealDebug::Error, "from the child");
  ::_exit(0);
}

// The child is made by a thread that holds the lock of the log.
void forkWithin(unsigned long, char const*, void* aStatus) {
  pid_t const child = ::fork();
  if (child == 0) {
    logInChild();
  }
  ::waitpid(child, static_cast<int*>(aStatus), 0);
}

TEST(PCRealDebugOnLinux, WritesInAChildThatWasMadeWhileALineWasWritten) {
  int status = -1;
  PCRealDebug::SetSink(&forkWithin, &status);
  ::testing::internal::CaptureStderr();
  PCRealDebug::Print(PCRealDebug::Error, "line");
  PCRealDebug::SetSink(nullptr, nullptr);
  // A child forgets that it stands within a sink no more than its parent does, and drops the line;
  // what counts is that it does not wait.
  EXPECT_EQ("", ::testing::internal::GetCapturedStderr());
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(0, WEXITSTATUS(status));
}
#endif

}  // namespace
