#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "zelv/interfaces/NetworkMessageCallback.h"

namespace Zelv::Testing {

/// Keeps the messages of a service, and does something with each if told to.
class Receiver final : public NetworkMessageCallback {
 public:
  Receiver() = default;
  explicit Receiver(std::function<void(std::string const&)> aAction)
      : mAction(std::move(aAction)) {}

  void onMessage(std::string const& aMessage, std::string const& aSender) override {
    {
      std::lock_guard lock(mLock);
      mMessages.push_back(aMessage);
      mSenders.push_back(aSender);
    }
    mGrown.notify_all();
    if (mAction) {
      mAction(aMessage);
    }
  }

  /// Waits until there are aCount messages. @return false when they did not come in 20 seconds.
  bool waitFor(std::size_t aCount) {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(20),
                           [&] { return mMessages.size() >= aCount; });
  }

  std::vector<std::string> messages() const {
    std::lock_guard lock(mLock);
    return mMessages;
  }

  std::vector<std::string> senders() const {
    std::lock_guard lock(mLock);
    return mSenders;
  }

 private:
  std::function<void(std::string const&)> const mAction;
  mutable std::mutex mLock;
  std::condition_variable mGrown;
  std::vector<std::string> mMessages;
  std::vector<std::string> mSenders;
};

}  // namespace Zelv::Testing
