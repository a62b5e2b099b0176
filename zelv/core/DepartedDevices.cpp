#include "zelv/core/DepartedDevices.h"

#include "zelv/platform/TCAutoLock.h"

namespace Zelv {

void DepartedDevices::note(Entry const& aEntry) {
  TCAutoLock lock(mLock);
  std::erase_if(mEntries, [&](Entry const& aOther) { return aOther.id == aEntry.id; });
  mEntries.push_front(aEntry);
  if (mEntries.size() > cMost) {
    mEntries.pop_back();
  }
}

std::vector<DepartedDevices::Entry> DepartedDevices::all() const {
  TCAutoLock lock(mLock);
  return {mEntries.begin(), mEntries.end()};
}

}  // namespace Zelv
