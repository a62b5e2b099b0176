#include "zelv/platform/CCmSocket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <thread>

#include "zelv/platform/PCNetwork.h"

namespace {

/// A socket that is closed at the end.
class Socket {
 public:
  explicit Socket(int aSocket) : mSocket(aSocket) {}
  Socket(Socket const&) = delete;
  Socket& operator=(Socket const&) = delete;
  ~Socket() { CCmSocket::Close(mSocket); }
  operator int() const { return mSocket; }

 private:
  int const mSocket;
};

SocketCommon::SockAddr loopback(std::uint16_t aPortInNetworkOrder) {
  SocketCommon::SockAddr address;
  address.mFamily = 2;
  address.mPort = aPortInNetworkOrder;
  address.mAddress = CCmSocket::StringToNumeric("127.0.0.1");
  return address;
}

/// Binds to a port of the kernel's choice. @return where.
SocketCommon::SockAddr bound(int aSocket) {
  SocketCommon::SockAddr address = loopback(0);
  EXPECT_EQ(0, CCmSocket::SetAddress(aSocket, &address, sizeof address));
  socklen_t length = sizeof address;
  EXPECT_EQ(0, ::getsockname(aSocket, reinterpret_cast<sockaddr*>(&address), &length));
  return address;
}

/// A listener, and both ends of a connection to it.
class Connected : public testing::Test {
 protected:
  Connected() : mListener(CCmSocket::Open(2, 1, 0)), mClient(CCmSocket::Open(2, 1, 0)) {
    SocketCommon::SockAddr const where = bound(mListener);
    EXPECT_EQ(0, CCmSocket::ListenConnectionRequest(mListener, 2));
    EXPECT_EQ(0, CCmSocket::Connect(mClient, &where, sizeof where));
    int length = sizeof mPeer;
    mServer = CCmSocket::AcceptConnection(mListener, &mPeer, &length);
    EXPECT_GE(mServer, 0);
    EXPECT_EQ(16, length);
  }
  ~Connected() override { CCmSocket::Close(mServer); }

  Socket const mListener;
  Socket const mClient;
  int mServer = -1;
  SocketCommon::SockAddr mPeer;
};

bool closesOnExec(int aSocket) {
  return (::fcntl(aSocket, F_GETFD) & FD_CLOEXEC) != 0;
}

TEST(CCmSocket, HasTheAddressAsTheKernelHasIt) {
  EXPECT_EQ(sizeof(sockaddr_in), sizeof(SocketCommon::SockAddr));
  EXPECT_EQ(offsetof(sockaddr_in, sin_family), offsetof(SocketCommon::SockAddr, mFamily));
  EXPECT_EQ(offsetof(sockaddr_in, sin_port), offsetof(SocketCommon::SockAddr, mPort));
  EXPECT_EQ(offsetof(sockaddr_in, sin_addr), offsetof(SocketCommon::SockAddr, mAddress));
}

TEST(CCmSocket, ReadsAndWritesDottedText) {
  for (char const* text : {"0.0.0.0", "127.0.0.1", "192.0.2.7", "239.255.255.250"}) {
    EXPECT_EQ(text, CCmSocket::AddressValueToString(CCmSocket::StringToNumeric(text)));
  }
  EXPECT_EQ(htonl(0x7F000001), CCmSocket::StringToNumeric("127.0.0.1").mAddress);
}

TEST(CCmSocket, TakesWhatIsNoDottedTextForTheBroadcastAddress) {
  for (char const* text : {"", "localhost", "256.1.1.1", "1.2.3.4.5", "::1"}) {
    EXPECT_EQ("255.255.255.255", CCmSocket::AddressValueToString(CCmSocket::StringToNumeric(text)))
        << text;
  }
}

TEST(CCmSocket, IsNotInheritedByChildren) {
  Socket const stream(CCmSocket::Open(2, 1, 0));
  Socket const datagram(CCmSocket::Open(2, 2, 17));
  EXPECT_TRUE(closesOnExec(stream));
  EXPECT_TRUE(closesOnExec(datagram));
}

TEST_F(Connected, IsNotInheritedByChildrenWhenAccepted) {
  EXPECT_TRUE(closesOnExec(mServer));
}

TEST_F(Connected, TellsWhoCame) {
  EXPECT_EQ(2, mPeer.mFamily);
  EXPECT_EQ("127.0.0.1", CCmSocket::AddressValueToString(mPeer.mAddress));
}

TEST_F(Connected, CarriesBytesBothWays) {
  char buffer[8] = {};
  EXPECT_EQ(3, CCmSocket::SendData(mClient, "abc", 3, 0));
  EXPECT_EQ(3, CCmSocket::ReciveData(mServer, buffer, sizeof buffer, 0));
  EXPECT_STREQ("abc", buffer);
  EXPECT_EQ(2, CCmSocket::SendData(mServer, "de", 2, 0));
  EXPECT_EQ(2, CCmSocket::ReciveData(mClient, buffer, sizeof buffer, 0));
  EXPECT_STREQ("dec", buffer);
}

TEST_F(Connected, GivesZeroAtAnOrderlyEnd) {
  CCmSocket::Shutdown(mClient, 1);
  char letter;
  EXPECT_EQ(0, CCmSocket::ReciveData(mServer, &letter, 1, 0));
}

TEST_F(Connected, RaisesNoSignalWhenThePeerHasGone) {
  CCmSocket::Shutdown(mClient, 2);
  CCmSocket::Shutdown(mServer, 1);
  EXPECT_EQ(-1, CCmSocket::SendData(mServer, "abc", 3, 0));  // the signal would end this program
  EXPECT_EQ(EPIPE, errno);
}

TEST_F(Connected, WakesAReadByShutdown) {
  int result = -2;
  std::thread reader([&] {
    char letter;
    result = CCmSocket::ReciveData(mServer, &letter, 1, 0);
  });
  CCmSocket::Shutdown(mServer, 2);
  reader.join();
  EXPECT_EQ(0, result);
}

TEST_F(Connected, WakesAnAcceptByShutdown) {
  int result = 0;
  std::thread listener([&] {
    SocketCommon::SockAddr address;
    int length = sizeof address;
    result = CCmSocket::AcceptConnection(mListener, &address, &length);
  });
  CCmSocket::Shutdown(mListener, 2);
  listener.join();
  EXPECT_EQ(-1, result);
}

TEST(CCmSocket, WakesAReadOfDatagramsByShutdown) {
  Socket const socket(CCmSocket::Open(2, 2, 0));
  bound(socket);
  int result = -2;
  std::thread reader([&] {
    char letter;
    SocketCommon::SockAddr address;
    int length = sizeof address;
    result = CCmSocket::ReciveData(socket, &letter, 1, 0, &address, &length);
  });
  // On a socket that is not connected the call fails, and wakes the reader all the same.
  CCmSocket::Shutdown(socket, 2);
  reader.join();
  EXPECT_LT(result, 1);
}

TEST(CCmSocket, CarriesDatagramsWithTheirSource) {
  Socket const here(CCmSocket::Open(2, 2, 0));
  Socket const there(CCmSocket::Open(2, 2, 17));
  SocketCommon::SockAddr const address = bound(here);
  SocketCommon::SockAddr const source = bound(there);
  EXPECT_EQ(3, CCmSocket::SendData(there, "abc", 3, 0, &address, sizeof address));
  EXPECT_EQ(0, CCmSocket::SendData(there, "", 0, 0, &address, sizeof address));
  char buffer[8] = {};
  SocketCommon::SockAddr from;
  int length = sizeof from;
  EXPECT_EQ(3, CCmSocket::ReciveData(here, buffer, sizeof buffer, 0, &from, &length));
  EXPECT_STREQ("abc", buffer);
  EXPECT_EQ(16, length);
  EXPECT_EQ(source.mPort, from.mPort);
  EXPECT_EQ(0, CCmSocket::ReciveData(here, buffer, sizeof buffer, 0, &from, &length));
}

TEST(CCmSocket, SetsOptions) {
  Socket const socket(CCmSocket::Open(2, 1, 0));
  int const yes = 1;
  EXPECT_EQ(0, CCmSocket::SetOptions(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes));
  int value = 0;
  socklen_t length = sizeof value;
  EXPECT_EQ(0, ::getsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &value, &length));
  EXPECT_NE(0, value);
}

