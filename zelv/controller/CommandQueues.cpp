#include "zelv/controller/CommandQueues.h"

#include <algorithm>
#include <set>
#include <utility>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv::Controller {

CommandQueues::CommandQueues()
    : CommandQueues([](DeviceServiceQueue& aQueue) { return aQueue.terminate(); }) {}

CommandQueues::CommandQueues(Terminate aTerminate) : mTerminate(aTerminate) {}

bool CommandQueues::has(std::string const& aDeviceId) const {
  TCAutoLock lock(mLock);
  return mQueues.contains(aDeviceId);
}

bool CommandQueues::post(std::string const& aDeviceId, std::string const& aText) {
  TCAutoLock lock(mLock);
  auto const entry = mQueues.find(aDeviceId);
  if (entry == mQueues.end()) {
    return false;
  }
  entry->second->postCommand(aText);
  return true;
}

void CommandQueues::add(std::string const& aDeviceId, std::unique_ptr<DeviceServiceQueue> aQueue,
                        std::string const& aText) {
  TCAutoLock lock(mLock);
  makeRoom();
  std::unique_ptr<DeviceServiceQueue>& entry = mQueues[aDeviceId];
  retire(std::exchange(entry, std::move(aQueue)));
  entry->postCommand(aText);
}

void CommandQueues::makeRoom() {
  if (mQueues.size() < MaxQueues) {
    return;
  }
  auto const idle =
      std::min_element(mQueues.begin(), mQueues.end(), [](auto const& aOne, auto const& aOther) {
        return aOne.second->getLastActivity() < aOther.second->getLastActivity();
      });
  PCRealDebug::Print(PCRealDebug::Warning,
                     "CommandQueues::makeRoom: Too many queues, removed that of device '%s'.",
                     idle->first.c_str());
  retire(std::move(idle->second));
  mQueues.erase(idle);
}

void CommandQueues::retire(std::unique_ptr<DeviceServiceQueue> aQueue) {
  if (!aQueue) {
    return;
  }
  if (!mTerminate(*aQueue)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "CommandController::terminate: Device Service Queue termination failed.");
  }
  mReaper.retire(std::move(aQueue));
}

void CommandQueues::removeAll() {
  TCAutoLock lock(mLock);
  for (auto& [deviceId, queue] : mQueues) {
    retire(std::move(queue));
  }
  mQueues.clear();
}

void CommandQueues::remove(std::string const& aDeviceId) {
  TCAutoLock lock(mLock);
  auto const entry = mQueues.find(aDeviceId);
  if (entry != mQueues.end()) {
    retire(std::move(entry->second));
    mQueues.erase(entry);
  }
}

std::list<std::string> CommandQueues::missingFrom(std::list<std::string> const& aDeviceIds) const {
  std::set<std::string> const known(aDeviceIds.begin(), aDeviceIds.end());
  std::list<std::string> missing;
  TCAutoLock lock(mLock);
  for (auto const& [deviceId, queue] : mQueues) {
    if (!known.contains(deviceId)) {
      missing.push_back(deviceId);
    }
  }
  return missing;
}

std::list<CommandQueues::State> CommandQueues::states() const {
  std::list<State> states;
  TCAutoLock lock(mLock);
  for (auto const& [deviceId, queue] : mQueues) {
    states.push_back({deviceId, queue->getCounters(), queue->getServiceURL().toString()});
  }
  return states;
}

}  // namespace Zelv::Controller
