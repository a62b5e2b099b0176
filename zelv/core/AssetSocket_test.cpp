#include "zelv/core/AssetSocket.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "zelv/core/testing/AcceptedClient.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeSockets;
using Testing::AcceptedClient;

class AssetSocketTest : public ::testing::Test {
 protected:
  AssetSocketTest() { FakeSockets::Reset(); }

  static int closes() { return FakeSockets::Count(FakeSockets::Close); }

  static int open() { return CCmSocket::Open(2, Testing::Peer::Stream, 0); }

  Platform::Fake::OwnNetwork network;
  AssetSocket socket;
};

TEST_F(AssetSocketTest, HasNoneAtFirst) {
  EXPECT_EQ(socket.number(), -1);
  socket.close();
  EXPECT_EQ(closes(), 0);
}

TEST_F(AssetSocketTest, ClosesWhatItHasOnce) {
  int const number = open();
  socket.adopt(number);
  EXPECT_EQ(socket.number(), number);
  socket.close();
  EXPECT_EQ(socket.number(), -1);
  socket.close();
  EXPECT_EQ(closes(), 1);
}

TEST_F(AssetSocketTest, ClosesWhatItHadWhenItTakesAnother) {
  socket.adopt(open());
  int const other = open();
  socket.adopt(other);
  EXPECT_EQ(closes(), 1);
  EXPECT_EQ(socket.number(), other);
}

TEST_F(AssetSocketTest, ClosesWhenItGoes) {
  { AssetSocket().adopt(open()); }
  EXPECT_EQ(closes(), 1);
}

TEST_F(AssetSocketTest, LeavesOpenWhatItLetsGoOf) {
  int const number = open();
  socket.adopt(number);
  socket.release();
  EXPECT_EQ(socket.number(), -1);
  socket.close();
  EXPECT_EQ(closes(), 0);
  socket.adopt(number);
}

TEST_F(AssetSocketTest, EndsBothWaysWithoutClosing) {
  AcceptedClient accepted;
  socket.adopt(accepted.socket);
  EXPECT_TRUE(socket.shutdown(2));
  EXPECT_TRUE(accepted.client.seesEnd());
  EXPECT_EQ(socket.number(), accepted.socket);
}

TEST_F(AssetSocketTest, ShutsNothingDownWithoutASocket) {
  EXPECT_TRUE(socket.shutdown(2));
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Shutdown), 0);
}

TEST_F(AssetSocketTest, TellsOfAShutdownThatFails) {
  socket.adopt(open());
  EXPECT_FALSE(socket.shutdown(2));
  EXPECT_EQ(errno, ENOTCONN);
}

}  // namespace
}  // namespace Zelv
