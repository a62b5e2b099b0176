#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <thread>

#include "zelv/adapter/NetworkConnection.h"
#include "zelv/adapter/testing/Peer.h"
#include "zelv/adapter/testing/Receiver.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeSockets.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Testing {

/// A listener or reader under test, with all fakes as at start.
class NetworkTest : public testing::Test {
 protected:
  using Connection = std::unique_ptr<Adapter::NetworkConnection>;
  using FakeSockets = Platform::Fake::FakeSockets;

  NetworkTest() { Platform::Fake::ResetFakes(); }
  ~NetworkTest() override { Platform::Fake::ResetFakes(); }

  /// Prepared and running on mPort.
  Connection tcpListener(NetworkMessageCallback& aReceiver) {
    mPort = Peer::freePort(Peer::Stream);
    auto connection = std::make_unique<Adapter::NetworkConnection>(
        "tcp", "127.0.0.1", "", mPort, &aReceiver, Adapter::TCPListener);
    int const accepts = FakeSockets::Count(FakeSockets::Accept);
    EXPECT_TRUE(connection->createTCPListener());
    EXPECT_NE(0, connection->Create("listener", 4096));
    EXPECT_TRUE(comesTo(FakeSockets::Accept, accepts + 1));
    return connection;
  }

  Connection udpReader(NetworkMessageCallback& aReceiver) {
    mPort = Peer::freePort(Peer::Datagram);
    auto connection = std::make_unique<Adapter::NetworkConnection>("udp", "127.0.0.1", "", mPort,
                                                                   &aReceiver, Adapter::UDPHandler);
    EXPECT_TRUE(connection->createUDPHandler());
    EXPECT_NE(0, connection->Create("reader", 4096));
    return connection;
  }

  Connection outgoing(std::string const& aProtocol, std::string const& aAddress = "127.0.0.1",
                      std::string const& aLocalInterface = "") {
    return std::make_unique<Adapter::NetworkConnection>(aProtocol, aAddress, aLocalInterface, mPort,
                                                        nullptr, Adapter::OutgoingConnection);
  }

  /// Connects that many peers to mPort. One after the other, each when the one before has been
  /// accepted: the listener keeps no more than two waiting, and the kernel lets the next one try
  /// again after a second.
  std::list<Peer> connectPeers(std::size_t aCount) {
    std::list<Peer> peers;
    int const idle = FakeSockets::Count(FakeSockets::Accept);
    EXPECT_GT(idle, 0) << "wait for the listener first";
    while (peers.size() < aCount) {
      peers.push_back(Peer::connectedTo(mPort));
      EXPECT_TRUE(comesTo(FakeSockets::Accept, idle + static_cast<int>(peers.size())));
    }
    return peers;
  }

  /// As a peer does it: what came back, up to the end of the connection.
  std::string exchange(std::string const& aText) {
    Peer peer = Peer::connectedTo(mPort);
    EXPECT_TRUE(peer.send(aText));
    return peer.receiveAll();
  }

  /// Waits, bounded, for that many calls since the reset.
  static bool comesTo(FakeSockets::Call aCall, int aCount) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (FakeSockets::Count(aCall) < aCount && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
    return FakeSockets::Count(aCall) >= aCount;
  }

  std::uint16_t mPort = 0;
};

}  // namespace Zelv::Testing
