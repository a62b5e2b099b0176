#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "zelv/interfaces/ICoreUserCallback.h"

namespace Zelv::Controller::Testing {

/// One input event as a subscriber hears it.
struct HeardInput {
  std::string type;
  std::string value;
  std::string device;
  std::string user;
  GUID id;
  bool operator==(HeardInput const&) const = default;
};

inline std::ostream& operator<<(std::ostream& aStream, HeardInput const& aInput) {
  return aStream << aInput.type << " '" << aInput.value << "' " << aInput.device << ' '
                 << aInput.user << ' ' << aInput.id.toString();
}

/// Notes the input that it hears, on whatever thread, and then does what the test wants done.
class RecordingUserCallback : public virtual ICoreUserCallback {
 public:
  using Reaction = std::function<void(HeardInput const&)>;

  RecordingUserCallback() = default;
  explicit RecordingUserCallback(Reaction aReaction) : reaction(std::move(aReaction)) {}

  /// MUST NOT be changed while calls can come.
  Reaction reaction;

  void onUserInput(std::string const& aType, std::string const& aValue, std::string const& aDevice,
                   std::string const& aUser, GUID const& aSubscriptionID) override {
    HeardInput const input{aType, aValue, aDevice, aUser, aSubscriptionID};
    // Once the call is noted a test may go on, and this object go with it.
    bool const reacts = static_cast<bool>(reaction);
    {
      std::lock_guard lock(mLock);
      mHeard.push_back(input);
      mGrown.notify_all();
    }
    if (reacts) {
      reaction(input);
    }
  }

  void onStatus(StatusInformation const&, GUID const&) override {}

  /// Waits until there were aCount calls in all. @return whether they came in a time that nothing
  /// healthy needs.
  bool waitFor(std::size_t aCount) const {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(20), [&] { return mHeard.size() >= aCount; });
  }

  std::vector<HeardInput> heard() const {
    std::lock_guard lock(mLock);
    return mHeard;
  }

  std::vector<std::string> values() const {
    std::vector<std::string> values;
    for (HeardInput const& input : heard()) {
      values.push_back(input.value);
    }
    return values;
  }

  std::size_t count() const { return heard().size(); }

 private:
  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<HeardInput> mHeard;
};

}  // namespace Zelv::Controller::Testing
