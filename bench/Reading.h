#pragma once

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "bench/Arrivals.h"
#include "zelv/interfaces/IAppData.h"

namespace Zelv::Bench {

/// Counts the values that come.
class Answer : public virtual IBaseDataCallback {
 public:
  void onData(std::string const&, std::string const& aValue, ContextInformation const*,
              GUID const&) override {
    keep(aValue);
    mArrivals.arrive();
  }
  void onStatus(StatusInformation const&, GUID const&) override {}

  bool take(int aCount = 1) { return mArrivals.take(aCount); }

  std::string last() const {
    std::lock_guard lock(mLock);
    return mLast;
  }

 private:
  void keep(std::string const& aValue) {
    std::lock_guard lock(mLock);
    mLast = aValue;
  }

  Arrivals mArrivals;
  mutable std::mutex mLock;
  std::string mLast;
};

/// Reads the tree and waits for what it says.
class Reading {
 public:
  /// Heartbeats that do not come in the time of a benchmark.
  static constexpr int cLongInterval = 3600;

  explicit Reading(IAppData* aData) : mData(aData) {}

  std::string read(std::string const& aPath) {
    Answer answer;
    mData->requestData(aPath, nullptr, &answer);
    if (!answer.take()) {
      throw std::runtime_error("no answer to " + aPath);
    }
    return answer.last();
  }

  /// @throws std::runtime_error when it does not come in a time that nothing healthy needs.
  void waitFor(std::string const& aPath, std::string const& aValue) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (read(aPath) != aValue) {
      if (std::chrono::steady_clock::now() > end) {
        throw std::runtime_error(aPath + " does not become " + aValue);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

 private:
  IAppData* mData;
};

}  // namespace Zelv::Bench
