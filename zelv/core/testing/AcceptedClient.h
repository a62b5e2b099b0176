#pragma once

#include <stdexcept>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/AssetSocket.h"
#include "zelv/platform/CCmSocket.h"

namespace Zelv::Testing {

/// A client that is connected to the asset port of the test's own network, where nobody else
/// listens.
class AcceptedClient {
 public:
  AcceptedClient() {
    AssetSocket listening;
    listening.adopt(CCmSocket::Open(2, Peer::Stream, 0));
    SocketCommon::SockAddr address = Peer::loopback(cPort);
    int length = sizeof address;
    if (CCmSocket::SetAddress(listening.number(), &address, length) < 0 ||
        CCmSocket::ListenConnectionRequest(listening.number(), 1) < 0 || !client.connect(cPort)) {
      throw std::runtime_error("no connection");
    }
    socket = CCmSocket::AcceptConnection(listening.number(), &address, &length);
  }

  Peer client{Peer::Stream};
  /// Of the connection as the server has it; the test closes it.
  int socket = -1;

 private:
  static constexpr std::uint16_t cPort = 4450;
};

}  // namespace Zelv::Testing
