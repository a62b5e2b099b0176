#include "zelv/platform/PCSemaphore.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <thread>

#include "zelv/platform/TestPlatform.h"

namespace {

using Zelv::Platform::Testing::Event;

sem_t theHandled;

/// A handler that does not ask for interrupted calls to be taken up again.
class HandlerInstalled {
 public:
  HandlerInstalled() {
    ::sem_init(&theHandled, 0, 0);
    struct sigaction action {};
    action.sa_handler = [](int) { ::sem_post(&theHandled); };
    ::sigaction(SIGUSR1, &action, &mBefore);
  }
  HandlerInstalled(HandlerInstalled const&) = delete;
  HandlerInstalled& operator=(HandlerInstalled const&) = delete;
  ~HandlerInstalled() {
    ::sigaction(SIGUSR1, &mBefore, nullptr);
    ::sem_destroy(&theHandled);
  }

  static bool awaitHandled() {
    timespec until;
    ::clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += 20;
    int result;
    do {
      result = ::sem_timedwait(&theHandled, &until);
    } while (result != 0 && errno == EINTR);
    return result == 0;
  }

 private:
  struct sigaction mBefore {};
};

TEST(PCSemaphoreOnLinux, GoesOnWaitingAfterASignal) {
  HandlerInstalled const handler;
  PCSemaphore semaphore;
  ASSERT_NE(0, semaphore.Create(0));
  Event entered;
  std::atomic<bool> given{false};
  std::atomic<bool> early{false};
  std::thread taker([&] {
    entered.happen();
    semaphore.Take();
    early = !given;
  });
  ASSERT_TRUE(entered.wait());
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(0, ::pthread_kill(taker.native_handle(), SIGUSR1));
    ASSERT_TRUE(HandlerInstalled::awaitHandled());
  }
  given = true;
  semaphore.Give();
  taker.join();
  EXPECT_FALSE(early);
}

}  // namespace
