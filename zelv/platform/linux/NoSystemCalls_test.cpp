#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>

#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"

namespace {

// From here on the kernel kills the process at any call of this thread but the one that ends it
// (seccomp(2)).
void forbidSystemCalls() {
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
  };
  sock_fprog const filter{sizeof rules / sizeof rules[0], rules};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
    ::_exit(2);
  }
}

void leave() {
  ::syscall(SYS_exit_group, 0);
}

void takeAndRelease(PCMutex& aMutex) ZELV_NO_THREAD_SAFETY_ANALYSIS {
  aMutex.Lock();
  aMutex.Lock();
  aMutex.Unlock();
  aMutex.Unlock();
}

// Once before it counts: where the program is watched over, the watcher calls the system for what
// it sees first.
void takeAndReleaseMutex() {
  PCMutex mutex;
  takeAndRelease(mutex);
  forbidSystemCalls();
  for (int i = 0; i < 100; ++i) {
    takeAndRelease(mutex);
  }
  leave();
}

void giveAndTakeSemaphore() {
  PCSemaphore semaphore;
  semaphore.Create(1);
  semaphore.Give();
  semaphore.Take();
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
  EXPECT_EXIT(callTheSystem(), ::testing::KilledBySignal(SIGSYS), "");
}

}  // namespace
