#include "zelv/platform/fake/FakeInterfaces.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/InterfaceQuery.h"
#include "zelv/platform/fake/Fakes.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Zelv::Platform::InterfaceQuery;
using Zelv::Platform::Fake::FakeInterfaces;

class InterfacesOfTheTest : public testing::Test {
 protected:
  InterfacesOfTheTest() { Zelv::Platform::Fake::ResetFakes(); }
  ~InterfacesOfTheTest() override { Zelv::Platform::Fake::ResetFakes(); }

  std::uint8_t mMac[6] = {};
  std::vector<SocketCommon::In_addr> mAddresses;
};

TEST_F(InterfacesOfTheTest, AreTwoAtFirst) {
  EXPECT_THAT(InterfaceQuery::Names(), ElementsAre("lo", "eth0"));
  EXPECT_TRUE(InterfaceQuery::HardwareAddress(-1, "eth0", mMac));
  EXPECT_THAT(mMac, ElementsAre(0x02, 0x00, 0x5E, 0x00, 0x53, 0x01));
  EXPECT_TRUE(InterfaceQuery::Addresses(-1, "eth0", mAddresses));
  ASSERT_EQ(1U, mAddresses.size());
  EXPECT_EQ("192.0.2.1", CCmSocket::AddressValueToString(mAddresses[0]));
}

TEST_F(InterfacesOfTheTest, AreThoseThatTheTestSets) {
  FakeInterfaces::Set({});
  EXPECT_THAT(InterfaceQuery::Names(), IsEmpty());
  FakeInterfaces::Set({{"a", {1, 2, 3, 4, 5, 6}, {}}});
  EXPECT_THAT(InterfaceQuery::Names(), ElementsAre("a"));
  EXPECT_TRUE(InterfaceQuery::Addresses(-1, "a", mAddresses));
  EXPECT_TRUE(InterfaceQuery::Addresses(-1, "eth0", mAddresses));
  EXPECT_THAT(mAddresses, IsEmpty());
  EXPECT_FALSE(InterfaceQuery::HardwareAddress(-1, "eth0", mMac));
  EXPECT_EQ(ENODEV, errno);
}

TEST_F(InterfacesOfTheTest, FailUntilReset) {
  FakeInterfaces::FailHardwareAddress(EPERM);
  FakeInterfaces::FailAddresses(ENOMEM);
  EXPECT_FALSE(InterfaceQuery::HardwareAddress(-1, "lo", mMac));
  EXPECT_EQ(EPERM, errno);
  EXPECT_FALSE(InterfaceQuery::Addresses(-1, "lo", mAddresses));
  EXPECT_EQ(ENOMEM, errno);
  FakeInterfaces::Reset();
  EXPECT_TRUE(InterfaceQuery::HardwareAddress(-1, "lo", mMac));
  EXPECT_TRUE(InterfaceQuery::Addresses(-1, "lo", mAddresses));
}

}  // namespace
