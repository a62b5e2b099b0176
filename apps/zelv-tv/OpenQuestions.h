#pragma once

#include <functional>
#include <mutex>
#include <set>

#include "apps/zelv-tv/EventQueue.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// What has been asked and not been answered yet, so that the end of the program can wait for it.
class OpenQuestions {
 public:
  explicit OpenQuestions(EventQueue& aEvents) : mEvents(aEvents) {}

  /// Calls aAsk and notes the identifier that it gives. On one thread alone; the answer may come
  /// while it runs.
  Zelv::GUID Ask(std::function<Zelv::GUID()> const& aAsk);

  /// The answer has come, and its line has been posted. From any thread; an identifier that nobody
  /// waits for is passed over.
  void Answered(Zelv::GUID const& aId);

  bool AreAnswered() const;

 private:
  void endAsking();

  EventQueue& mEvents;
  mutable std::mutex mMutex;
  std::set<Zelv::GUID> mOpen;
  /// Ask() runs.
  bool mAsking = false;
  /// What was answered meanwhile, since its identifier is not known yet.
  std::set<Zelv::GUID> mEarly;
};

}  // namespace ZelvTv
