#include "apps/zelvctl/SeenIds.h"

namespace ZelvCtl {

bool SeenIds::check(std::string const& aMessageId) {
  if (aMessageId.empty() || aMessageId.size() > MaxLength) {
    return false;
  }
  if (!mIds.insert(aMessageId).second) {
    return true;
  }
  mOrder.push_back(aMessageId);
  if (mOrder.size() > MaxEntries) {
    mIds.erase(mOrder.front());
    mOrder.pop_front();
  }
  return false;
}

}  // namespace ZelvCtl
