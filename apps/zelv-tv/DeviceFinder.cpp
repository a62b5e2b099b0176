#include "apps/zelv-tv/DeviceFinder.h"

#include <algorithm>
#include <vector>

namespace ZelvTv {

namespace {

char const* const kSelf = "SELF";

}  // namespace

DeviceWatch::Entry DeviceFinder::find(std::string const& aText) const {
  std::vector<DeviceWatch::Entry> entries = mDevices.Entries();
  entries.push_back({kSelf, mSelf.Id(), mSelf.Address(), mSelf.Name()});
  auto const byId = std::find_if(entries.begin(), entries.end(),
                                 [&](auto const& aEntry) { return aEntry.id == aText; });
  if (byId != entries.end()) {
    return *byId;
  }
  std::erase_if(
      entries, [&](auto const& aEntry) { return aEntry.name != aText && aEntry.address != aText; });
  if (entries.empty()) {
    throw NotFound("no device '" + aText + "'");
  }
  if (entries.size() > 1) {
    throw NotFound(std::to_string(entries.size()) + " devices are '" + aText +
                   "'; their IDs tell them apart");
  }
  return entries.front();
}

std::string DeviceFinder::ForCommand(std::string const& aText) const {
  if (aText == "-") {
    return mSelf.Id();
  }
  DeviceWatch::Entry const entry = find(aText);
  if (entry.type != kSelf && entry.type != DeviceWatch::kMobile) {
    throw NotFound("'" + aText + "' is a television; commands go to mobile devices");
  }
  return entry.id;
}

}  // namespace ZelvTv
