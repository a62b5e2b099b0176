#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>

#include "apps/zelvctl/Descriptor.h"

namespace ZelvCtl {

/// A connection to a mailbox on this machine, byte by byte. Every wait is bounded to 20 seconds.
class Client {
 public:
  explicit Client(std::uint16_t aPort) : mSocket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    timeval const limit{20, 0};
    ::setsockopt(mSocket.number(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(aPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(mSocket.number(), reinterpret_cast<sockaddr const*>(&address), sizeof address);
  }

  /// @return false once the other side has closed, which some systems tell late.
  bool send(std::string const& aBytes) {
    std::size_t sent = 0;
    while (sent < aBytes.size()) {
      ssize_t const size = ::send(mSocket.number(), aBytes.data() + sent, aBytes.size() - sent,
                                  MSG_NOSIGNAL | MSG_DONTWAIT);
      if (size < 0) {
        return false;
      }
      sent += static_cast<std::size_t>(size);
    }
    return true;
  }

  /// The next that comes; "closed" when the other side has ended the connection without a word.
  std::string receive() { return receive(0); }

  /// What has come by now.
  std::string received() { return receive(MSG_DONTWAIT); }

  void close() { mSocket = Descriptor(); }

 private:
  std::string receive(int aFlags) {
    std::array<char, 64> bytes;
    ssize_t const size = ::recv(mSocket.number(), bytes.data(), bytes.size(), aFlags);
    if (size > 0) {
      return {bytes.data(), static_cast<std::size_t>(size)};
    }
    return size == 0 || errno == ECONNRESET ? "closed" : "";
  }

  Descriptor mSocket;
};

}  // namespace ZelvCtl
