#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>

#include "zelv/controller/DeviceServiceQueue.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCSemaphore.h"
#include "zelv/platform/PCThread.h"

namespace Zelv::Controller {

/// Waits for the threads of queues that nobody needs any more, so that their owners need not: those
/// let go of queues under locks and on the data worker, where a wait would hold up the whole tree.
///
/// One thread, started when the first queue comes. Its own lock is a leaf: nothing else is locked
/// or called while it is held.
class QueueReaper : public virtual PCThread {
 public:
  QueueReaper();

  /// Drains.
  ~QueueReaper() override;

  /// Takes a queue over, which is joined and deleted later on. Does not wait, and may be called
  /// under any lock. A queue that is not terminated yet is terminated; null is ignored. Without a
  /// thread to be had the queue is kept for drain().
  void retire(std::unique_ptr<DeviceServiceQueue> aQueue);

  /// Tries once more to start the thread, if there was none to be had and queues wait for it.
  void resume();

  /// Waits until all queues taken over are deleted, and ends the thread. MUST NOT be called under a
  /// lock. Queues may be retired again afterwards.
  void drain();

  /// Queues taken over and not deleted yet, for diagnostics.
  std::size_t getPending() const { return mPending; }

 protected:
  void t_Main() override;

 private:
  std::unique_ptr<DeviceServiceQueue> take();
  bool deleteOne();
  void start() ZELV_REQUIRES(mLock);

  PCMutex mLock;
  /// One count for each queue, and one for the end.
  PCSemaphore mSemaphore;
  std::deque<std::unique_ptr<DeviceServiceQueue>> mQueues ZELV_GUARDED_BY(mLock);
  bool mRunning ZELV_GUARDED_BY(mLock) = false;
  bool mEnding ZELV_GUARDED_BY(mLock) = false;
  std::atomic<std::size_t> mPending{0};
};

}  // namespace Zelv::Controller
