#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Zelv::Platform::Fake {

/// A network interface of the machine, as the test has it.
struct FakeInterface {
  std::string name;
  std::array<std::uint8_t, 6> mac;
  std::vector<std::string> addresses;  ///< dotted
};

/// The interfaces behind InterfaceQuery, owned by the test. After Reset() there are two: "lo" with
/// 127.0.0.1 and "eth0" with 02:00:5E:00:53:01 and 192.0.2.1.
class FakeInterfaces {
 public:
  static void Set(std::vector<FakeInterface> const& aInterfaces);

  /// The hardware addresses cannot be read, with this errno, until Reset().
  static void FailHardwareAddress(int aErrno);

  /// As FailHardwareAddress(), for the IPv4 addresses.
  static void FailAddresses(int aErrno);

  static void Reset();
};

}  // namespace Zelv::Platform::Fake
