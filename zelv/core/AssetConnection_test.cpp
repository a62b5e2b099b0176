#include "zelv/core/AssetConnection.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "zelv/core/testing/AcceptedClient.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/OwnNetwork.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::FakeSockets;
using Testing::AcceptedClient;

class AssetConnectionTest : public ::testing::Test {
 protected:
  AssetConnectionTest() {
    FakeSockets::Reset();
    connection.adopt(accepted.socket);
  }

  std::string received() {
    char buffer[16];
    int const size = connection.receive(buffer, sizeof buffer);
    return size < 0 ? "failure" : std::string(buffer, static_cast<std::size_t>(size));
  }

  Platform::Fake::OwnNetwork network;
  AcceptedClient accepted;
  AssetConnection connection;
};

TEST_F(AssetConnectionTest, ReceivesBytesAndThenTheEnd) {
  accepted.client.send("abc");
  accepted.client.finishSending();
  EXPECT_EQ(received(), "abc");
  EXPECT_EQ(received(), "");
}

TEST_F(AssetConnectionTest, TellsOfAReceiveThatFails) {
  FakeSockets::FailNext(FakeSockets::Receive, ECONNRESET);
  EXPECT_EQ(received(), "failure");
  EXPECT_EQ(errno, ECONNRESET);
}

TEST_F(AssetConnectionTest, GoesOnWhenItIsInterrupted) {
  FakeSockets::FailNext(FakeSockets::Receive, EINTR, 2);
  accepted.client.send("abc");
  EXPECT_EQ(received(), "abc");
  FakeSockets::FailNext(FakeSockets::Send, EINTR, 2);
  EXPECT_EQ(connection.send("def", AssetConnection::Last), 3);
  EXPECT_EQ(accepted.client.receive(), "def");
}

TEST_F(AssetConnectionTest, SendsBytesThatAreToBeFollowed) {
  EXPECT_EQ(connection.send("abc", AssetConnection::MoreFollows), 3);
  EXPECT_EQ(connection.send("", AssetConnection::MoreFollows), 0);
  EXPECT_EQ(connection.send("def", AssetConnection::Last), 3);
  connection.close();
  EXPECT_EQ(accepted.client.receiveAll(), "abcdef");
}

TEST_F(AssetConnectionTest, GoesOnAfterASendThatFailed) {
  FakeSockets::FailNext(FakeSockets::Send, ENOBUFS);
  EXPECT_EQ(connection.send("abc", AssetConnection::Last), -1);
  EXPECT_EQ(errno, ENOBUFS);
  EXPECT_EQ(connection.send("def", AssetConnection::Last), 3);
}

TEST_F(AssetConnectionTest, IsShutDownWhenTheClientTookNothingForTooLong) {
  FakeSockets::FailNext(FakeSockets::Send, EAGAIN);
  EXPECT_EQ(connection.send("abc", AssetConnection::Last), -1);
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_TRUE(accepted.client.seesEnd());
  EXPECT_EQ(connection.send("def", AssetConnection::Last), -1);
}

TEST_F(AssetConnectionTest, KnowsWhenBytesLastCameOrWent) {
  std::int64_t const begin = connection.lastActivity();
  FakeClock::Advance(1000);
  EXPECT_EQ(connection.lastActivity(), begin);
  accepted.client.send("abc");
  received();
  EXPECT_EQ(connection.lastActivity(), PCTime::CoarseMs());
  FakeClock::Advance(1000);
  connection.send("abc", AssetConnection::Last);
  EXPECT_EQ(connection.lastActivity(), PCTime::CoarseMs());
  EXPECT_GT(connection.lastActivity(), begin);
}

TEST_F(AssetConnectionTest, MayEndItsAnswerAndStillReceive) {
  connection.send("abc", AssetConnection::MoreFollows);
  connection.endAnswer();
  EXPECT_EQ(accepted.client.receiveAll(), "abc");
  accepted.client.send("def");
  EXPECT_EQ(received(), "def");
}

// Bytes that nobody read would take from the client what it has not read yet.
TEST_F(AssetConnectionTest, ClosesWithoutTakingTheAnswerBack) {
  accepted.client.send(std::string(20000, 'x'));
  connection.send("abc", AssetConnection::Last);
  connection.close();
  EXPECT_FALSE(connection.isOpen());
  EXPECT_EQ(accepted.client.receiveAll(), "abc");
}

TEST_F(AssetConnectionTest, WaitsForNothingOnceGivenUp) {
  EXPECT_FALSE(connection.isGivenUp());
  connection.giveUp();
  EXPECT_TRUE(connection.isGivenUp());
  EXPECT_TRUE(connection.isOpen());
  EXPECT_EQ(received(), "");
  EXPECT_EQ(connection.send("abc", AssetConnection::Last), -1);
  EXPECT_TRUE(accepted.client.seesEnd());
}

}  // namespace
}  // namespace Zelv
