// Every line that a connection writes: its text, its level, and how it comes about.

#include <gmock/gmock.h>

#include <cerrno>
#include <functional>
#include <ostream>

#include "zelv/adapter/testing/NetworkTest.h"

namespace {

using Zelv::Adapter::NetworkConnection;
using Zelv::Platform::Fake::FakeSockets;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Testing::NetworkTest;
using Zelv::Testing::Peer;
using Zelv::Testing::Receiver;

constexpr auto group = "239.255.41.7";

/// What a way to bring a line about has to work with.
class Stage : public NetworkTest {
 public:
  void TestBody() override {}
  using NetworkTest::comesTo;
  using NetworkTest::exchange;
  using NetworkTest::mPort;
  using NetworkTest::outgoing;
  using NetworkTest::tcpListener;
  using NetworkTest::udpReader;

  bool createListener() {
    return NetworkConnection("tcp", "", "", Peer::freePort(Peer::Stream), nullptr,
                             Zelv::Adapter::TCPListener)
        .createTCPListener();
  }

  bool createReader(std::string const& aGroup = "", std::string const& aInterface = "") {
    return NetworkConnection("udp", aGroup, aInterface, Peer::freePort(Peer::Datagram), nullptr,
                             Zelv::Adapter::UDPHandler)
        .createUDPHandler();
  }

  bool exchangeWithListener() {
    auto const listener = tcpListener(mReceiver);
    exchange("ab\n");
    return mReceiver.waitFor(1);
  }

  bool datagramToReader() {
    auto const reader = udpReader(mReceiver);
    return Peer(Peer::Datagram).sendTo(mPort, "abc") && mReceiver.waitFor(1);
  }

  /// The acknowledgement comes before the message is handled, so the listener stays until then.
  bool deliverToListener() {
    auto const listener = tcpListener(mReceiver);
    auto const connection = outgoing("tcp");
    return connection->createTCPConnection() && connection->sendMessage("ab", 1) &&
           mReceiver.waitFor(1);
  }

  /// Connects to a listener that is there, and then sends with whatever fault was set.
  bool sendToListener(std::function<void()> const& aFault) {
    auto const listener = tcpListener(mReceiver);
    auto const connection = outgoing("tcp");
    EXPECT_TRUE(connection->createTCPConnection());
    EXPECT_TRUE(comesTo(FakeSockets::Receive, 1));
    aFault();
    return connection->sendMessage("ab", 1);
  }

