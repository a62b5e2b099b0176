#include "zelv/platform/linux/ThreadJob.h"

#include <chrono>

namespace Zelv::Platform {
namespace {
thread_local ThreadJob const* theCurrent = nullptr;
}  // namespace

void ThreadJob::Wait() {
  std::unique_lock lock(mLock);
  mChanged.wait(lock, [this] { return mFinished; });
}

bool ThreadJob::WaitFor(int aMilliseconds) {
  std::unique_lock lock(mLock);
  return mChanged.wait_for(lock, std::chrono::milliseconds(aMilliseconds),
                           [this] { return mFinished; });
}

bool ThreadJob::IsCurrent() const {
  return theCurrent == this;
}

bool ThreadJob::Cancel() {
  std::lock_guard lock(mLock);
  mCancelled = !mBegun;
  return mCancelled;
}

void ThreadJob::Perform() {
  if (begin()) {
    theCurrent = this;
    Run();
    theCurrent = nullptr;
  }
}

bool ThreadJob::begin() {
  std::lock_guard lock(mLock);
  mBegun = !mCancelled;
  return mBegun;
}

void ThreadJob::Finish() {
  std::lock_guard lock(mLock);
  mFinished = true;
  mChanged.notify_all();
}

}  // namespace Zelv::Platform
