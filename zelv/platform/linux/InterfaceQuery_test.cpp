#include "zelv/platform/InterfaceQuery.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "zelv/platform/CCmSocket.h"

namespace {

using testing::Contains;
using testing::Each;
using Zelv::Platform::InterfaceQuery;

class Interfaces : public testing::Test {
 protected:
  Interfaces() : mSocket(CCmSocket::Open(2, 1, 0)) {}
  ~Interfaces() override { CCmSocket::Close(mSocket); }

  int const mSocket;
};

TEST_F(Interfaces, HoldTheLoopback) {
  EXPECT_THAT(InterfaceQuery::Names(), Contains("lo"));
}

TEST_F(Interfaces, HaveAHardwareAddressThatIsZeroForTheLoopback) {
  std::uint8_t mac[6] = {1, 1, 1, 1, 1, 1};
  EXPECT_TRUE(InterfaceQuery::HardwareAddress(mSocket, "lo", mac));
  EXPECT_THAT(mac, Each(0));
}

TEST_F(Interfaces, HaveTheirAddresses) {
  std::vector<SocketCommon::In_addr> addresses;
  ASSERT_TRUE(InterfaceQuery::Addresses(mSocket, "lo", addresses));
  ASSERT_FALSE(addresses.empty());
  EXPECT_EQ("127.0.0.1", CCmSocket::AddressValueToString(addresses[0]));
}

TEST_F(Interfaces, HaveNothingUnderANameThatThereIsNot) {
  std::uint8_t mac[6] = {1, 1, 1, 1, 1, 1};
  std::vector<SocketCommon::In_addr> addresses;
  for (char const* name : {"", "nosuch", "l", "lo0", "a name that is longer than any can be"}) {
    EXPECT_FALSE(InterfaceQuery::HardwareAddress(mSocket, name, mac)) << name;
    EXPECT_TRUE(InterfaceQuery::Addresses(mSocket, name, addresses)) << name;
  }
  EXPECT_THAT(mac, Each(1));
  EXPECT_TRUE(addresses.empty());
}

TEST_F(Interfaces, CannotBeReadWithoutASocket) {
  std::uint8_t mac[6] = {};
  std::vector<SocketCommon::In_addr> addresses;
  EXPECT_FALSE(InterfaceQuery::HardwareAddress(-1, "lo", mac));
  EXPECT_EQ(EBADF, errno);
  EXPECT_FALSE(InterfaceQuery::Addresses(-1, "lo", addresses));
  EXPECT_EQ(EBADF, errno);
}

}  // namespace
