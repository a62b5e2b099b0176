#include "zelv/platform/fake/OwnNetwork.h"

#include <gtest/gtest.h>

#include <memory>

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCNetwork.h"
#include "zelv/platform/PCThread.h"

namespace {

using Zelv::Platform::Fake::OwnNetwork;

constexpr std::uint16_t cPort = 4448;

SocketCommon::SockAddr at(char const* aAddress) {
  SocketCommon::SockAddr address;
  address.mFamily = 2;
  address.mPort = PCNetwork::Htons(cPort);
  address.mAddress = CCmSocket::StringToNumeric(aAddress);
  return address;
}

/// A listener on every address of the network that the thread is in.
class Listener {
 public:
  Listener() : mSocket(CCmSocket::Open(2, 1, 0)) {
    auto const any = at("0.0.0.0");
    mListens = CCmSocket::SetAddress(mSocket, &any, sizeof any) == 0 &&
               CCmSocket::ListenConnectionRequest(mSocket, 2) == 0;
  }
  Listener(Listener const&) = delete;
  Listener& operator=(Listener const&) = delete;
  ~Listener() { CCmSocket::Close(mSocket); }
  bool listens() const { return mListens; }

 private:
  int mSocket;
  bool mListens;
};

bool reachable(char const* aAddress) {
  int const socket = CCmSocket::Open(2, 1, 0);
  auto const address = at(aAddress);
  bool const connected = CCmSocket::Connect(socket, &address, sizeof address) == 0;
  CCmSocket::Close(socket);
  return connected;
}

class Probe : public virtual PCThread {
 public:
  bool run() {
    EXPECT_NE(0, Create("probe", 4096));
    Destroy();
    return mReached;
  }
  ~Probe() override { Destroy(); }

 protected:
  void t_Main() override { mReached = reachable("127.0.0.1"); }

 private:
  bool mReached = false;
};

TEST(OwnNetwork, HasTheWholeLoopbackRange) {
  OwnNetwork const network;
  Listener const listener;
  EXPECT_TRUE(listener.listens());
  EXPECT_TRUE(reachable("127.0.0.1"));
  EXPECT_TRUE(reachable("127.0.0.77"));
}

TEST(OwnNetwork, IsThatOfThreadsStartedFromIt) {
  Probe().run();  // leaves a parked thread, which belongs to the machine's network
  OwnNetwork const network;
  Listener const listener;
  EXPECT_TRUE(Probe().run());
}

TEST(OwnNetwork, IsAnotherEachTimeWhereTheMachinePermitsIt) {
  auto outer = std::make_unique<OwnNetwork>();
  Listener const listener;
  ASSERT_TRUE(listener.listens());
  if (outer->isOwn()) {
    OwnNetwork const inner;
    Listener const second;
    EXPECT_EQ(inner.isOwn(), outer->isOwn());
    EXPECT_TRUE(second.listens() || reachable("127.0.0.1"));
  }
}

}  // namespace
