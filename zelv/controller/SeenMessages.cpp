#include "zelv/controller/SeenMessages.h"

#include <algorithm>

namespace Zelv::Controller {

bool SeenMessages::check(std::string const& aMessageId, std::int64_t aNow) {
  if (mTimes.contains(aMessageId)) {
    return true;
  }
  if (aMessageId.size() > MaxIdLength) {
    return false;
  }
  if (mTimes.size() >= MaxEntries) {
    mTimes.erase(mOrder.front());
    mOrder.pop_front();
  }
  mTimes.emplace(aMessageId, aNow);
  mOrder.push_back(aMessageId);
  return false;
}

void SeenMessages::shift(std::int64_t aSeconds) {
  for (auto& entry : mTimes) {
    entry.second += aSeconds;
  }
}

void SeenMessages::dropForgottenFromOrder() {
  std::erase_if(mOrder, [this](std::string const& aId) { return !mTimes.contains(aId); });
}

}  // namespace Zelv::Controller
