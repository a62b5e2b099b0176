#pragma once

#include <string>

namespace Zelv::Adapter {

/// The socket options of the transport. All results are as those of CCmSocket::SetOptions():
/// negative on failure, with errno set.
class SocketOptions {
 public:
  static int reuseAddress(int aSocket);

  /// Bounds connecting and each sending, and each receiving, to 3 seconds.
  static int sendTimeout(int aSocket);
  static int receiveTimeout(int aSocket);

  /// Bounds both to a thousandth of a second, for waits that begin from now on.
  static void endWaits(int aSocket);

  /// Lets the kernel find out, within two minutes, that a silent peer is no longer there. A peer
  /// that is there notices nothing.
  static void keepAlive(int aSocket);

  /// Multicast goes no further than the local network.
  static int multicastTTL(int aSocket);

  /// A device does not hear its own multicast.
  static int multicastLoopOff(int aSocket);

  /// @param aInterface  dotted address of the interface; empty lets the kernel decide.
  static int multicastInterface(int aSocket, std::string const& aInterface);
  static int joinGroup(int aSocket, std::string const& aGroup, std::string const& aInterface);
};

}  // namespace Zelv::Adapter
