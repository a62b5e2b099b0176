#pragma once

#include <chrono>
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
};

/// The devices that this phone has heard of.
class KnownDevices {
 public:
  using Clock = std::chrono::steady_clock;

  /// @return true when the device is new.
  bool add(Device const& aDevice);

  /// Notes that the device has been heard. @return false when it is not known.
  bool stamp(std::string const& aDeviceId);

  std::optional<Device> remove(std::string const& aDeviceId);

  /// Takes out the devices not heard for this long.
  std::vector<Device> removeSilent(Clock::duration aPatience);

  /// All of them, by type and then name.
  std::vector<Device> sorted() const;

 private:
  struct Entry {
    Device device;
    Clock::time_point heard;
  };

  std::map<std::string, Entry> mEntries;
};

}  // namespace ZelvCtl
