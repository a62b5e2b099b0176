#include "zelv/platform/linux/InterfaceRequests.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>

#include <cstring>

#include "zelv/platform/CCmSocket.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Zelv::Platform::InterfaceRequests;

ifreq request(std::string const& aName, char const* aAddress) {
  ifreq result{};
  aName.copy(result.ifr_name, IFNAMSIZ);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(aAddress);
  std::memcpy(&result.ifr_addr, &address, sizeof address);
  return result;
}

std::vector<std::string> addressesOf(InterfaceRequests const& aRequests, std::string const& aName) {
  std::vector<SocketCommon::In_addr> addresses;
  aRequests.addressesOf(aName, addresses);
  std::vector<std::string> texts;
  for (SocketCommon::In_addr const address : addresses) {
    texts.push_back(CCmSocket::AddressValueToString(address));
  }
  return texts;
}

TEST(InterfaceRequests, GiveAllAddressesOfANameInOrder) {
  InterfaceRequests requests;
  requests.take(
      {request("eth0", "192.0.2.2"), request("lo", "127.0.0.1"), request("eth0", "192.0.2.1")});
  EXPECT_THAT(addressesOf(requests, "eth0"), ElementsAre("192.0.2.2", "192.0.2.1"));
  EXPECT_THAT(addressesOf(requests, "lo"), ElementsAre("127.0.0.1"));
  EXPECT_THAT(addressesOf(requests, "wlan0"), IsEmpty());
}

TEST(InterfaceRequests, CompareNamesExactly) {
  InterfaceRequests requests;
  requests.take(
      {request("eth0", "192.0.2.1"), request("eth0:1", "192.0.2.2"), request("eth", "192.0.2.3")});
  EXPECT_THAT(addressesOf(requests, "eth0"), ElementsAre("192.0.2.1"));
  EXPECT_THAT(addressesOf(requests, "eth"), ElementsAre("192.0.2.3"));
}

TEST(InterfaceRequests, TakeNamesThatFillTheirField) {
  InterfaceRequests requests;
  std::string const longest(IFNAMSIZ, 'x');
  requests.take({request(longest, "192.0.2.1")});
  EXPECT_THAT(addressesOf(requests, longest), ElementsAre("192.0.2.1"));
  EXPECT_THAT(addressesOf(requests, longest + "x"), IsEmpty());
}

}  // namespace
