#pragma once

#include <atomic>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/FirstAnswer.h"

namespace ZelvTv {

/// Finds out when all that was asked of this device's tree has been answered, so that a script that
/// ends its input gets every answer. MUST live until the library has stopped.
class Settling {
 public:
  Settling(EventQueue& aEvents, Zelv::IAppData& aTree) : mEvents(aEvents), mTree(aTree) {}

  /// Begins to watch; to be called once. The events' queue is woken when IsSettled() turns true.
  void Begin();

  bool IsSettled() const { return mSettled; }

 private:
  EventQueue& mEvents;
  Zelv::IAppData& mTree;
  FirstAnswer mWrites;
  FirstAnswer mReadsAgain;
  std::atomic<bool> mSettled = false;
};

}  // namespace ZelvTv
