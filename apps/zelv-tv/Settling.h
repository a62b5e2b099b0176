#pragma once

#include <atomic>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/FirstAnswer.h"
#include "apps/zelv-tv/OpenQuestions.h"

namespace ZelvTv {

/// Finds out when all that was asked has been answered, so that a script that ends its input gets
/// every answer: of this device's tree, of other devices' trees, and of commands. The latter may
/// never come. MUST live until the library has stopped.
class Settling {
 public:
  /// All arguments outlive the object.
  Settling(EventQueue& aEvents, OpenQuestions const& aQuestions, Zelv::IAppData& aTree)
      : mEvents(aEvents), mQuestions(aQuestions), mTree(aTree) {}

  /// Begins to watch; to be called once. The events' queue is woken when IsSettled() turns true.
  void Begin();

  bool IsSettled() const { return mTreeSettled && mQuestions.AreAnswered(); }

 private:
  EventQueue& mEvents;
  OpenQuestions const& mQuestions;
  Zelv::IAppData& mTree;
  FirstAnswer mWrites;
  FirstAnswer mReadsAgain;
  std::atomic<bool> mTreeSettled = false;
};

}  // namespace ZelvTv
