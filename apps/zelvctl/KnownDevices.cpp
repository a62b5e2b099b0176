#include "apps/zelvctl/KnownDevices.h"

#include <algorithm>
#include <tuple>

namespace ZelvCtl {

bool KnownDevices::add(Device const& aDevice) {
  return mEntries.insert_or_assign(aDevice.id, Entry{aDevice, Clock::now()}).second;
}

bool KnownDevices::stamp(std::string const& aDeviceId) {
  auto const entry = mEntries.find(aDeviceId);
  if (entry == mEntries.end()) {
    return false;
  }
  entry->second.heard = Clock::now();
  return true;
}

std::optional<Device> KnownDevices::remove(std::string const& aDeviceId) {
  auto const entry = mEntries.extract(aDeviceId);
  return entry ? std::optional(entry.mapped().device) : std::nullopt;
}

std::vector<Device> KnownDevices::removeSilent(Clock::duration aPatience) {
  Clock::time_point const limit = Clock::now() - aPatience;
  std::vector<Device> silent;
  std::erase_if(mEntries, [&](auto const& aEntry) {
    if (aEntry.second.heard < limit) {
      silent.push_back(aEntry.second.device);
      return true;
    }
    return false;
  });
  return silent;
}

std::vector<Device> KnownDevices::sorted() const {
  std::vector<Device> devices;
  for (auto const& [id, entry] : mEntries) {
    devices.push_back(entry.device);
  }
  std::sort(devices.begin(), devices.end(), [](Device const& aOne, Device const& aOther) {
    return std::tie(aOther.type, aOne.name, aOne.id) < std::tie(aOne.type, aOther.name, aOther.id);
  });
  return devices;
}

}  // namespace ZelvCtl
