#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"

namespace {

// From here on the kernel kills the thread at any call but read, write, exit and sigreturn
// (prctl(2), PR_SET_SECCOMP).
void forbidSystemCalls() {
  if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) {
    ::_exit(2);
  }
}

void leave() {
  ::syscall(SYS_exit, 0);
}

void takeAndReleaseMutex() ZELV_NO_THREAD_SAFETY_ANALYSIS {
  PCMutex mutex;
  forbidSystemCalls();
  for (int i = 0; i < 100; ++i) {
    mutex.Lock();
    mutex.Lock();
    mutex.Unlock();
    mutex.Unlock();
  }
  leave();
}

void giveAndTakeSemaphore() {
  PCSemaphore semaphore;
  semaphore.Create(1);
  forbidSystemCalls();
  for (int i = 0; i < 100; ++i) {
    semaphore.Give();
    semaphore.Take();
  }
  leave();
}

void callTheSystem() {
  forbidSystemCalls();
  ::syscall(SYS_getppid);
  leave();
}

TEST(NoSystemCallsDeathTest, AreNeededForAMutexThatNobodyElseWants) {
  EXPECT_EXIT(takeAndReleaseMutex(), ::testing::ExitedWithCode(0), "");
}

TEST(NoSystemCallsDeathTest, AreNeededForASemaphoreThatNobodyWaitsFor) {
  EXPECT_EXIT(giveAndTakeSemaphore(), ::testing::ExitedWithCode(0), "");
}

TEST(NoSystemCallsDeathTest, WouldBeNoticedByTheTestsAbove) {
  EXPECT_EXIT(callTheSystem(), ::testing::KilledBySignal(SIGKILL), "");
}

}  // namespace
