#pragma once

#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCNetwork.h"

namespace Zelv::Testing {

/// One end of a connection on the loopback interface, or a datagram socket there. Every wait is
/// bounded to 20 seconds.
class Peer {
 public:
  static constexpr int Stream = 1;
  static constexpr int Datagram = 2;

  explicit Peer(int aType) : Peer(aType, CCmSocket::Open(2, aType, 0)) {}
  Peer(int aType, int aSocket) : mType(aType), mSocket(aSocket) {
    long const patience[2] = {20, 0};
    CCmSocket::SetOptions(mSocket, 1, 20, patience, sizeof patience);
    CCmSocket::SetOptions(mSocket, 1, 21, patience, sizeof patience);
  }
  Peer(Peer&& aOther) noexcept : mType(aOther.mType), mSocket(std::exchange(aOther.mSocket, -1)) {}
  Peer(Peer const&) = delete;
  Peer& operator=(Peer const&) = delete;
  ~Peer() { close(); }

  static SocketCommon::SockAddr loopback(std::uint16_t aPort) {
    SocketCommon::SockAddr address;
    address.mFamily = 2;
    address.mPort = PCNetwork::Htons(aPort);
    address.mAddress = CCmSocket::StringToNumeric("127.0.0.1");
    return address;
  }

  /// A port of this type that nobody has, below those that the kernel gives out by itself.
  static std::uint16_t freePort(int aType) {
    thread_local std::mt19937 random{std::random_device{}()};
    for (int i = 0; i < 1000; ++i) {
      auto const port = static_cast<std::uint16_t>(20000 + random() % 12000);
      Peer probe(aType);
      if (probe.bind(port)) {
        return port;
      }
    }
    throw std::runtime_error("no free port");
  }

  static Peer connectedTo(std::uint16_t aPort) {
    Peer peer(Stream);
    if (!peer.connect(aPort)) {
      throw std::runtime_error("nobody listens");
    }
    return peer;
  }

  bool bind(std::uint16_t aPort) {
    SocketCommon::SockAddr any = loopback(aPort);
    any.mAddress = {};
    return CCmSocket::SetAddress(mSocket, &any, sizeof any) == 0;
  }

  bool listen(std::uint16_t aPort, int aBacklog = 16) {
    std::int32_t const yes = 1;
    CCmSocket::SetOptions(mSocket, 1, 2, &yes, sizeof yes);
    return bind(aPort) && CCmSocket::ListenConnectionRequest(mSocket, aBacklog) == 0;
  }

  /// With an invalid end when nobody came.
  Peer accept() {
    SocketCommon::SockAddr address;
    int length = sizeof address;
    return Peer(Stream, CCmSocket::AcceptConnection(mSocket, &address, &length));
  }

  bool connect(std::uint16_t aPort) {
    SocketCommon::SockAddr const address = loopback(aPort);
    return CCmSocket::Connect(mSocket, &address, sizeof address) == 0;
  }

  bool send(std::string const& aText) {
    return CCmSocket::SendData(mSocket, aText.data(), static_cast<int>(aText.size()), 0) ==
           static_cast<int>(aText.size());
  }

  bool sendTo(std::uint16_t aPort, std::string const& aText) {
    SocketCommon::SockAddr const address = loopback(aPort);
    return CCmSocket::SendData(mSocket, aText.data(), static_cast<int>(aText.size()), 0, &address,
                               sizeof address) == static_cast<int>(aText.size());
  }

  /// One read; empty at the end, and on failure.
  std::string receive() {
    std::string text(65536, '\0');
    int const size = CCmSocket::ReciveData(mSocket, text.data(), static_cast<int>(text.size()), 0);
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return text;
  }

  /// All there is up to the end of the connection.
  std::string receiveAll() {
    std::string all;
    for (std::string piece = receive(); !piece.empty(); piece = receive()) {
      all += piece;
    }
    return all;
  }

  /// True when the other end has closed, or closes within the bound.
  bool seesEnd() { return receive().empty(); }

  void finishSending() { CCmSocket::Shutdown(mSocket, 1); }

  void close() {
    if (mSocket >= 0) {
      CCmSocket::Close(std::exchange(mSocket, -1));
    }
  }

  int type() const { return mType; }

 private:
  int mType;
  int mSocket;
};

}  // namespace Zelv::Testing
