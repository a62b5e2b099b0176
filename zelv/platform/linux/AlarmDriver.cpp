#include "zelv/platform/linux/AlarmDriver.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <utility>
#include <vector>

#include "zelv/platform/linux/ThreadJob.h"
#include "zelv/platform/linux/ThreadPool.h"

namespace Zelv::Platform {
namespace {

using Clock = std::chrono::steady_clock;

/// The state of the alarm thread; guarded by the schedule's lock. Never destroyed.
struct Driver {
  std::condition_variable changed;
  /// The thread that serves the alarms, or did so last.
  std::shared_ptr<ThreadJob> thread;
  bool serving = false;
  /// Threads of the process that this one is a child of. Kept, since they can be waited for no more
  /// and so not be destroyed.
  std::vector<std::shared_ptr<ThreadJob>> lost;
  /// The process ends; no alarm is served any more.
  bool closed = false;
};

Driver& driver() {
  static auto& instance = *new Driver;
  return instance;
}

/// The alarm thread. It lives from the first alarm that is created to the last that is destroyed.
class AlarmThread : public ThreadJob {
 public:
  AlarmThread() : ThreadJob("Zelv alarms") {}

 protected:
  void Run() override {
    AlarmSchedule& schedule = AlarmSchedule::Get();
    AlarmSchedule::Lock lock(schedule.Mutex());
    while (schedule.Created(lock) > 0 && !driver().closed) {
      if (!schedule.RunNext(lock, AlarmDriver::NowUs())) {
        sleep(lock);
      }
    }
    driver().serving = false;
    driver().changed.notify_all();
  }

 private:
  static void sleep(AlarmSchedule::Lock& aLock) {
    auto const deadline = AlarmSchedule::Get().NextDeadline(aLock);
    if (deadline) {
      driver().changed.wait_until(aLock, Clock::time_point(std::chrono::microseconds(*deadline)));
    } else {
      driver().changed.wait(aLock);
    }
  }
};

/// Ends the alarm thread with the process. A callback that does not return gets a second, since the
/// thread that ends the process may hold what it waits for.
class Closer {
 public:
  // The pool must be there first, so that it is closed last.
  Closer() {
    ThreadPool::Get();
    ::pthread_atfork([] { AlarmSchedule::Get().Mutex().lock(); },
                     [] { AlarmSchedule::Get().Mutex().unlock(); }, &Closer::inChild);
  }
  Closer(Closer const&) = delete;
  Closer& operator=(Closer const&) = delete;
  ~Closer() {
    std::shared_ptr<ThreadJob> thread;
    {
      AlarmSchedule::Lock const lock(AlarmSchedule::Get().Mutex());
      driver().closed = true;
      driver().changed.notify_all();
      thread = driver().thread;
    }
    if (thread && !thread->IsCurrent()) {
      thread->WaitFor(1000);
    }
  }

 private:
  // The child has no alarm thread, and must not wait for one.
  static void inChild() {
    AlarmSchedule::Lock const lock(AlarmSchedule::Get().Mutex(), std::adopt_lock);
    AlarmSchedule::Get().ForgetOtherThreads(lock);
    driver().serving = false;
    driver().lost.push_back(std::move(driver().thread));
  }
};

}  // namespace

std::int64_t AlarmDriver::NowUs() {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
      .count();
}

bool AlarmDriver::Admit(AlarmSchedule::Lock const&) {
  static Closer const closer;
  if (driver().serving) {
    return true;
  }
  auto const thread = std::make_shared<AlarmThread>();
  if (driver().closed || !ThreadPool::Get().Start(thread, ThreadPool::cStack)) {
    return false;
  }
  driver().thread = thread;
  driver().serving = true;
  return true;
}

void AlarmDriver::Changed(AlarmSchedule::Lock const&) {
  driver().changed.notify_all();
}

// Waits for the thread only when it is on its way out: a callback that still runs then is one that
// has destroyed its own alarm, and may want a lock that the caller holds.
void AlarmDriver::End(AlarmSchedule::Lock& aLock) {
  AlarmSchedule const& schedule = AlarmSchedule::Get();
  std::shared_ptr<ThreadJob> const thread = driver().thread;
  driver().changed.notify_all();
  if (!thread || thread->IsCurrent()) {
    return;
  }
  auto const settled = [&] {
    return !driver().serving || driver().thread != thread || schedule.Created(aLock) > 0 ||
           schedule.IsRunning(aLock);
  };
  driver().changed.wait(aLock, settled);
  if (!driver().serving || driver().thread != thread) {
    aLock.unlock();
    thread->Wait();
    ThreadPool::Get().JoinEnded();
    aLock.lock();
  }
}

}  // namespace Zelv::Platform
