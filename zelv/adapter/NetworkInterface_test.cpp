#include "zelv/adapter/NetworkInterface.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/fake/FakeInterfaces.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace Zelv::Platform::Fake;

class NetworkInterface : public testing::Test {
 protected:
  NetworkInterface() { ResetFakes(); }
  ~NetworkInterface() override { ResetFakes(); }

  static std::vector<std::unique_ptr<Zelv::Adapter::NetworkInterface>> all() {
    std::vector<std::unique_ptr<Zelv::Adapter::NetworkInterface>> result;
    for (auto* const interface : Zelv::Adapter::NetworkInterface::getInterfaces()) {
      result.emplace_back(interface);
    }
    return result;
  }
};

TEST_F(NetworkInterface, IsListedInTheKernelsOrderWithItsAddresses) {
  FakeInterfaces::Set({{"wlan0", {0x02, 0xAB, 0x00, 0xCD, 0xEF, 0xFF}, {"192.0.2.1", "192.0.2.9"}},
                       {"eth0", {}, {}}});
  auto const interfaces = all();
  ASSERT_EQ(2U, interfaces.size());
  EXPECT_EQ("wlan0", interfaces[0]->getName());
  EXPECT_EQ("02:AB:00:CD:EF:FF", interfaces[0]->getMACAddress());
  EXPECT_THAT(interfaces[0]->getIPv4Addresses(), ElementsAre("192.0.2.1", "192.0.2.9"));
  EXPECT_EQ("eth0", interfaces[1]->getName());
  EXPECT_THAT(interfaces[1]->getIPv4Addresses(), IsEmpty());
}

TEST_F(NetworkInterface, OfTheLoopbackIsListedWithAnAllZeroHardwareAddress) {
  FakeInterfaces::Set({{"lo", {}, {"127.0.0.1"}}});
  auto const interfaces = all();
  ASSERT_EQ(1U, interfaces.size());
  EXPECT_EQ("00:00:00:00:00:00", interfaces[0]->getMACAddress());
}

TEST_F(NetworkInterface, DoesNotTakeTheAddressesOfAnAlias) {
  FakeInterfaces::Set({{"eth0", {}, {"192.0.2.1"}}, {"eth0:1", {}, {"192.0.2.2"}}});
  EXPECT_THAT(Zelv::Adapter::NetworkInterface("eth0").getIPv4Addresses(), ElementsAre("192.0.2.1"));
}

TEST_F(NetworkInterface, ListIsEmptyWhenThereIsNone) {
  FakeInterfaces::Set({});
  EXPECT_THAT(all(), IsEmpty());
}

TEST_F(NetworkInterface, HasItsNameAloneWithoutASocket) {
  LogCapture const log;
  FakeSockets::FailNext(FakeSockets::Open, EMFILE);
  {
    Zelv::Adapter::NetworkInterface const interface("eth0");
    EXPECT_EQ("eth0", interface.getName());
    EXPECT_EQ("00:00:00:00:00:00", interface.getMACAddress());
    EXPECT_THAT(interface.getIPv4Addresses(), IsEmpty());
  }
  EXPECT_EQ(0, FakeSockets::Count(FakeSockets::Close));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkInterface::NetworkInterface: Failed to create socket."));
}

TEST_F(NetworkInterface, HasNoAddressesWithoutItsHardwareAddress) {
  LogCapture const log;
  FakeInterfaces::FailHardwareAddress(ENODEV);
  Zelv::Adapter::NetworkInterface const interface("eth0");
  EXPECT_EQ("00:00:00:00:00:00", interface.getMACAddress());
  EXPECT_THAT(interface.getIPv4Addresses(), IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkInterface::NetworkInterface: Failed to get SIOCGIFHWADDR using "
                          "ioctl."));
}

TEST_F(NetworkInterface, HasNoAddressesWhenTheyCannotBeRead) {
  LogCapture const log;
  FakeInterfaces::FailAddresses(ENOMEM);
  Zelv::Adapter::NetworkInterface const interface("eth0");
  EXPECT_EQ("02:00:5E:00:53:01", interface.getMACAddress());
  EXPECT_THAT(interface.getIPv4Addresses(), IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkInterface::NetworkInterface: Failed to get SIOCGIFCONF using "
                          "ioctl."));
}

TEST_F(NetworkInterface, GivesItsSocketBack) {
  { Zelv::Adapter::NetworkInterface const interface("eth0"); }
  EXPECT_EQ(1, FakeSockets::Count(FakeSockets::Open));
  EXPECT_EQ(1, FakeSockets::Count(FakeSockets::Close));
}

}  // namespace