  Receiver mReceiver;
};

struct Case {
  char const* name;
  unsigned long level;
  char const* text;
  /// Tells what the operation gave.
  std::function<bool(Stage&)> bringAbout;
  bool expected;
};

void PrintTo(Case const& aCase, std::ostream* aStream) {
  *aStream << aCase.name;
}

class ConnectionLog : public testing::TestWithParam<Case> {};

TEST_P(ConnectionLog, HasTheLineAtItsLevel) {
  Stage stage;
  LogCapture const log;
  EXPECT_EQ(GetParam().expected, GetParam().bringAbout(stage));
  EXPECT_TRUE(log.has(GetParam().level, GetParam().text)) << log.dump();
}

std::function<bool(Stage&)> failing(FakeSockets::Call aCall, int aErrno,
                                    std::function<bool(Stage&)> const& aThen) {
  return [=](Stage& aStage) {
    FakeSockets::FailNext(aCall, aErrno);
    return aThen(aStage);
  };
}

std::function<bool(Stage&)> failingOption(int aLevel, int aName,
                                          std::function<bool(Stage&)> const& aThen) {
  return [=](Stage& aStage) {
    FakeSockets::FailOption(aLevel, aName, ENOMEM);
    return aThen(aStage);
  };
}

bool toListener(FakeSockets::Call aCall, int aErrno) {
  NetworkConnection connection("tcp", "", "", Peer::freePort(Peer::Stream), nullptr,
                               Zelv::Adapter::TCPListener);
  FakeSockets::FailNext(aCall, aErrno);
  return connection.createTCPListener();
}

bool toReader(FakeSockets::Call aCall, int aErrno) {
  NetworkConnection connection("udp", "", "", Peer::freePort(Peer::Datagram), nullptr,
                               Zelv::Adapter::UDPHandler);
  FakeSockets::FailNext(aCall, aErrno);
  return connection.createUDPHandler();
}

bool createGroupSender(Stage& aStage) {
  return aStage.outgoing("udp", group, "127.0.0.1")->createUDPConnection();
}

INSTANTIATE_TEST_SUITE_P(
    Creating, ConnectionLog,
    testing::Values(
        Case{"OpenListener", PCRealDebug::Error,
             "NetworkConnection::createTCPListener: Failed to create TCP socket, errno=Too many "
             "open files.",
             [](Stage&) { return toListener(FakeSockets::Open, EMFILE); }, false},
        Case{"ReuseListener", PCRealDebug::Error,
             "NetworkConnection::createTCPListener: Failed to Set REUSEADDR option, errno=Cannot "
             "allocate memory.",
             failingOption(1, 2, [](Stage& aStage) { return aStage.createListener(); }), false},
        Case{"BindListener", PCRealDebug::Error,
             "NetworkConnection::createTCPListener: Failed to BIND TCP socket, errno=Address "
             "already in use.",
             [](Stage&) { return toListener(FakeSockets::Bind, EADDRINUSE); }, false},
        Case{"Listen", PCRealDebug::Error,
             "NetworkConnection::createTCPListener: Failed to start Listening on socket, "
             "errno=Address already in use.",
             [](Stage&) { return toListener(FakeSockets::Listen, EADDRINUSE); }, false},
        Case{"OpenTCP", PCRealDebug::Error,
             "NetworkConnection::createTCPConnection: Failed to create TCP socket, errno=Too many "
             "open files.",
             failing(FakeSockets::Open, EMFILE,
                     [](Stage& aStage) { return aStage.outgoing("tcp")->createTCPConnection(); }),
             false},
        Case{"SendTimeout", PCRealDebug::Error,
             "NetworkConnection::createTCPConnection: Failed to set the TCP socket SND timeout "
             "value.",
             failingOption(1, 21, [](Stage& aStage) { return aStage.deliverToListener(); }), true},
        Case{"ReceiveTimeout", PCRealDebug::Error,
             "NetworkConnection::createTCPConnection: Failed to set the TCP socket RCV timeout "
             "value.",
             failingOption(1, 20, [](Stage& aStage) { return aStage.deliverToListener(); }), true},
        Case{"Connect", PCRealDebug::Error,
             "NetworkConnection::createTCPConnection: Failed to connect to TCP server, "
             "errno=Connection refused.",
             failing(FakeSockets::Connect, ECONNREFUSED,
                     [](Stage& aStage) { return aStage.outgoing("tcp")->createTCPConnection(); }),
             false},
        Case{"NoPort", PCRealDebug::Error, "NetworkConnection::createUDPHandler: Port not set!!!!",
             [](Stage&) {
               return NetworkConnection("udp", "", "", 0, nullptr, Zelv::Adapter::UDPHandler)
                   .createUDPHandler();
             },
             false},
        Case{"OpenReader", PCRealDebug::Error,
             "NetworkConnection::createUDPHandler: Failed to create UDP socket, errno=Too many "
             "open files.",
             [](Stage&) { return toReader(FakeSockets::Open, EMFILE); }, false},
        Case{"ReuseReader", PCRealDebug::Error,
             "NetworkConnection::createUDPHandler: Failed to Set REUSEADDR option, errno=Cannot "
             "allocate memory.",
             failingOption(1, 2, [](Stage& aStage) { return aStage.createReader(); }), false},
        Case{"BindReader", PCRealDebug::Error,
             "NetworkConnection::createUDPHandler: Failed to bind socket, errno = Address already "
             "in use.",
             [](Stage&) { return toReader(FakeSockets::Bind, EADDRINUSE); }, false},
        Case{"Join", PCRealDebug::Error,
             "NetworkConnection::createUDPHandler: Failed to join multicast group 239.255.41.7, "
             "errno=Cannot allocate memory.",
             failingOption(0, 35, [](Stage& aStage) { return aStage.createReader(group); }), false},
        Case{"JoinOnInterface", PCRealDebug::Notable,
             "NetworkConnection::createUDPHandler: Found Local Interface IP. Setting interface to "
             "join on to 127.0.0.1.",
             [](Stage& aStage) { return aStage.createReader(group, "127.0.0.1"); }, true},
        Case{"JoinOnAny", PCRealDebug::Notable,
             "NetworkConnection::createUDPHandler: Binding receive socket to INADDR_ANY.",
             failingOption(0, 35, [](Stage& aStage) { return aStage.createReader(group); }), false},
        Case{"OpenUDP", PCRealDebug::Error,
             "NetworkConnection::createUDPConnection: Failed to create UDP socket, errno=Too many "
             "open files.",
             failing(FakeSockets::Open, EMFILE,
                     [](Stage& aStage) { return aStage.outgoing("udp")->createUDPConnection(); }),
             false},
        Case{"TTL", PCRealDebug::Error,
             "NetworkConnection::createUDPConnection: Failed to set multicast TTL, errno=Cannot "
             "allocate memory.",
             failingOption(0, 33, createGroupSender), true},
        Case{"Loopback", PCRealDebug::Error,
             "NetworkConnection::createUDPConnection: Failed to disable message loopback, "
             "errno=Cannot allocate memory.",
             failingOption(0, 34, createGroupSender), true},
        Case{"Interface", PCRealDebug::Error,
             "NetworkConnection::createUDPConnection: Failed to enable multicast sending on "
             "interface '127.0.0.1' errno=Cannot allocate memory.",
             failingOption(0, 32, createGroupSender), true},
        Case{"KernelDecides", PCRealDebug::Notable,
             "NetworkConnection::createUDPConnection: Kernel decides the multicast "
             "interface.[ipaddr.s_addr is set to INADDR_ANY]",
             [](Stage& aStage) { return aStage.outgoing("udp", group)->createUDPConnection(); },
             true}),
    [](auto const& aInfo) { return aInfo.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Receiving, ConnectionLog,
    testing::Values(
        Case{"NoType", PCRealDebug::Error,
             "NetworkConnection::t_Main: Invalid NetworkConnectionType !!!.",
             [](Stage& aStage) {
               auto const connection = aStage.outgoing("udp");
               bool const started = connection->Create("thread", 4096) != 0;
               connection->Destroy();
               return started;
             },
             true},
        Case{"Accept", PCRealDebug::Error,
             "NetworkConnection::startTCPListening: Failed to ACCEPT TCP connection, errno=Too "
             "many open files.",
             failing(FakeSockets::Accept, EMFILE,
                     [](Stage& aStage) { return aStage.exchangeWithListener(); }),
             true},
        Case{"Accepted", PCRealDebug::Detail,
             "NetworkConnection::startTCPListening: Received TCP connection request from "
             "127.0.0.1",
             [](Stage& aStage) { return aStage.exchangeWithListener(); }, true},
        Case{"TCPReceive", PCRealDebug::Warning,
             "NetworkConnection::startTCPRead: Failed to receive TCP packet, errno=Connection "
             "reset by peer.",
             failing(FakeSockets::Receive, ECONNRESET,
                     [](Stage& aStage) {
                       auto const listener = aStage.tcpListener(aStage.mReceiver);
                       Peer peer = Peer::connectedTo(aStage.mPort);
                       return Stage::comesTo(FakeSockets::Receive, 1) && peer.seesEnd();
                     }),
             true},
        Case{"TCPAcknowledge", PCRealDebug::Warning,
             "NetworkConnection::startTCPRead: Failed to send TCP packet, errno=Broken pipe.",
             [](Stage& aStage) {
               FakeSockets::FailSendOf("\n", EPIPE);
               return aStage.exchangeWithListener();
             },
             true},
        Case{"TCPReceived", PCRealDebug::Notable,
             "NetworkConnection::startTCPRead: Received TCP packet of size 3.",
             [](Stage& aStage) { return aStage.exchangeWithListener(); }, true},
        Case{"UDPReceive", PCRealDebug::Error,
             "NetworkConnection::startUDPRead: Failed to receive datagram, errno=No buffer space "
             "available.",
             failing(FakeSockets::Receive, ENOBUFS,
                     [](Stage& aStage) { return aStage.datagramToReader(); }),
             true},
        Case{"UDPReceived", PCRealDebug::Notable,
             " NetworkConnection::startUDPRead: Received UDP packet from 127.0.0.1, packet size 3.",
             [](Stage& aStage) { return aStage.datagramToReader(); }, true}),
    [](auto const& aInfo) { return aInfo.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Sending, ConnectionLog,
    testing::Values(
        Case{"Remark", PCRealDebug::Trace,
             "NetworkConnection::sendMessage: QX:11/15/09 '\\n' terminator will be included with "
             "message body.",
             [](Stage& aStage) { return aStage.outgoing("udp")->sendMessage("ab", 0); }, true},
        Case{"TCPSend", PCRealDebug::Warning,
             "NetworkConnection::sendMessage: (body) Failed to send data over TCP rc=-1, "
             "errno=Broken pipe.",
             [](Stage& aStage) {
               return aStage.sendToListener([] { FakeSockets::FailSendOf("ab\n", EPIPE); });
             },
             false},
        Case{"TCPAnswer", PCRealDebug::Warning,
             "NetworkConnection::sendMessage: Failed to receive TCP packet, errno=Resource "
             "temporarily unavailable.",
             [](Stage& aStage) {
               return aStage.sendToListener(
                   [] { FakeSockets::FailNext(FakeSockets::Receive, EAGAIN); });
             },
             false},
        Case{"NoProtocol", PCRealDebug::Error,
             "NetworkConnection::sendMessage: TCP / UDP flag not set!!!.",
             [](Stage& aStage) { return aStage.outgoing("http")->sendMessage("ab", 1); }, false}),
    [](auto const& aInfo) { return aInfo.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Closing, ConnectionLog,
    testing::Values(Case{"Close", PCRealDebug::Notable,
                         "NetworkConnection::closeConnection: Closing the Socket Number =-1.",
                         [](Stage& aStage) {
                           aStage.outgoing("udp")->closeConnection();
                           return true;
                         },
                         true},
                    Case{"CloseFails", PCRealDebug::Notable,
                         "NetworkConnection::closeConnection: Failed to Shutdown socket, "
                         "errno=Input/output error.",
                         [](Stage& aStage) {
                           auto const connection = aStage.outgoing("udp");
                           bool const open = connection->createUDPConnection();
                           FakeSockets::FailNext(FakeSockets::Close, EIO);
                           connection->closeConnection();
                           return open;
                         },
                         true}),
    [](auto const& aInfo) { return aInfo.param.name; });

TEST(ConnectionLogAtTheEnd, TellsOfEachThreadThatIsWaitedFor) {
  Stage stage;
  LogCapture const log;
  auto listener = stage.tcpListener(stage.mReceiver);
  Peer const peer = Peer::connectedTo(stage.mPort);
  ASSERT_TRUE(Stage::comesTo(FakeSockets::Receive, 1));
  listener.reset();
  EXPECT_EQ(
      1, log.countContaining(PCRealDebug::Trace,
                             "NetworkAdapter::~NetworkAdapter: Waiting for a join on threadID = "));
  EXPECT_TRUE(log.has(PCRealDebug::Trace, "NetworkConnection::~NetworkConnection: Entry."));
}

}  // namespace
