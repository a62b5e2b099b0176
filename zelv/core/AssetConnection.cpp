#include "zelv/core/AssetConnection.h"

#include <cerrno>
#include <cstddef>

#include "zelv/adapter/SocketOptions.h"
#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCTime.h"

namespace Zelv {

namespace {

// Numbers as Linux has them.
constexpr int levelSocket = 1;
constexpr int receiveTimeout = 20;
constexpr int sendTimeout = 21;
constexpr int moreFollows = 0x8000;
constexpr int doNotWait = 0x40;
constexpr int noMoreSending = 1;
constexpr int bothWays = 2;

struct TimeValue {
  long mSeconds;
  long mMicroseconds;
};

void limit(int aSocket, int aTimeout) {
  TimeValue const patience{AssetConnection::cPatience, 0};
  CCmSocket::SetOptions(aSocket, levelSocket, aTimeout, &patience, sizeof patience);
}

}  // namespace

// Not the other one, which would bound the wait for connections, too.
void AssetConnection::prepare(int aListening) {
  Adapter::SocketOptions::keepAlive(aListening);
  limit(aListening, sendTimeout);
}

void AssetConnection::adopt(int aSocket) {
  limit(aSocket, receiveTimeout);
  touch();
  mSocket.adopt(aSocket);
}

void AssetConnection::touch() {
  mLastActivity = PCTime::CoarseMs();
}

int AssetConnection::receive(char* aBuffer, int aSize) {
  int size;
  do {
    size = CCmSocket::ReciveData(mSocket.number(), aBuffer, aSize, 0);
  } while (size < 0 && errno == EINTR);
  if (size > 0) {
    touch();
  }
  return size;
}

int AssetConnection::send(std::string_view aData, Follow aFollow) {
  int const flags = aFollow == MoreFollows ? moreFollows : 0;
  std::size_t sent = 0;
  do {
    int const size = CCmSocket::SendData(mSocket.number(), aData.data() + sent,
                                         static_cast<int>(aData.size() - sent), flags);
    if (size > 0) {
      sent += static_cast<std::size_t>(size);
    } else if (size < 0 && errno != EINTR) {
      if (errno == EAGAIN) {
        mSocket.shutdown(bothWays);
        errno = EAGAIN;
      }
      return -1;
    }
  } while (sent < aData.size());
  touch();
  return static_cast<int>(sent);
}

void AssetConnection::endAnswer() {
  mSocket.shutdown(noMoreSending);
}

void AssetConnection::close() {
  if (isOpen()) {
    forgetUnread();
    mSocket.close();
  }
}

// Bytes that were not read, such as a body that nobody asked for, would turn the close into a
// reset, which takes away from the client what it has not read yet of the answer.
void AssetConnection::forgetUnread() {
  constexpr int most = 64;
  char buffer[1024];
  for (int turn = 0; turn < most; ++turn) {
    if (CCmSocket::ReciveData(mSocket.number(), buffer, sizeof buffer, doNotWait) <= 0) {
      return;
    }
  }
}

void AssetConnection::giveUp() {
  mGivenUp = true;
  mSocket.shutdown(bothWays);
}

}  // namespace Zelv
