#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace ZelvCtl {

/// The other side of a phone, over real datagrams on the loopback interface: an address of its own,
/// 127.0.0.N, is the "group", so that all that the phone tells the home comes here. The phone hears
/// on every address of the port. Every wait is bounded to 20 seconds.
class LoopbackHome {
 public:
  LoopbackHome() {
    static std::atomic<unsigned> number{static_cast<unsigned>(::getpid())};
    // Tests that run side by side have different processes, and so different addresses.
    unsigned const host = ++number;
    mGroup = "127." + std::to_string(1 + host / 64516 % 250) + "." +
             std::to_string(1 + host / 254 % 254) + "." + std::to_string(1 + host % 254);
    mSocket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    int const yes = 1;
    ::setsockopt(mSocket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    timeval const limit{20, 0};
    ::setsockopt(mSocket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    mPort = freePort();
    if (!bindTo(mSocket, mGroup, mPort)) {
      throw std::runtime_error("cannot stand at " + mGroup);
    }
  }
  LoopbackHome(LoopbackHome const&) = delete;
  LoopbackHome& operator=(LoopbackHome const&) = delete;
  ~LoopbackHome() { ::close(mSocket); }

  std::string const& group() const { return mGroup; }
  std::string port() const { return std::to_string(mPort); }
  std::string url() const { return "udp://" + mGroup + ":" + port() + "/"; }

  /// To the phone, as one datagram.
  void send(std::string const& aText) {
    sockaddr_in const address = addressOf("127.0.0.1", mPort);
    ::sendto(mSocket, aText.data(), aText.size(), 0, reinterpret_cast<sockaddr const*>(&address),
             sizeof address);
  }

  /// The next datagram from the phone; empty when none comes.
  std::string receive() {
    std::array<char, 65536> buffer;
    ssize_t const size = ::recv(mSocket, buffer.data(), buffer.size(), 0);
    return size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : "";
  }

  /// The next message, which comes as three equal datagrams; empty when it does not.
  std::string receiveMessage() {
    std::string const first = receive();
    return receive() == first && receive() == first ? first : "";
  }

 private:
  static sockaddr_in addressOf(std::string const& aHost, std::uint16_t aPort) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(aPort);
    ::inet_pton(AF_INET, aHost.c_str(), &address.sin_addr);
    return address;
  }

  static bool bindTo(int aSocket, std::string const& aHost, std::uint16_t aPort) {
    sockaddr_in const address = addressOf(aHost, aPort);
    return ::bind(aSocket, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
  }

  /// One that nobody has on any address.
  static std::uint16_t freePort() {
    int const probe = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    bindTo(probe, "0.0.0.0", 0);
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(probe);
    return ntohs(address.sin_port);
  }

  std::string mGroup;
  std::uint16_t mPort = 0;
  int mSocket = -1;
};

}  // namespace ZelvCtl
