#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstddef>

namespace Zelv::Platform {

/// The calls into the system that CCmSocket makes. Results and errno are those of the system; tests
/// put faults in their place.
class SocketCalls {
 public:
  static int Open(int aDomain, int aType, int aProtocol);
  static int SetOption(int aSocket, int aLevel, int aName, void const* aValue, socklen_t aLength);
  static int Bind(int aSocket, sockaddr const* aAddress, socklen_t aLength);
  static int Listen(int aSocket, int aBacklog);
  static int Accept(int aSocket, sockaddr* aAddress, socklen_t* aLength, int aFlags);
  static int Connect(int aSocket, sockaddr const* aAddress, socklen_t aLength);
  /// As recvfrom(2); null aSource and aLength for streams.
  static ssize_t Receive(int aSocket, void* aBuffer, std::size_t aSize, int aFlags,
                         sockaddr* aSource, socklen_t* aLength);
  /// As sendto(2); null aTarget for streams.
  static ssize_t Send(int aSocket, void const* aData, std::size_t aSize, int aFlags,
                      sockaddr const* aTarget, socklen_t aLength);
  static int Shutdown(int aSocket, int aHow);
  static int Close(int aSocket);
};

}  // namespace Zelv::Platform
