#include "bench/WebPeer.h"

#ifdef BENCH_NGINX

#include <sys/socket.h>
#include <unistd.h>

#include "bench/BareExchange.h"

namespace Zelv::Bench {

namespace {

constexpr std::uint16_t cPort = 8080;

std::string const cRequest = std::string("GET /document HTTP/1.1\r\nHost: ") + TwoHosts::cThere +
                             "\r\nConnection: close\r\n\r\n";

/// @return how many bytes came before the end.
ssize_t readToEnd(int aSocket) {
  char buffer[4096];
  ssize_t all = 0;
  ssize_t size = recv(aSocket, buffer, sizeof buffer, 0);
  while (size > 0) {
    all += size;
    size = recv(aSocket, buffer, sizeof buffer, 0);
  }
  return size < 0 ? size : all;
}

}  // namespace

WebPeer::WebPeer(TwoHosts const& aHosts)
    : mServer(aHosts,
              {BENCH_NGINX, "-e", "stderr", "-p", mDirectory.path(), "-c",
               mDirectory.put("nginx.conf", configuration())},
              Process::End::bySignal),
      mAddress(addressOf(TwoHosts::cThere, cPort)) {
  mDirectory.put("document", std::string(cSize, 'x'));
  TwoHosts::waitForPort(TwoHosts::cThere, cPort);
}

std::string WebPeer::configuration() const {
  std::string const& directory = mDirectory.path();
  std::string places;
  for (char const* place : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"}) {
    places += std::string(place) + "_temp_path " + directory + place + "; ";
  }
  return "daemon off; master_process off; pid " + directory +
         "pid; error_log stderr crit; events {} http { " + places +
         "access_log off; tcp_nodelay on; server { listen " + TwoHosts::cThere + ":" +
         std::to_string(cPort) + "; root " + directory + "; } }";
}

bool WebPeer::get() const {
  int const peer = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  bool const got =
      connect(peer, reinterpret_cast<sockaddr const*>(&mAddress), sizeof mAddress) == 0 &&
      send(peer, cRequest.data(), cRequest.size(), MSG_NOSIGNAL) ==
          static_cast<ssize_t>(cRequest.size()) &&
      readToEnd(peer) > cSize;
  close(peer);
  return got;
}

}  // namespace Zelv::Bench

#endif
