#include "zelv/adapter/SocketOptions.h"

#include <gmock/gmock.h>

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/Fakes.h"

namespace {

using testing::ElementsAre;
using Zelv::Adapter::SocketOptions;
using Zelv::Platform::Fake::FakeSockets;
using Zelv::Platform::Fake::SocketOption;

std::string bytes(auto const& aValue) {
  return std::string(reinterpret_cast<char const*>(&aValue), sizeof aValue);
}

class Options : public testing::Test {
 protected:
  Options() : mStream(CCmSocket::Open(2, 1, 0)), mDatagram(CCmSocket::Open(2, 2, 0)) {
    Zelv::Platform::Fake::ResetFakes();
  }
  ~Options() override {
    CCmSocket::Close(mStream);
    CCmSocket::Close(mDatagram);
  }

  int const mStream;
  int const mDatagram;
};

TEST_F(Options, GoToTheKernelByTheirNumbersAndSizes) {
  EXPECT_EQ(0, SocketOptions::reuseAddress(mStream));
  EXPECT_EQ(0, SocketOptions::sendTimeout(mStream));
  EXPECT_EQ(0, SocketOptions::receiveTimeout(mStream));
  EXPECT_EQ(0, SocketOptions::multicastTTL(mDatagram));
  EXPECT_EQ(0, SocketOptions::multicastLoopOff(mDatagram));
  EXPECT_EQ(0, SocketOptions::multicastInterface(mDatagram, "127.0.0.1"));
  EXPECT_EQ(0, SocketOptions::joinGroup(mDatagram, "239.255.41.7", "127.0.0.1"));
  long const threeSeconds[2] = {3, 0};
  EXPECT_THAT(FakeSockets::TakeOptions(),
              ElementsAre(SocketOption{1, 2, bytes(std::int32_t{1})},
                          SocketOption{1, 21, bytes(threeSeconds)},
                          SocketOption{1, 20, bytes(threeSeconds)},
                          SocketOption{0, 33, bytes(std::uint8_t{1})},
                          SocketOption{0, 34, bytes(std::uint8_t{0})},
                          SocketOption{0, 32, std::string("\x7F\0\0\1", 4)},
                          SocketOption{0, 35, std::string("\xEF\xFF\x29\x07\x7F\0\0\1", 8)}));
}

TEST_F(Options, LetTheKernelFindDeadPeersWithinTwoMinutes) {
  SocketOptions::keepAlive(mStream);
  EXPECT_THAT(FakeSockets::TakeOptions(), ElementsAre(SocketOption{1, 9, bytes(std::int32_t{1})},
                                                      SocketOption{6, 4, bytes(std::int32_t{60})},
                                                      SocketOption{6, 5, bytes(std::int32_t{20})},
                                                      SocketOption{6, 6, bytes(std::int32_t{3})}));
}

TEST_F(Options, TellOfFailure) {
  FakeSockets::FailOption(1, 2, ENOMEM);
  EXPECT_LT(SocketOptions::reuseAddress(mStream), 0);
  EXPECT_EQ(ENOMEM, errno);
}

}  // namespace