TEST(CCmSocket, HandsTheListenersOptionsDownToWhatItAccepts) {
  Socket const listener(CCmSocket::Open(2, 1, 0));
  Socket const client(CCmSocket::Open(2, 1, 0));
  SocketCommon::SockAddr address = bound(listener);
  int const yes = 1;
  int const seconds = 60;
  EXPECT_EQ(0, CCmSocket::SetOptions(listener, SOL_SOCKET, SO_KEEPALIVE, &yes, sizeof yes));
  EXPECT_EQ(0,
            CCmSocket::SetOptions(listener, IPPROTO_TCP, TCP_KEEPIDLE, &seconds, sizeof seconds));
  ASSERT_EQ(0, CCmSocket::ListenConnectionRequest(listener, 2));
  ASSERT_EQ(0, CCmSocket::Connect(client, &address, sizeof address));
  int size = sizeof address;
  Socket const accepted(CCmSocket::AcceptConnection(listener, &address, &size));
  int value = 0;
  socklen_t length = sizeof value;
  EXPECT_EQ(0, ::getsockopt(accepted, SOL_SOCKET, SO_KEEPALIVE, &value, &length));
  EXPECT_NE(0, value);
  EXPECT_EQ(0, ::getsockopt(accepted, IPPROTO_TCP, TCP_KEEPIDLE, &value, &length));
  EXPECT_EQ(60, value);
}

TEST(CCmSocket, FailsAsTheSystemDoes) {
  char letter = 0;
  SocketCommon::SockAddr address = loopback(0);
  int length = sizeof address;
  errno = 0;
  EXPECT_EQ(-1, CCmSocket::Close(-1));
  EXPECT_EQ(EBADF, errno);
  EXPECT_EQ(-1, CCmSocket::Open(-1, 1, 0));
  EXPECT_EQ(-1, CCmSocket::SetAddress(-1, &address, sizeof address));
  EXPECT_EQ(-1, CCmSocket::ListenConnectionRequest(-1, 2));
  EXPECT_EQ(-1, CCmSocket::AcceptConnection(-1, &address, &length));
  EXPECT_EQ(-1, CCmSocket::Connect(-1, &address, sizeof address));
  EXPECT_EQ(-1, CCmSocket::ReciveData(-1, &letter, 1, 0));
  EXPECT_EQ(-1, CCmSocket::ReciveData(-1, &letter, 1, 0, &address, &length));
  EXPECT_EQ(-1, CCmSocket::SendData(-1, &letter, 1, 0));
  EXPECT_EQ(-1, CCmSocket::SendData(-1, &letter, 1, 0, &address, sizeof address));
  EXPECT_EQ(-1, CCmSocket::SetOptions(-1, 1, 2, &letter, 1));
  EXPECT_EQ(-1, CCmSocket::Shutdown(-1, 2));
}

TEST(PCNetwork, PutsTheHighByteFirst) {
  std::uint16_t const value = PCNetwork::Htons(0x1234);
  unsigned char bytes[2];
  std::memcpy(bytes, &value, 2);
  EXPECT_EQ(0x12, bytes[0]);
  EXPECT_EQ(0x34, bytes[1]);
}

}  // namespace
