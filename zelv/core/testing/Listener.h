#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <iterator>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "zelv/interfaces/IBaseDataCallback.h"
#include "zelv/interfaces/IBaseTimerCallback.h"

namespace Zelv::Testing {

/// One thing that the library told.
struct Told {
  enum Kind { Data, Status, Timer };

  Kind kind;
  /// The path, or the timer's name.
  std::string what;
  /// The value, or the status text.
  std::string value;
  ContextInformation const* context;
  GUID id;
};

inline std::ostream& operator<<(std::ostream& aStream, Told const& aTold) {
  static char const* const cKinds[] = {"data", "status", "timer"};
  return aStream << cKinds[aTold.kind] << " " << aTold.what << " = '" << aTold.value << "' "
                 << aTold.id.toString();
}

/// Notes what it is told, from whatever thread, and lets a test wait for it.
class Listener : public virtual IBaseDataCallback, public virtual IBaseTimerCallback {
 public:
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override {
    note({Told::Data, aXPath, aValue, aContext, aTransactionID});
  }

  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override {
    note({Told::Status, "", aStatus.getStatusText(), nullptr, aTransactionID});
  }

  void onTimer(std::string const& aTimerName, GUID aTimerID) override {
    note({Told::Timer, aTimerName, "", nullptr, aTimerID});
  }

  /// Waits until aCount things of this id were told. @return whether they came in a time that
  /// nothing healthy needs.
  bool waitFor(GUID const& aId, std::size_t aCount = 1) const {
    std::unique_lock lock(mLock);
    return mGrown.wait_for(lock, std::chrono::seconds(30),
                           [&] { return ofLocked(aId).size() >= aCount; });
  }

  /// What was told of this id, in order.
  std::vector<Told> of(GUID const& aId) const {
    std::lock_guard lock(mLock);
    return ofLocked(aId);
  }

  /// All of it, in order.
  std::vector<Told> all() const {
    std::lock_guard lock(mLock);
    return mTold;
  }

 private:
  void note(Told const& aTold) {
    std::lock_guard lock(mLock);
    mTold.push_back(aTold);
    mGrown.notify_all();
  }

  std::vector<Told> ofLocked(GUID const& aId) const {
    std::vector<Told> found;
    std::copy_if(mTold.begin(), mTold.end(), std::back_inserter(found),
                 [&aId](Told const& aTold) { return aTold.id == aId; });
    return found;
  }

  mutable std::mutex mLock;
  mutable std::condition_variable mGrown;
  std::vector<Told> mTold;
};

}  // namespace Zelv::Testing
