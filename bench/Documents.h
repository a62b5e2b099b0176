#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Zelv::Bench {

/// A document of devices and services, as the system keeps them, of about the size asked for.
class Documents {
 public:
  /// @param aBytes  the length of the text, met to within one device.
  explicit Documents(std::size_t aBytes);

  std::string const& text() const { return mText; }
  int devices() const { return mDevices; }
  int services() const { return mDevices; }

  /// The identifier of device aIndex, and the name of service aIndex.
  static std::string deviceId(int aIndex);
  static std::string serviceName(int aIndex);
  static std::string devicePort(int aIndex);
  static std::string deviceName(int aIndex);
  static int heartBeat(int aIndex);

 private:
  std::string mText;
  int mDevices = 0;
};

}  // namespace Zelv::Bench
