#include "apps/zelvctl/DeviceChoice.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "apps/zelvctl/Identifier.h"

namespace ZelvCtl {

DeviceChoice::DeviceChoice(std::string const& aText)
    : mText(aText), mId(Identifier::usualForm(aText).value_or(aText)) {}

std::optional<Device> DeviceChoice::byId(std::vector<Device> const& aDevices) const {
  auto const found = std::find_if(aDevices.begin(), aDevices.end(), [this](Device const& aDevice) {
    return aDevice.id == mId || aDevice.id == mText;
  });
  return found == aDevices.end() ? std::nullopt : std::optional(*found);
}

std::vector<Device> DeviceChoice::byName(std::vector<Device> const& aDevices) const {
  std::vector<Device> found;
  std::copy_if(aDevices.begin(), aDevices.end(), std::back_inserter(found),
               [this](Device const& aDevice) { return aDevice.name == mText; });
  return found;
}

Device DeviceChoice::among(std::vector<Device> const& aDevices) const {
  if (auto const device = byId(aDevices)) {
    return *device;
  }
  std::vector<Device> const called = byName(aDevices);
  if (called.empty()) {
    throw std::runtime_error("no device has the name or ID '" + mText +
                             "'; `zelvctl devices` lists those that are there");
  }
  if (called.size() > 1) {
    throw std::runtime_error(std::to_string(called.size()) + " devices are called '" + mText +
                             "'; the ID tells one from the other");
  }
  return called.front();
}

}  // namespace ZelvCtl
