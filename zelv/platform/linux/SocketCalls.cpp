#include "zelv/platform/linux/SocketCalls.h"

#include <unistd.h>

namespace Zelv::Platform {

int SocketCalls::Open(int aDomain, int aType, int aProtocol) {
  return socket(aDomain, aType, aProtocol);
}

int SocketCalls::SetOption(int aSocket, int aLevel, int aName, void const* aValue,
                           socklen_t aLength) {
  return setsockopt(aSocket, aLevel, aName, aValue, aLength);
}

int SocketCalls::Bind(int aSocket, sockaddr const* aAddress, socklen_t aLength) {
  return bind(aSocket, aAddress, aLength);
}

int SocketCalls::Listen(int aSocket, int aBacklog) {
  return listen(aSocket, aBacklog);
}

int SocketCalls::Accept(int aSocket, sockaddr* aAddress, socklen_t* aLength, int aFlags) {
  return accept4(aSocket, aAddress, aLength, aFlags);
}

int SocketCalls::Connect(int aSocket, sockaddr const* aAddress, socklen_t aLength) {
  return connect(aSocket, aAddress, aLength);
}

ssize_t SocketCalls::Receive(int aSocket, void* aBuffer, std::size_t aSize, int aFlags,
                             sockaddr* aSource, socklen_t* aLength) {
  return recvfrom(aSocket, aBuffer, aSize, aFlags, aSource, aLength);
}

ssize_t SocketCalls::Send(int aSocket, void const* aData, std::size_t aSize, int aFlags,
                          sockaddr const* aTarget, socklen_t aLength) {
  return sendto(aSocket, aData, aSize, aFlags, aTarget, aLength);
}

int SocketCalls::Shutdown(int aSocket, int aHow) {
  return shutdown(aSocket, aHow);
}

int SocketCalls::Close(int aSocket) {
  return close(aSocket);
}

}  // namespace Zelv::Platform
