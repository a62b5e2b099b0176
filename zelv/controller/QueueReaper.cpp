#include "zelv/controller/QueueReaper.h"

#include <utility>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

QueueReaper::QueueReaper() {
  mSemaphore.Create(0);
}

QueueReaper::~QueueReaper() {
  drain();
  mSemaphore.Destroy();
}

void QueueReaper::retire(std::unique_ptr<DeviceServiceQueue> aQueue) {
  if (!aQueue) {
    return;
  }
  aQueue->terminate();
  {
    TCAutoLock lock(mLock);
    mQueues.push_back(std::move(aQueue));
    ++mPending;
    if (!mRunning) {
      start();
    }
  }
  mSemaphore.Give();
}

void QueueReaper::resume() {
  TCAutoLock lock(mLock);
  if (!mRunning && !mQueues.empty()) {
    start();
  }
}

void QueueReaper::start() {
  mRunning = Create("Quorl - QueueReaper", 4096) != 0;
  if (!mRunning) {
    PCRealDebug::Print(PCRealDebug::Warning, "QueueReaper::start: Error creating a new thread");
  }
}

void QueueReaper::t_Main() {
  TraceScope trace("QueueReaper::t_Main");
  for (;;) {
    mSemaphore.Take();
    if (!deleteOne()) {
      TCAutoLock lock(mLock);
      if (mEnding && mQueues.empty()) {
        return;
      }
    }
  }
}

// Also when the thread could not be had, or a queue came while it ended: nothing is left then.
void QueueReaper::drain() {
  {
    TCAutoLock lock(mLock);
    mEnding = true;
  }
  mSemaphore.Give();
  Destroy();
  {
    TCAutoLock lock(mLock);
    mEnding = false;
    mRunning = false;
  }
  while (deleteOne()) {
  }
}

bool QueueReaper::deleteOne() {
  std::unique_ptr<DeviceServiceQueue> queue = take();
  if (!queue) {
    return false;
  }
  queue.reset();
  --mPending;
  return true;
}

std::unique_ptr<DeviceServiceQueue> QueueReaper::take() {
  TCAutoLock lock(mLock);
  if (mQueues.empty()) {
    return nullptr;
  }
  std::unique_ptr<DeviceServiceQueue> queue = std::move(mQueues.front());
  mQueues.pop_front();
  return queue;
}

}  // namespace Zelv::Controller
