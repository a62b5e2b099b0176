#include "apps/zelvctl/KnownDevices.h"

#include <algorithm>
#include <tuple>

namespace ZelvCtl {

bool KnownDevices::add(Device const& aDevice, Clock::time_point aNow) {
  bool const isKnown = mEntries.contains(aDevice.id);
  if (!isKnown && mEntries.size() >= MaxDevices) {
    return false;
  }
  mEntries.insert_or_assign(aDevice.id, Entry{aDevice, aNow});
  return !isKnown;
}

bool KnownDevices::stamp(std::string const& aDeviceId, Clock::time_point aNow) {
  auto const entry = mEntries.find(aDeviceId);
  if (entry == mEntries.end()) {
    return false;
  }
  entry->second.heard = aNow;
  return true;
}

std::optional<Device> KnownDevices::remove(std::string const& aDeviceId) {
  auto const entry = mEntries.extract(aDeviceId);
  return entry ? std::optional(entry.mapped().device) : std::nullopt;
}

std::vector<Device> KnownDevices::removeSilentSince(Clock::time_point aLimit) {
  std::vector<Device> silent;
  std::erase_if(mEntries, [&](auto const& aEntry) {
    bool const isSilent = aEntry.second.heard < aLimit;
    if (isSilent) {
      silent.push_back(aEntry.second.device);
    }
    return isSilent;
  });
  return silent;
}

std::vector<Device> KnownDevices::sorted() const {
  std::vector<Device> devices;
  for (auto const& [id, entry] : mEntries) {
    devices.push_back(entry.device);
  }
  std::sort(devices.begin(), devices.end(), [](Device const& aOne, Device const& aOther) {
    bool const oneIsPhone = aOne.type != "TV";
    bool const otherIsPhone = aOther.type != "TV";
    return std::tie(oneIsPhone, aOne.name, aOne.id) <
           std::tie(otherIsPhone, aOther.name, aOther.id);
  });
  return devices;
}

}  // namespace ZelvCtl
