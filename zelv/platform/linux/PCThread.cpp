#include "zelv/platform/PCThread.h"

#include <atomic>
#include <exception>
#include <mutex>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/linux/ThreadPool.h"

using Zelv::Platform::ThreadJob;
using Zelv::Platform::ThreadPool;

struct PCThread::State {
  class Body;

  std::mutex lock;
  // Guarded by lock.
  std::shared_ptr<ThreadJob> job;
  unsigned long id = 0;

  std::shared_ptr<ThreadJob> current() {
    std::lock_guard guard(lock);
    return job;
  }

  void forget(std::shared_ptr<ThreadJob> const& aJob) {
    std::lock_guard guard(lock);
    if (job == aJob) {
      job.reset();
      id = 0;
    }
  }
};

/// Runs t_Main(). The thread object may be gone when it returns.
class PCThread::State::Body : public ThreadJob {
 public:
  Body(PCThread& aThread, char const* aName) : ThreadJob(aName), mThread(aThread) {}

 protected:
  void Run() override {
    try {
      mThread.t_Main();
    } catch (std::exception const& exception) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "PCThread::t_Main: thread '%s' ended by exception '%s'", Name().c_str(),
                         exception.what());
    } catch (...) {
      PCRealDebug::Print(PCRealDebug::Error,
                         "PCThread::t_Main: thread '%s' ended by an unknown exception",
                         Name().c_str());
    }
  }

 private:
  PCThread& mThread;
};

namespace {
std::atomic<unsigned long> theLastId{0};
}  // namespace

PCThread::PCThread() : mState(std::make_shared<State>()) {}

PCThread::~PCThread() {
  std::shared_ptr<ThreadJob> const job = mState->current();
  if (!job || job->IsCurrent()) {
    return;
  }
  // The derived part is gone: t_Main() must at least not begin any more.
  job->Cancel();
  PCRealDebug::Print(PCRealDebug::Error, "PCThread::~PCThread: thread '%s' was not destroyed",
                     job->Name().c_str());
  Destroy();
}

int PCThread::Create(char const* aName, unsigned long aStack) {
  std::lock_guard lock(mState->lock);
  if (mState->job) {
    return 0;
  }
  try {
    auto const job = std::make_shared<State::Body>(*this, aName != nullptr ? aName : "");
    // Known before the thread runs, which may ask for it.
    mState->id = ++theLastId;
    mState->job = job;
    if (ThreadPool::Get().Start(job, aStack)) {
      return 1;
    }
  } catch (std::exception const&) {
    // No memory: as good as no thread.
  }
  mState->job.reset();
  mState->id = 0;
  return 0;
}

void PCThread::Destroy() {
  std::shared_ptr<ThreadJob> const job = mState->current();
  if (!job || job->IsCurrent()) {
    return;
  }
  job->Wait();
  ThreadPool::Get().JoinEnded();
  mState->forget(job);
}

unsigned long PCThread::GetId() const {
  std::lock_guard lock(mState->lock);
  return mState->id;
}

void PCThread::ReleaseParked() {
  ThreadPool::Get().ReleaseParked();
}

std::vector<std::string> PCThread::Running() {
  return ThreadPool::Get().Running();
}

std::size_t PCThread::Parked() {
  return static_cast<std::size_t>(ThreadPool::Get().ParkedCount());
}
