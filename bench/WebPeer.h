#pragma once

#include <netinet/in.h>

#include <string>

#include "bench/Process.h"
#include "bench/TemporaryDirectory.h"
#include "bench/TwoHosts.h"

namespace Zelv::Bench {

/// HTTP: a server at the other host.
class WebPeer {
 public:
  /// The document has so many bytes.
  static constexpr int cSize = 600;

  explicit WebPeer(TwoHosts const& aHosts);

  /// Fetches it on a connection of its own.
  bool get() const;

 private:
  std::string configuration() const;

  TemporaryDirectory mDirectory;
  Process mServer;
  sockaddr_in const mAddress;
};

}  // namespace Zelv::Bench
