#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "zelv/controller/DeviceServiceQueue.h"
#include "zelv/controller/QueueReaper.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The outgoing queues of the remote data controller, one for each service of another device, known
/// by the text of its URL. What it logs is said in the name of the remote data controller.
///
/// Nobody waits here for a queue's thread: queues that are no longer needed go to the reaper. The
/// lock is held while a text is posted, so that its queue does not go meanwhile, and while a queue
/// is started; nothing but the queue and the reaper is called under it.
class RemoteDeviceQueues {
 public:
  /// Queues at a time. Beyond it the one idle for longest gives way.
  static constexpr std::size_t cQueues = 256;
  /// Queues let go whose threads have not ended. Beyond it there is no new one.
  static constexpr std::size_t cPending = 256;
  /// A queue without a device ID leaves with no device. It goes when it was idle for so long.
  static constexpr std::int64_t cIdleMs = 600'000;

  /// Tells a queue to end; false if that failed, which is logged.
  using Terminate = bool (*)(DeviceServiceQueue& aQueue);

  RemoteDeviceQueues();

  /// With another way of telling them.
  explicit RemoteDeviceQueues(Terminate aTerminate);

  struct State {
    std::string deviceId;
    DeviceServiceQueue::Counters counters;
    std::string url;
  };

  /// Posts to the queue of a service, which is made if there is none.
  /// @return false when there is no queue to be had.
  bool post(std::string const& aMessage, Infrastructure::URL const& aURL,
            std::string const& aDeviceID);

  /// Ends the queues of devices that are not in the list.
  void terminateInactive(std::list<std::string> const& aOnline);

  /// Ends all queues.
  void removeAll();

  /// Ends all queues and waits for them. From then on there are no new ones. MUST NOT be called
  /// under a lock.
  void terminate();

  std::size_t size() const;

  /// For diagnostics.
  std::list<State> states() const;

  /// Those that have ended and are still to be joined.
  std::size_t getPending() const { return mReaper.getPending(); }

 private:
  using Queues = std::map<std::string, std::unique_ptr<DeviceServiceQueue>>;

  DeviceServiceQueue* make(std::string const& aKey, Infrastructure::URL const& aURL,
                           std::string const& aDeviceID) ZELV_REQUIRES(mLock);
  bool makeRoom() ZELV_REQUIRES(mLock);
  void sweepIdle() ZELV_REQUIRES(mLock);
  /// Ends one. aFailure is what is said when it could not be told to.
  Queues::iterator end(Queues::iterator aQueue, char const* aFailure) ZELV_REQUIRES(mLock);
  Queues::iterator letGo(Queues::iterator aQueue) ZELV_REQUIRES(mLock);

  Terminate const mTerminate;
  // Declared before the queues, which are let go until the end.
  QueueReaper mReaper;
  mutable PCMutex mLock;
  Queues mQueues ZELV_GUARDED_BY(mLock);
  std::int64_t mNextSweep ZELV_GUARDED_BY(mLock) = 0;
  bool mTerminated ZELV_GUARDED_BY(mLock) = false;
};

}  // namespace Zelv::Controller
