#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ZelvCtl {

/// A device of the home, as it described itself.
struct Device {
  std::string id;
  std::string type;
  std::string name;
  std::string model;
  std::string address;  ///< host of its first service; empty for a device without services
  std::map<std::string, std::string> services = {};  ///< URLs, unchecked, by name
};

/// The devices that this phone has heard of, MaxDevices of them at most.
class KnownDevices {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::size_t MaxDevices = 1024;

  /// Takes in what a device says of itself, in the place of what it said before.
  /// @return true when the device is new.
  bool add(Device const& aDevice, Clock::time_point aNow);

  /// Notes that the device has been heard. @return false when it is not known.
  bool stamp(std::string const& aDeviceId, Clock::time_point aNow);

  std::optional<Device> remove(std::string const& aDeviceId);

  /// Takes out the devices that were last heard before aLimit.
  std::vector<Device> removeSilentSince(Clock::time_point aLimit);

  /// All of them: televisions, then phones; by name, then ID.
  std::vector<Device> sorted() const;

 private:
  struct Entry {
    Device device;
    Clock::time_point heard;
  };

  std::map<std::string, Entry> mEntries;
};

}  // namespace ZelvCtl
