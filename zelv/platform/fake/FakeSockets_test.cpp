#include "zelv/platform/fake/FakeSockets.h"

#include <gmock/gmock.h>

#include <cerrno>

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCNetwork.h"
#include "zelv/platform/fake/Fakes.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace Zelv::Platform::Fake;

class Sockets : public testing::Test {
 protected:
  Sockets() { ResetFakes(); }
  ~Sockets() override { ResetFakes(); }
};

SocketCommon::SockAddr somewhere() {
  SocketCommon::SockAddr address;
  address.mFamily = 2;
  address.mPort = PCNetwork::Htons(4449);
  address.mAddress = CCmSocket::StringToNumeric("192.0.2.7");
  return address;
}

TEST_F(Sockets, FailAsOftenAsTold) {
  FakeSockets::FailNext(FakeSockets::Open, EMFILE, 2);
  EXPECT_EQ(-1, CCmSocket::Open(2, 1, 0));
  EXPECT_EQ(EMFILE, errno);
  EXPECT_EQ(-1, CCmSocket::Open(2, 1, 0));
  int const socket = CCmSocket::Open(2, 1, 0);
  EXPECT_GE(socket, 0);
  EXPECT_EQ(3, FakeSockets::Count(FakeSockets::Open));
  FakeSockets::FailNext(FakeSockets::Close, EIO);
  EXPECT_EQ(-1, CCmSocket::Close(socket));
  EXPECT_EQ(EIO, errno);
  EXPECT_EQ(-1, CCmSocket::Close(socket));
  EXPECT_EQ(EBADF, errno);  // it had been closed all the same
}

TEST_F(Sockets, FailInEveryCall) {
  SocketCommon::SockAddr address = somewhere();
  int length = sizeof address;
  char letter = 'x';
  int const socket = CCmSocket::Open(2, 2, 0);
  for (auto const call :
       {FakeSockets::SetOption, FakeSockets::Bind, FakeSockets::Listen, FakeSockets::Accept,
        FakeSockets::Connect, FakeSockets::Receive, FakeSockets::Send, FakeSockets::Shutdown}) {
    FakeSockets::FailNext(call, EPROTO);
    errno = 0;
    switch (call) {
      case FakeSockets::SetOption:
        CCmSocket::SetOptions(socket, 1, 2, &length, 4);
        break;
      case FakeSockets::Bind:
        CCmSocket::SetAddress(socket, &address, length);
        break;
      case FakeSockets::Listen:
        CCmSocket::ListenConnectionRequest(socket, 2);
        break;
      case FakeSockets::Accept:
        CCmSocket::AcceptConnection(socket, &address, &length);
        break;
      case FakeSockets::Connect:
        CCmSocket::Connect(socket, &address, length);
        break;
      case FakeSockets::Receive:
        CCmSocket::ReciveData(socket, &letter, 1, 0);
        break;
      case FakeSockets::Send:
        CCmSocket::SendData(socket, &letter, 1, 0);
        break;
      default:
        CCmSocket::Shutdown(socket, 2);
    }
    EXPECT_EQ(EPROTO, errno) << call;
  }
  CCmSocket::Close(socket);
}

TEST_F(Sockets, FailInOneOptionUntilReset) {
  int const socket = CCmSocket::Open(2, 1, 0);
  int const yes = 1;
  FakeSockets::FailOption(1, 2, ENOMEM);
  EXPECT_EQ(-1, CCmSocket::SetOptions(socket, 1, 2, &yes, sizeof yes));
  EXPECT_EQ(ENOMEM, errno);
  EXPECT_EQ(-1, CCmSocket::SetOptions(socket, 1, 2, &yes, sizeof yes));
  EXPECT_EQ(0, CCmSocket::SetOptions(socket, 1, 9, &yes, sizeof yes));
  std::string const value(reinterpret_cast<char const*>(&yes), sizeof yes);
  EXPECT_THAT(
      FakeSockets::TakeOptions(),
      ElementsAre(SocketOption{1, 2, value}, SocketOption{1, 2, value}, SocketOption{1, 9, value}));
  EXPECT_THAT(FakeSockets::TakeOptions(), IsEmpty());
  ResetFakes();
  EXPECT_EQ(0, CCmSocket::SetOptions(socket, 1, 2, &yes, sizeof yes));
  CCmSocket::Close(socket);
}

TEST_F(Sockets, FailToSendOneText) {
  FakeSockets::CatchDatagrams();
  SocketCommon::SockAddr const address = somewhere();
  int const socket = CCmSocket::Open(2, 2, 0);
  FakeSockets::FailSendOf("no", EPIPE);
  EXPECT_EQ(-1, CCmSocket::SendData(socket, "no", 2, 0, &address, sizeof address));
  EXPECT_EQ(EPIPE, errno);
  EXPECT_EQ(3, CCmSocket::SendData(socket, "yes", 3, 0, &address, sizeof address));
  CCmSocket::Close(socket);
}

TEST_F(Sockets, CatchDatagramsWhenTold) {
  FakeSockets::CatchDatagrams();
  SocketCommon::SockAddr const address = somewhere();
  int const socket = CCmSocket::Open(2, 2, 0);
  EXPECT_EQ(2, CCmSocket::SendData(socket, "ab", 2, 0, &address, sizeof address));
  auto const caught = FakeSockets::TakeDatagrams();
  ASSERT_EQ(1U, caught.size());
  EXPECT_EQ("192.0.2.7", caught[0].address);
  EXPECT_EQ(4449, caught[0].port);
  EXPECT_EQ("ab", caught[0].text);
  EXPECT_TRUE(FakeSockets::TakeDatagrams().empty());
  CCmSocket::Close(socket);
}

}  // namespace
