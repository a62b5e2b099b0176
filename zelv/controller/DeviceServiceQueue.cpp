#include "zelv/controller/DeviceServiceQueue.h"

#include <exception>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv::Controller {

using Infrastructure::GUID;
using Infrastructure::URL;

DeviceServiceQueue::DeviceServiceQueue() : mLastActivity(PCTime::MonotonicMs()) {
  mSemaphore.Create(0);
}

DeviceServiceQueue::~DeviceServiceQueue() {
  PCRealDebug::Print(PCRealDebug::Trace,
                     "DeviceServiceQueue::~DeviceServiceQueue: Entry for ID=%d.", mThreadID);
  DeviceServiceQueue::terminate();
  Destroy();
  mSemaphore.Destroy();
  PCRealDebug::Print(PCRealDebug::Trace, "DeviceServiceQueue::~DeviceServiceQueue: Exit for ID=%d.",
                     mThreadID);
}

// The URL comes by value, as the interface has it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
bool DeviceServiceQueue::initialize(URL aURL, std::string const& aDeviceID) {
  TraceScope trace("DeviceServiceQueue::initialize");
  if (Create("Quorl - DeviceServiceQueue::initialize", 4096) == 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DeviceServiceQueue::initialize: Error creating a new thread");
    return false;
  }
  // The thread looks at none of these before the first text, which comes after this.
  mThreadID = static_cast<int>(GetId());
  mDeviceID = aDeviceID;
  mServiceURL = aURL;
  mNetworkAdapter = Adapter::NetworkAdapter::getInstance();
  return true;
}

bool DeviceServiceQueue::postCommand(std::string const& aMessage) {
  TraceScope trace("DeviceServiceQueue::postCommand");
  if (aMessage.empty()) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DeviceServiceQueue::postCommand: Command String is empty!!!!");
    return false;
  }
  bool counted = false;
  {
    TCAutoLock lock(mLock);
    if (mTerminate) {
      ++mDropped;  // the thread may be gone, and nobody would take it out
      return true;
    }
    // The count of a dropped text stands for this one.
    counted = makeRoomFor(aMessage.size()) > 0;
    mTexts.push_back(aMessage);
    mWaitingBytes += aMessage.size();
    noteLength();
    mLastActivity = PCTime::MonotonicMs();
  }
  // Without the lock, which the thread that wakes takes first.
  if (!counted) {
    mSemaphore.Give();
  }
  return true;
}

std::size_t DeviceServiceQueue::makeRoomFor(std::size_t aBytes) {
  std::size_t dropped = 0;
  while (!mTexts.empty() && (mTexts.size() >= MaxTexts || mWaitingBytes + aBytes > MaxBytes)) {
    mWaitingBytes -= mTexts.front().size();
    mTexts.pop_front();
    ++dropped;
  }
  if (dropped > 0) {
    mDropped += dropped;
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DeviceServiceQueue::postCommand: Too much waits for device '%s', dropped "
                       "the %d oldest.",
                       mDeviceID.c_str(), static_cast<int>(dropped));
  }
  return dropped;
}

void DeviceServiceQueue::noteLength() {
  mLength.store(mTexts.size(), std::memory_order_relaxed);
  mBytes.store(mWaitingBytes, std::memory_order_relaxed);
}

std::string DeviceServiceQueue::dequeueCommand() {
  TCAutoLock lock(mLock);
  if (mTexts.empty()) {
    return "";
  }
  std::string text = std::move(mTexts.front());
  mTexts.pop_front();
  mWaitingBytes -= text.size();
  noteLength();
  return text;
}

void DeviceServiceQueue::t_Main() {
  processCommandQueue();
}

void DeviceServiceQueue::processCommandQueue() {
  TraceScope trace("DeviceServiceQueue::processCommandQueue");
  for (;;) {
    mSemaphore.Take();
    if (mTerminate) {
      break;
    }
    std::string const text = dequeueCommand();
    if (!text.empty()) {
      send(text);
    }
  }
  TCAutoLock lock(mLock);
  mDropped += mTexts.size();
  mTexts.clear();
  mWaitingBytes = 0;
  noteLength();
}

// Without a wait between the attempts: the one that failed has waited for its time-outs.
void DeviceServiceQueue::send(std::string const& aText) {
  bool sent = false;
  for (int count = 0; !sent && count < MaxAttempts && !mTerminate; ++count) {
    sent = attempt(aText, count);
  }
  mLastActivity = PCTime::MonotonicMs();
  ++(sent ? mSent : mDropped);
}

bool DeviceServiceQueue::attempt(std::string const& aText, int aCount) {
  // A warning also when all is well: the log shows the traffic to a device by it, and the line of
  // attempt 2 is the last there is of a text that was given up.
  PCRealDebug::Print(PCRealDebug::Warning,
                     "DeviceServiceQueue::Thread ID=%d Sending Command: Attempt %d.", mThreadID,
                     aCount);
  ++mAttempts;
  try {
    return !(mNetworkAdapter->send(mServiceURL, aText, "", 1, mCancel) == GUID::nullGUID);
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error, "DeviceServiceQueue::attempt: Exception: %s",
                       error.what());
    return false;
  }
}

bool DeviceServiceQueue::terminate() {
  if (!mTerminate.exchange(true)) {
    mCancel.cancel();
    mSemaphore.Give();
  }
  return true;
}

DeviceServiceQueue::Counters DeviceServiceQueue::getCounters() const {
  Counters counters;
  counters.length = mLength;
  counters.bytes = mBytes;
  counters.attempts = mAttempts;
  counters.sent = mSent;
  counters.dropped = mDropped;
  return counters;
}

}  // namespace Zelv::Controller
