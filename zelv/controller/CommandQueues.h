#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <string>

#include "zelv/controller/DeviceServiceQueue.h"
#include "zelv/controller/QueueReaper.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv::Controller {

/// The queues of the command controller by device, with their lock. A queue that leaves goes to the
/// reaper, so that nobody here waits for a send.
class CommandQueues {
 public:
  /// Beyond it the queue idle for longest gives way; a command to its device makes a new one.
  static constexpr std::size_t MaxQueues = 256;

  struct State {
    std::string mDeviceId;
    DeviceServiceQueue::Counters mCounters;
    std::string mURL;
  };

  /// Tells a queue to end; false if that failed, which is logged.
  using Terminate = bool (*)(DeviceServiceQueue& aQueue);

  CommandQueues();

  /// With another way of telling them.
  explicit CommandQueues(Terminate aTerminate);

  bool has(std::string const& aDeviceId) const;

  /// False when there is no queue for the device.
  bool post(std::string const& aDeviceId, std::string const& aText);

  /// Takes over a running queue together with its first text.
  void add(std::string const& aDeviceId, std::unique_ptr<DeviceServiceQueue> aQueue,
           std::string const& aText);

  void removeAll();

  /// Removes the queues of devices that are not in the list, calling aGone(id) before each.
  template <typename Gone>
  void keepOnly(std::list<std::string> const& aDeviceIds, Gone aGone) {
    for (std::string const& deviceId : missingFrom(aDeviceIds)) {
      aGone(deviceId);
      remove(deviceId);
    }
  }

  /// Waits for the queues that were removed. MUST NOT be called under a lock.
  void drain() { mReaper.drain(); }

  /// For diagnostics.
  std::list<State> states() const;

 private:
  using Queues = std::map<std::string, std::unique_ptr<DeviceServiceQueue>>;

  std::list<std::string> missingFrom(std::list<std::string> const& aDeviceIds) const;
  void remove(std::string const& aDeviceId);
  void retire(std::unique_ptr<DeviceServiceQueue> aQueue);
  void makeRoom() ZELV_REQUIRES(mLock);

  mutable PCMutex mLock;
  Queues mQueues ZELV_GUARDED_BY(mLock);
  QueueReaper mReaper;
  Terminate const mTerminate;
};

}  // namespace Zelv::Controller
