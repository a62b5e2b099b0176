#pragma once

#include <string>

#include "zelv/platform/SocketCommon.h"

/// The sockets of the set. All results are as those of the system calls: negative on failure, with
/// errno set. Every call may be made from any thread.
///
/// Descriptors MUST NOT be inherited by children, and sending to a peer that has gone MUST NOT
/// raise a signal. The numbers of families, types, levels and options are Linux's.
class CCmSocket {
 public:
  /// @return a descriptor; the caller closes it.
  static int Open(int aDomain, int aType, int aProtocol);

  /// Sets a socket option, as setsockopt(2).
  static int SetOptions(int aSocket, int aLevel, int aName, void const* aValue, int aLength);

  /// Binds, as bind(2).
  static int SetAddress(int aSocket, SocketCommon::SockAddr const* aAddress, int aLength);

  static int ListenConnectionRequest(int aSocket, int aBacklog);

  /// Waits for a connection. Fails once the socket was shut down, which is what ends a listener.
  /// @param aAddress  filled with the peer's address; its length goes in and out by aLength.
  static int AcceptConnection(int aSocket, SocketCommon::SockAddr* aAddress, int* aLength);

  static int Connect(int aSocket, SocketCommon::SockAddr const* aAddress, int aLength);

  /// As recv(2); 0 is an orderly end on a stream and an empty datagram otherwise.
  static int ReciveData(int aSocket, void* aBuffer, int aSize, int aFlags);
  /// As recvfrom(2).
  static int ReciveData(int aSocket, void* aBuffer, int aSize, int aFlags,
                        SocketCommon::SockAddr* aSource, int* aLength);

  /// As send(2).
  static int SendData(int aSocket, void const* aData, int aSize, int aFlags);
  /// As sendto(2).
  static int SendData(int aSocket, void const* aData, int aSize, int aFlags,
                      SocketCommon::SockAddr const* aTarget, int aLength);

  static int Shutdown(int aSocket, int aHow);
  static int Close(int aSocket);

  /// Dotted text to an address; what is no dotted text gives 255.255.255.255, as inet_addr(3).
  static SocketCommon::In_addr StringToNumeric(char const* aText);

  /// An address to dotted text.
  static std::string AddressValueToString(SocketCommon::In_addr aAddress);
};
