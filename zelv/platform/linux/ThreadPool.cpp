#include "zelv/platform/linux/ThreadPool.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <new>
#include <string>
#include <utility>

#include "zelv/platform/linux/SystemThread.h"
#include "zelv/platform/linux/ThreadStart.h"

namespace Zelv::Platform {

/// One system thread; owned by that thread itself.
struct ThreadPool::Worker {
  Worker(ThreadPool& aPool, bool aParks) : pool(aPool), parks(aParks) {}

  ThreadPool& pool;
  bool const parks;
  pthread_t handle{};
  // A lock of its own, taken within the pool's: who gives it work holds the pool's lock, and the
  // woken thread would at once have to wait for that one.
  std::mutex lock;
  std::condition_variable wake;
  // Guarded by lock.
  std::shared_ptr<ThreadJob> job;
  bool quit = false;
  // Guarded by the pool's lock.
  bool parked = false;
  Worker* next = nullptr;
  /// What it does; null while it is parked.
  std::shared_ptr<ThreadJob> doing;
  Worker* before = nullptr;
  Worker* behind = nullptr;

  bool isTold() const { return job || quit; }

  /// Under the pool's lock, without which the worker cannot go away meanwhile.
  template <typename Change>
  void tell(Change aChange) {
    {
      std::lock_guard guard(lock);
      aChange();
    }
    wake.notify_one();
  }
};

// The pool itself is never destroyed, since threads of the host may end after the static objects.
ThreadPool& ThreadPool::Get() {
  static auto& pool = *new ThreadPool(5000);
  static struct Closer {
    Closer() { atFork(); }
    ~Closer() { pool.Close(); }
  } const closer;
  return pool;
}

// A child of the process has none of these threads and must not wait for them when it ends.
void ThreadPool::atFork() {
  ::pthread_atfork([] { Get().mLock.lock(); }, [] { Get().mLock.unlock(); },
                   [] {
                     Get().mLost = std::exchange(Get().mAll, nullptr);
                     Get().mParked = nullptr;
                     Get().mParkedCount = 0;
                     Get().mHasEnded = false;
                     Get().mLock.unlock();
                   });
}

bool ThreadPool::Start(std::shared_ptr<ThreadJob> const& aJob, std::size_t aStack) {
  if (aStack <= cStack && ThreadStart::MayReuse() && handToParked(aJob)) {
    return true;
  }
  std::size_t const stack = std::max(aStack, cStack);
  std::unique_ptr<Worker> worker(new (std::nothrow) Worker(*this, stack == cStack));
  if (!worker) {
    return false;
  }
  worker->job = aJob;
  worker->doing = aJob;
  // Before the thread runs, which strikes itself off when it ends.
  enlist(*worker);
  if (!ThreadStart::Start(stack, &ThreadPool::main, worker.get())) {
    strike(*worker);
    return false;
  }
  // From here on the thread owns it.
  (void)worker.release();
  return true;
}

// The one parked last, whose stack is most likely still in the cache.
bool ThreadPool::handToParked(std::shared_ptr<ThreadJob> const& aJob) {
  std::lock_guard lock(mLock);
  Worker* const worker = mParked;
  if (worker == nullptr) {
    return false;
  }
  unpark(*worker);
  worker->doing = aJob;
  worker->tell([&] { worker->job = aJob; });
  return true;
}

void* ThreadPool::main(void* aWorker) {
  std::unique_ptr<Worker> const self(static_cast<Worker*>(aWorker));
  self->handle = ::pthread_self();
  self->pool.work(*self);
  return nullptr;
}

// A thread parks before it says that its work is done: who waited for the work finds the thread
// parked, and the next Create() takes it.
void ThreadPool::work(Worker& aSelf) {
  bool again = true;
  std::string name;
  while (again) {
    std::shared_ptr<ThreadJob> job = std::move(aSelf.job);
    if (name != job->Name()) {
      name = job->Name();
      SystemThread::SetName(name.c_str());
    }
    job->Perform();
    again = park(aSelf);
    job->Finish();
    job.reset();
    again = again && awaitJob(aSelf);
  }
}

bool ThreadPool::park(Worker& aSelf) {
  std::unique_lock lock(mLock);
  // The caller holds it too, so that it does not go under the lock.
  aSelf.doing.reset();
  if (!aSelf.parks || mParkedCount >= mMostParked) {
    leave(aSelf, lock);
    return false;
  }
  aSelf.parked = true;
  aSelf.next = mParked;
  mParked = &aSelf;
  ++mParkedCount;
  return true;
}

bool ThreadPool::awaitJob(Worker& aSelf) {
  {
    std::unique_lock own(aSelf.lock);
    aSelf.wake.wait_for(own, std::chrono::milliseconds(mIdleMs),
                        [&aSelf] { return aSelf.isTold(); });
    if (aSelf.job) {
      return true;
    }
  }
  std::unique_lock lock(mLock);
  std::unique_lock own(aSelf.lock);
  if (aSelf.isTold()) {
    return !aSelf.quit;
  }
  own.unlock();
  unpark(aSelf);
  leave(aSelf, lock);
  return false;
}

void ThreadPool::unpark(Worker& aWorker) {
  Worker** link = &mParked;
  while (*link != &aWorker) {
    link = &(*link)->next;
  }
  *link = aWorker.next;
  aWorker.parked = false;
  --mParkedCount;
}

void ThreadPool::enlist(Worker& aWorker) {
  std::lock_guard lock(mLock);
  aWorker.behind = mAll;
  if (mAll != nullptr) {
    mAll->before = &aWorker;
  }
  mAll = &aWorker;
}

void ThreadPool::strike(Worker& aWorker) {
  std::lock_guard lock(mLock);
  strikeOff(aWorker);
}

void ThreadPool::strikeOff(Worker& aWorker) {
  (aWorker.before != nullptr ? aWorker.before->behind : mAll) = aWorker.behind;
  if (aWorker.behind != nullptr) {
    aWorker.behind->before = aWorker.before;
  }
}

std::vector<std::string> ThreadPool::Running() {
  std::lock_guard lock(mLock);
  std::vector<std::string> names;
  for (Worker const* worker = mAll; worker != nullptr; worker = worker->behind) {
    if (worker->doing) {
      names.push_back(worker->doing->Name());
    }
  }
  return names;
}

void ThreadPool::leave(Worker& aSelf, std::unique_lock<std::mutex>& aLock) {
  strikeOff(aSelf);
  pthread_t const before = mEnded;
  bool const hadEnded = mHasEnded;
  mEnded = ::pthread_self();
  mHasEnded = true;
  aLock.unlock();
  if (hadEnded) {
    ::pthread_join(before, nullptr);
  }
}

void ThreadPool::ReleaseParked() {
  std::array<pthread_t, cMostParked> ended;
  std::size_t count = 0;
  {
    std::lock_guard lock(mLock);
    while (mParked != nullptr) {
      Worker& worker = *mParked;
      unpark(worker);
      strikeOff(worker);
      ended[count++] = worker.handle;
      worker.tell([&worker] { worker.quit = true; });
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    ::pthread_join(ended[i], nullptr);
  }
  JoinEnded();
}

void ThreadPool::JoinEnded() {
  std::unique_lock lock(mLock);
  if (mHasEnded) {
    pthread_t const ended = mEnded;
    mHasEnded = false;
    lock.unlock();
    ::pthread_join(ended, nullptr);
  }
}

void ThreadPool::Close() {
  {
    std::lock_guard lock(mLock);
    mMostParked = 0;
  }
  ReleaseParked();
}

int ThreadPool::ParkedCount() {
  std::lock_guard lock(mLock);
  return mParkedCount;
}

}  // namespace Zelv::Platform
