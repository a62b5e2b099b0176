#pragma once

#include <atomic>
#include <string>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/FirstAnswer.h"

namespace ZelvTv {

/// Finds out when the tree answers, and says so once: "ready ID ADDRESS", with "-" for what is not
/// known. MUST live until the library has stopped.
class Readiness {
 public:
  Readiness(EventQueue& aEvents, Zelv::IAppData& aTree);

  bool IsReady() const { return mReady; }

 private:
  void announce(std::string const& aAddress);

  EventQueue& mEvents;
  FirstAnswer mIdAnswer;
  FirstAnswer mAddressAnswer;
  std::string mId;
  std::atomic<bool> mReady = false;
};

}  // namespace ZelvTv
