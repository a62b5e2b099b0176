#include "zelv/platform/CCmSocket.h"

#include <arpa/inet.h>

#include "zelv/platform/linux/SocketCalls.h"

using Zelv::Platform::SocketCalls;

namespace {

sockaddr const* native(SocketCommon::SockAddr const* aAddress) {
  return reinterpret_cast<sockaddr const*>(aAddress);
}

sockaddr* native(SocketCommon::SockAddr* aAddress) {
  return reinterpret_cast<sockaddr*>(aAddress);
}

}  // namespace

int CCmSocket::Open(int aDomain, int aType, int aProtocol) {
  return SocketCalls::Open(aDomain, aType | SOCK_CLOEXEC, aProtocol);
}

int CCmSocket::SetOptions(int aSocket, int aLevel, int aName, void const* aValue, int aLength) {
  return SocketCalls::SetOption(aSocket, aLevel, aName, aValue, static_cast<socklen_t>(aLength));
}

int CCmSocket::SetAddress(int aSocket, SocketCommon::SockAddr const* aAddress, int aLength) {
  return SocketCalls::Bind(aSocket, native(aAddress), static_cast<socklen_t>(aLength));
}

int CCmSocket::ListenConnectionRequest(int aSocket, int aBacklog) {
  return SocketCalls::Listen(aSocket, aBacklog);
}

int CCmSocket::AcceptConnection(int aSocket, SocketCommon::SockAddr* aAddress, int* aLength) {
  socklen_t length = static_cast<socklen_t>(*aLength);
  int const result = SocketCalls::Accept(aSocket, native(aAddress), &length, SOCK_CLOEXEC);
  *aLength = static_cast<int>(length);
  return result;
}

int CCmSocket::Connect(int aSocket, SocketCommon::SockAddr const* aAddress, int aLength) {
  return SocketCalls::Connect(aSocket, native(aAddress), static_cast<socklen_t>(aLength));
}

int CCmSocket::ReciveData(int aSocket, void* aBuffer, int aSize, int aFlags) {
  return static_cast<int>(
      SocketCalls::Receive(aSocket, aBuffer, static_cast<size_t>(aSize), aFlags, nullptr, nullptr));
}

int CCmSocket::ReciveData(int aSocket, void* aBuffer, int aSize, int aFlags,
                          SocketCommon::SockAddr* aSource, int* aLength) {
  socklen_t length = static_cast<socklen_t>(*aLength);
  int const result = static_cast<int>(SocketCalls::Receive(
      aSocket, aBuffer, static_cast<size_t>(aSize), aFlags, native(aSource), &length));
  *aLength = static_cast<int>(length);
  return result;
}

int CCmSocket::SendData(int aSocket, void const* aData, int aSize, int aFlags) {
  return static_cast<int>(SocketCalls::Send(aSocket, aData, static_cast<size_t>(aSize),
                                            aFlags | MSG_NOSIGNAL, nullptr, 0));
}

int CCmSocket::SendData(int aSocket, void const* aData, int aSize, int aFlags,
                        SocketCommon::SockAddr const* aTarget, int aLength) {
  return static_cast<int>(SocketCalls::Send(aSocket, aData, static_cast<size_t>(aSize),
                                            aFlags | MSG_NOSIGNAL, native(aTarget),
                                            static_cast<socklen_t>(aLength)));
}

int CCmSocket::Shutdown(int aSocket, int aHow) {
  return SocketCalls::Shutdown(aSocket, aHow);
}

int CCmSocket::Close(int aSocket) {
  return SocketCalls::Close(aSocket);
}

SocketCommon::In_addr CCmSocket::StringToNumeric(char const* aText) {
  return {inet_addr(aText)};
}

std::string CCmSocket::AddressValueToString(SocketCommon::In_addr aAddress) {
  in_addr const address{aAddress.mAddress};
  char text[INET_ADDRSTRLEN] = {};
  inet_ntop(AF_INET, &address, text, sizeof text);
  return text;
}
