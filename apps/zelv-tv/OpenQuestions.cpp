#include "apps/zelv-tv/OpenQuestions.h"

namespace ZelvTv {

// No lock is held over the call: answers are given under locks of the tree, which it takes.
Zelv::GUID OpenQuestions::Ask(std::function<Zelv::GUID()> const& aAsk) {
  {
    std::lock_guard const lock(mMutex);
    mAsking = true;
  }
  try {
    Zelv::GUID const id = aAsk();
    std::lock_guard const lock(mMutex);
    if (!mEarly.contains(id)) {
      mOpen.insert(id);
    }
    endAsking();
    return id;
  } catch (...) {
    std::lock_guard const lock(mMutex);
    endAsking();
    throw;
  }
}

void OpenQuestions::endAsking() {
  mAsking = false;
  mEarly.clear();
}

void OpenQuestions::Answered(Zelv::GUID const& aId) {
  std::lock_guard const lock(mMutex);
  if (mOpen.erase(aId) == 0) {
    if (mAsking) {
      mEarly.insert(aId);
    }
  } else if (mOpen.empty()) {
    mEvents.Wake();
  }
}

bool OpenQuestions::AreAnswered() const {
  std::lock_guard const lock(mMutex);
  return mOpen.empty();
}

}  // namespace ZelvTv
