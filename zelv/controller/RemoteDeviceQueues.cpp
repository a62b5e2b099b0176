#include "zelv/controller/RemoteDeviceQueues.h"

#include <algorithm>
#include <utility>

#include "zelv/controller/OnlineDevices.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

using Infrastructure::URL;

namespace {

/// How often idle queues are looked for, at most.
constexpr std::int64_t cSweepMs = 60'000;

}  // namespace

RemoteDeviceQueues::RemoteDeviceQueues()
    : RemoteDeviceQueues([](DeviceServiceQueue& aQueue) { return aQueue.terminate(); }) {}

RemoteDeviceQueues::RemoteDeviceQueues(Terminate aTerminate) : mTerminate(aTerminate) {}

bool RemoteDeviceQueues::post(std::string const& aMessage, URL const& aURL,
                              std::string const& aDeviceID) {
  std::string const key = aURL.toString();
  TCAutoLock lock(mLock);
  if (mTerminated) {
    return false;
  }
  sweepIdle();
  auto const found = mQueues.find(key);
  DeviceServiceQueue* const queue =
      found != mQueues.end() ? found->second.get() : make(key, aURL, aDeviceID);
  if (queue == nullptr) {
    return false;
  }
  queue->postCommand(aMessage);
  return true;
}

DeviceServiceQueue* RemoteDeviceQueues::make(std::string const& aKey, URL const& aURL,
                                             std::string const& aDeviceID) {
  if (!makeRoom()) {
    return nullptr;
  }
  auto queue = std::make_unique<DeviceServiceQueue>();
  if (!queue->initialize(aURL, aDeviceID)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "RemoteDataController::sendToDeviceServiceQueue: deviceServiceQueue "
                       "initialize failed!!!!");
    return nullptr;
  }
  // No failure, but those who watch the log look for it at this level.
  PCRealDebug::Print(PCRealDebug::Error,
                     "RemoteDataController::sendToDeviceServiceQueue: deviceServiceQueue launched "
                     "Thread ID=%d. for device: %s",
                     queue->getThreadID(), aDeviceID.c_str());
  return mQueues.emplace(aKey, std::move(queue)).first->second.get();
}

bool RemoteDeviceQueues::makeRoom() {
  if (mReaper.getPending() >= cPending) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "RemoteDataController::sendToDeviceServiceQueue: Too many queues are "
                       "ending, no new one.");
    mReaper.resume();
    return false;
  }
  if (mQueues.size() < cQueues) {
    return true;
  }
  auto const idle = std::min_element(
      mQueues.begin(), mQueues.end(), [](Queues::value_type const& a, Queues::value_type const& b) {
        return a.second->getLastActivity() < b.second->getLastActivity();
      });
  PCRealDebug::Print(PCRealDebug::Warning,
                     "RemoteDataController::sendToDeviceServiceQueue: Too many queues, that of "
                     "'%s' gives way.",
                     idle->first.c_str());
  letGo(idle);
  return true;
}

void RemoteDeviceQueues::sweepIdle() {
  std::int64_t const now = PCTime::MonotonicMs();
  if (now < mNextSweep) {
    return;
  }
  mNextSweep = now + cSweepMs;
  for (auto queue = mQueues.begin(); queue != mQueues.end();) {
    bool const idle = queue->second->getDeviceID().empty() &&
                      queue->second->getCounters().length == 0 &&
                      now - queue->second->getLastActivity() >= cIdleMs;
    queue = idle ? letGo(queue) : std::next(queue);
  }
}

RemoteDeviceQueues::Queues::iterator RemoteDeviceQueues::end(Queues::iterator aQueue,
                                                             char const* aFailure) {
  if (!mTerminate(*aQueue->second)) {
    PCRealDebug::Print(PCRealDebug::Error, "%s", aFailure);
  }
  return letGo(aQueue);
}

RemoteDeviceQueues::Queues::iterator RemoteDeviceQueues::letGo(Queues::iterator aQueue) {
  mReaper.retire(std::move(aQueue->second));
  return mQueues.erase(aQueue);
}

void RemoteDeviceQueues::terminateInactive(std::list<std::string> const& aOnline) {
  TraceScope trace("RemoteDataController::terminateInactiveDeviceQueue");
  OnlineDevices const online(aOnline);
  TCAutoLock lock(mLock);
  PCRealDebug::Print(PCRealDebug::Detail,
                     "RemoteDataController::terminateInactiveDeviceQueue: mOnlineDevIDList.size=%d",
                     static_cast<int>(aOnline.size()));
  sweepIdle();
  for (auto queue = mQueues.begin(); queue != mQueues.end();) {
    std::string const& deviceId = queue->second->getDeviceID();
    if (deviceId.empty()) {
      ++queue;
      continue;
    }
    online.forEachUpTo(deviceId, [](std::string const& aListed) {
      PCRealDebug::Print(
          PCRealDebug::Detail,
          "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: '%s'",
          aListed.c_str());
    });
    if (online.has(deviceId)) {
      PCRealDebug::Print(
          PCRealDebug::Detail,
          "RemoteDataController::terminateInactiveDeviceQueue: Device ID: '%s', found.",
          deviceId.c_str());
      ++queue;
      continue;
    }
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::terminateInactiveDeviceQueue: Device ID: '%s', not "
                       "present in the updated list.",
                       deviceId.c_str());
    queue = end(queue,
                "RemoteDataController::terminateInactiveDeviceQueue: Device Service Queue "
                "termination failed.");
  }
}

void RemoteDeviceQueues::removeAll() {
  TCAutoLock lock(mLock);
  for (auto queue = mQueues.begin(); queue != mQueues.end();) {
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::removeAllRemoteDeviceService: Remote Device List "
                       "empty, remove everything.");
    queue = end(queue,
                "RemoteDataController::removeAllRemoteDeviceService: Device Service Queue "
                "termination failed.");
  }
}

void RemoteDeviceQueues::terminate() {
  {
    TCAutoLock lock(mLock);
    mTerminated = true;
    PCRealDebug::Print(PCRealDebug::Detail,
                       "RemoteDataController::terminate: terminate all Device Service Queue.");
    for (auto queue = mQueues.begin(); queue != mQueues.end();) {
      queue =
          end(queue, "RemoteDataController::terminate: Device Service Queue termination failed.");
    }
  }
  // The queues send through the network adapter, which goes soon after.
  mReaper.drain();
}

std::list<RemoteDeviceQueues::State> RemoteDeviceQueues::states() const {
  std::list<State> states;
  TCAutoLock lock(mLock);
  for (auto const& [url, queue] : mQueues) {
    states.push_back({queue->getDeviceID(), queue->getCounters(), url});
  }
  return states;
}

std::size_t RemoteDeviceQueues::size() const {
  TCAutoLock lock(mLock);
  return mQueues.size();
}

}  // namespace Zelv::Controller
