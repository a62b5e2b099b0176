#pragma once

#include <cstdint>
#include <string>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/testing/DiscoveryTexts.h"
#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/PCNetwork.h"

namespace Zelv::Testing {

/// Another device of a home on the loopback interface, byte by byte.
///
/// The set's "group" is one loopback address, which this peer binds: all that the set says to the
/// group comes here, over real sockets, and homes of tests that run side by side do not meet. Each
/// wait is bounded to 20 seconds.
class GroupPeer {
 public:
  static constexpr char const* cSet = "127.0.0.1";

  GroupPeer(std::string const& aAddress, std::uint16_t aPort)
      : mAddress(aAddress), mPort(aPort), mSocket(CCmSocket::Open(2, 2, 0)) {
    std::int32_t const yes = 1;
    long const patience[2] = {20, 0};
    CCmSocket::SetOptions(mSocket, 1, 2, &yes, sizeof yes);
    CCmSocket::SetOptions(mSocket, 1, 20, patience, sizeof patience);
    SocketCommon::SockAddr const own = at(aAddress);
    mBound = CCmSocket::SetAddress(mSocket, &own, sizeof own) == 0;
  }
  GroupPeer(GroupPeer const&) = delete;
  GroupPeer& operator=(GroupPeer const&) = delete;
  ~GroupPeer() { CCmSocket::Close(mSocket); }

  bool isBound() const { return mBound; }

  /// Where this peer is answered.
  std::string url() const { return "udp://" + mAddress + ":" + std::to_string(mPort); }

  bool say(std::string const& aText) {
    SocketCommon::SockAddr const set = at(cSet);
    return CCmSocket::SendData(mSocket, aText.data(), static_cast<int>(aText.size()), 0, &set,
                               sizeof set) == static_cast<int>(aText.size());
  }

  /// The next message; all three copies of it have to come. Empty when none comes in time.
  std::string hear() {
    std::string first = datagram();
    for (int copy = 0; copy < 2 && !first.empty(); ++copy) {
      if (datagram() != first) {
        return "not the same three times: " + first;
      }
    }
    return first;
  }

  /// The type of the next message.
  std::string hearType() { return DiscoveryTexts::typeOf(hear()); }

  /// What the set has said, and all that it had to say to what it was told before: the types up to
  /// the answer to a question that is asked now, which is not among them.
  std::string hearAllSoFar() {
    std::string const probe = DiscoveryTexts::probe("TV", url());
    std::string const id = DiscoveryTexts::between(probe, "<MessageID>", "</MessageID>");
    say(probe);
    std::string types;
    for (;;) {
      std::string const message = hear();
      if (message.empty()) {
        return types + "and no answer";
      }
      if (message.find("<RelatesTo>" + id + "</RelatesTo>") != std::string::npos) {
        return types;
      }
      types += DiscoveryTexts::typeOf(message) + " ";
    }
  }

 private:
  SocketCommon::SockAddr at(std::string const& aAddress) const {
    SocketCommon::SockAddr address;
    address.mFamily = 2;
    address.mPort = PCNetwork::Htons(mPort);
    address.mAddress = CCmSocket::StringToNumeric(aAddress.c_str());
    return address;
  }

  std::string datagram() {
    std::string text(65536, '\0');
    int const size = CCmSocket::ReciveData(mSocket, text.data(), static_cast<int>(text.size()), 0);
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return text;
  }

  std::string const mAddress;
  std::uint16_t const mPort;
  int const mSocket;
  bool mBound = false;
};

}  // namespace Zelv::Testing
