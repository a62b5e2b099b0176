#include "zelv/platform/linux/SocketCalls.h"

#include <unistd.h>

#include "zelv/platform/fake/SocketFaults.h"

namespace Zelv::Platform {

using Fake::FakeSockets;

namespace {

bool fails(FakeSockets::Call aCall) {
  return Fake::SocketFaults::instance().fails(aCall);
}

}  // namespace

int SocketCalls::Open(int aDomain, int aType, int aProtocol) {
  return fails(FakeSockets::Open) ? -1 : socket(aDomain, aType, aProtocol);
}

int SocketCalls::SetOption(int aSocket, int aLevel, int aName, void const* aValue,
                           socklen_t aLength) {
  bool const failing = Fake::SocketFaults::instance().failsOption(aLevel, aName, aValue, aLength);
  if (fails(FakeSockets::SetOption) || failing) {
    return -1;
  }
  return setsockopt(aSocket, aLevel, aName, aValue, aLength);
}

int SocketCalls::Bind(int aSocket, sockaddr const* aAddress, socklen_t aLength) {
  return fails(FakeSockets::Bind) ? -1 : bind(aSocket, aAddress, aLength);
}

int SocketCalls::Listen(int aSocket, int aBacklog) {
  return fails(FakeSockets::Listen) ? -1 : listen(aSocket, aBacklog);
}

int SocketCalls::Accept(int aSocket, sockaddr* aAddress, socklen_t* aLength, int aFlags) {
  return fails(FakeSockets::Accept) ? -1 : accept4(aSocket, aAddress, aLength, aFlags);
}

int SocketCalls::Connect(int aSocket, sockaddr const* aAddress, socklen_t aLength) {
  return fails(FakeSockets::Connect) ? -1 : connect(aSocket, aAddress, aLength);
}

ssize_t SocketCalls::Receive(int aSocket, void* aBuffer, std::size_t aSize, int aFlags,
                             sockaddr* aSource, socklen_t* aLength) {
  return fails(FakeSockets::Receive) ? -1
                                     : recvfrom(aSocket, aBuffer, aSize, aFlags, aSource, aLength);
}

ssize_t SocketCalls::Send(int aSocket, void const* aData, std::size_t aSize, int aFlags,
                          sockaddr const* aTarget, socklen_t aLength) {
  if (fails(FakeSockets::Send) || Fake::SocketFaults::instance().failsSend(aData, aSize)) {
    return -1;
  }
  if (Fake::SocketFaults::instance().catches(aData, aSize, aTarget)) {
    return static_cast<ssize_t>(aSize);
  }
  return sendto(aSocket, aData, aSize, aFlags, aTarget, aLength);
}

int SocketCalls::Shutdown(int aSocket, int aHow) {
  return fails(FakeSockets::Shutdown) ? -1 : shutdown(aSocket, aHow);
}

int SocketCalls::Close(int aSocket) {
  bool const failing = fails(FakeSockets::Close);
  int const result = close(aSocket);
  return failing ? -1 : result;
}

}  // namespace Zelv::Platform
