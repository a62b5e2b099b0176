#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace Zelv::Bench {

inline sockaddr_in loopback(int aPort) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(aPort));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// A socket bound to a port of the kernel's choice.
inline int boundSocket(int aType, int& aPort) {
  int const bound = socket(AF_INET, aType, 0);
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof address;
  if (bind(bound, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
      getsockname(bound, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    std::abort();
  }
  aPort = ntohs(address.sin_port);
  return bound;
}

inline int freePort(int aType) {
  int port = 0;
  close(boundSocket(aType, port));
  return port;
}

}  // namespace Zelv::Bench
