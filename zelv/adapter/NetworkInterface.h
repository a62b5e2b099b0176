#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Zelv::Adapter {

/// One network interface of the machine, as it was when the object was made.
class NetworkInterface {
 public:
  /// One new object for each interface, in the kernel's order; the caller owns them.
  static std::vector<NetworkInterface*> getInterfaces();

  /// Takes the snapshot. What cannot be read is logged and left out: all-zero bytes for the
  /// hardware address, no address for IPv4.
  explicit NetworkInterface(std::string const& aName);
  NetworkInterface(NetworkInterface const&) = delete;
  NetworkInterface& operator=(NetworkInterface const&) = delete;
  ~NetworkInterface();

  std::string getName() const { return mName; }

  /// The hardware address as six bytes in upper-case hexadecimal, divided by ":".
  std::string getMACAddress() const;

  /// Dotted texts in the kernel's order.
  std::vector<std::string> getIPv4Addresses() const { return mIPv4Addresses; }

 private:
  void readAddresses();

  std::string mName;
  int mSocket = -1;
  std::uint8_t mMACAddress[6] = {};
  std::vector<std::string> mIPv4Addresses;
};

}  // namespace Zelv::Adapter
