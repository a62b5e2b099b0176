#pragma once

#include <semaphore.h>

#include <cerrno>
#include <ctime>

namespace Zelv::Bench {

/// What a benchmark waits for, counted; a wait that takes longer than anything healthy ends.
class Arrivals {
 public:
  Arrivals() { sem_init(&mSemaphore, 0, 0); }
  Arrivals(Arrivals const&) = delete;
  Arrivals& operator=(Arrivals const&) = delete;
  ~Arrivals() { sem_destroy(&mSemaphore); }

  void arrive() { sem_post(&mSemaphore); }

  bool take() {
    timespec end{};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += 20;
    int result = sem_timedwait(&mSemaphore, &end);
    while (result != 0 && errno == EINTR) {
      result = sem_timedwait(&mSemaphore, &end);
    }
    return result == 0;
  }

  bool take(int aCount) {
    bool all = true;
    for (int count = 0; all && count < aCount; ++count) {
      all = take();
    }
    return all;
  }

 private:
  sem_t mSemaphore;
};

}  // namespace Zelv::Bench
