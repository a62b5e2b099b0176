#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "zelv/interfaces/ICoreDataCallback.h"

namespace Zelv::Controller::Testing {

/// One call of a callback.
struct Heard {
  enum Kind { Data, Status };

  Kind kind;
  std::string path;
  /// The value, or the status text.
  std::string value;
  ContextInformation const* context;
  GUID id;
  std::thread::id thread;
};

inline std::ostream& operator<<(std::ostream& aStream, Heard const& aHeard) {
  return aStream << (aHeard.kind == Heard::Data ? "data " : "status ") << aHeard.path << " = '"
                 << aHeard.value << "' " << aHeard.id.toString();
}

/// Notes what it hears, on whatever thread, and then does what the test wants done. Without a
/// reaction it may go as soon as the last call was waited for.
class RecordingCallback : public virtual ICoreDataCallback {
 public:
  using Reaction = std::function<void(Heard const&)>;

  /// MUST NOT be changed while calls can come.
  Reaction reaction;

  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override {
    note({Heard::Data, aXPath, aValue, aContext, aTransactionID, std::this_thread::get_id()});
  }

  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override {
    note({Heard::Status, "", aStatus.getStatusText(), nullptr, aTransactionID,
          std::this_thread::get_id()});
  }

  /// Waits until there were aCount calls in all. @return whether they came in a time that nothing
  /// healthy needs.
  bool waitFor(std::size_t aCount) const {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(30), [&] { return mHeard.size() >= aCount; });
  }

  std::vector<Heard> heard() const {
    std::lock_guard lock(mLock);
    return mHeard;
  }

  std::vector<Heard> heardOf(GUID const& aId) const {
    std::vector<Heard> found;
    for (Heard const& one : heard()) {
      if (one.id == aId) {
        found.push_back(one);
      }
    }
    return found;
  }

  std::size_t count() const { return heard().size(); }

 private:
  void note(Heard const& aHeard) {
    // Once the call is noted a test may go on, and this object go with it.
    bool const reacts = static_cast<bool>(reaction);
    {
      std::lock_guard lock(mLock);
      mHeard.push_back(aHeard);
      mGrown.notify_all();
    }
    if (reacts) {
      reaction(aHeard);
    }
  }

  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<Heard> mHeard;
};

}  // namespace Zelv::Controller::Testing
