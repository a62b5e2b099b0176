#pragma once

namespace Zelv::Adapter {

/// What a NetworkConnection's thread does.
enum NetworkConnectionType : int {
  NoConnectionType = -1,
  TCPListener = 0,
  TCPRequestHandler = 1,
  UDPHandler = 2,
  OutgoingConnection = 3,  ///< has no thread
};

}  // namespace Zelv::Adapter
