#include "zelv/adapter/NetworkConnection.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <list>
#include <semaphore>
#include <stdexcept>
#include <thread>

#include "zelv/adapter/IncomingText.h"
#include "zelv/adapter/testing/NetworkTest.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Zelv::Adapter::IncomingText;
using Zelv::Adapter::NetworkConnection;
using Zelv::Platform::Fake::FakeClock;
using Zelv::Platform::Fake::FakeThreads;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;
using Zelv::Testing::NetworkTest;
using Zelv::Testing::Peer;
using Zelv::Testing::Receiver;

class TCPService : public NetworkTest {};
class UDPService : public NetworkTest {};
class Sending : public NetworkTest {};
class Closing : public NetworkTest {};

// Receiving over TCP

TEST_F(TCPService, DeliversTheWholeTextWithItsLineEndAsBothArguments) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  EXPECT_EQ("\n", exchange("<a/>\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("<a/>\n"));
  EXPECT_THAT(receiver.senders(), ElementsAre("<a/>\n"));
}

TEST_F(TCPService, PutsTogetherWhatArrivesInSeveralReadsAndAcknowledgesOnce) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  Peer peer = Peer::connectedTo(mPort);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 1));
  std::string whole;
  for (char letter = 'a'; letter < 'f'; ++letter) {
    int const reads = FakeSockets::Count(FakeSockets::Receive);
    ASSERT_TRUE(peer.send(std::string(10, letter)));
    ASSERT_TRUE(comesTo(FakeSockets::Receive, reads + 1));  // it waits for more, so this was read
    whole += std::string(10, letter);
  }
  EXPECT_THAT(receiver.messages(), IsEmpty());
  ASSERT_TRUE(peer.send("end\n"));
  EXPECT_EQ("\n", peer.receiveAll());
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_EQ(whole + "end\n", receiver.messages()[0]);
}

TEST_F(TCPService, TakesTextsMuchLongerThanARead) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  std::string const text = std::string(1000000, 'x') + "\n";
  EXPECT_EQ("\n", exchange(text));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_TRUE(text == receiver.messages()[0]);
}

TEST_F(TCPService, EndsAMessageWhereAReadEndsInALineEnd) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  // One read takes 4,095 bytes.
  std::string const first = std::string(4094, 'x') + "\n";
  Peer peer = Peer::connectedTo(mPort);
  ASSERT_TRUE(peer.send(first + "rest\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre(first));
}

TEST_F(TCPService, KeepsALineEndThatEndsNoRead) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  EXPECT_EQ("\n", exchange("one\ntwo\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("one\ntwo\n"));
}

TEST_F(TCPService, CutsEachReadAtItsFirstNul) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  EXPECT_EQ("\n", exchange(std::string("ab\0cd\n", 6)));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("ab"));
}

TEST_F(TCPService, DeliversNothingOfAPeerThatClosesWithoutALineEnd) {
  LogCapture const log;
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  Peer peer = Peer::connectedTo(mPort);
  ASSERT_TRUE(peer.send("<a/>"));
  peer.finishSending();
  EXPECT_EQ("", peer.receiveAll());  // and no acknowledgement
  EXPECT_THAT(receiver.messages(), IsEmpty());
  EXPECT_TRUE(
      log.hasContaining(PCRealDebug::Warning,
                        "NetworkConnection::startTCPRead: Failed to receive TCP packet, errno="));
}

TEST_F(TCPService, AcknowledgesBeforeTheMessageIsHandled) {
  std::binary_semaphore mayGoOn{0};
  Receiver receiver([&](std::string const&) { mayGoOn.acquire(); });
  auto const listener = tcpListener(receiver);
  Peer peer = Peer::connectedTo(mPort);
  ASSERT_TRUE(peer.send("<a/>\n"));
  EXPECT_EQ("\n", peer.receive());
  ASSERT_TRUE(receiver.waitFor(1));
  mayGoOn.release();
}

TEST_F(TCPService, DeliversThoughTheAcknowledgementCannotBeSent) {
  LogCapture const log;
  FakeSockets::FailSendOf("\n", EPIPE);
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  EXPECT_EQ("", exchange("<a/>\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "NetworkConnection::startTCPRead: Failed to send TCP packet, "
                          "errno=Broken pipe."));
}

TEST_F(TCPService, ServesSeveralPeersAtATime) {
  std::counting_semaphore<> mayGoOn{0};
  Receiver receiver([&](std::string const&) { mayGoOn.acquire(); });
  auto const listener = tcpListener(receiver);
  std::list<Peer> peers = connectPeers(5);
  for (Peer& peer : peers) {
    ASSERT_TRUE(peer.send("text\n"));
  }
  EXPECT_TRUE(receiver.waitFor(5));
  mayGoOn.release(5);
}

TEST_F(TCPService, LetsTheKernelLookAfterPeersThatMayBeDead) {
  Receiver receiver;
  FakeSockets::TakeOptions();
  auto const listener = tcpListener(receiver);
  using Zelv::Platform::Fake::SocketOption;
  // What is accepted takes these over from the listener.
  EXPECT_THAT(FakeSockets::TakeOptions(),
              testing::IsSupersetOf({SocketOption{1, 2, std::string("\1\0\0\0", 4)},
                                     SocketOption{1, 9, std::string("\1\0\0\0", 4)},
                                     SocketOption{6, 4, std::string("\x3C\0\0\0", 4)}}));
}

TEST_F(TCPService, ReadsAgainAfterASignal) {
  Receiver receiver;
  FakeSockets::FailNext(FakeSockets::Receive, EINTR, 2);
  auto const listener = tcpListener(receiver);
  Peer peer = Peer::connectedTo(mPort);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 3));
  ASSERT_TRUE(peer.send("<a/>\n"));
  EXPECT_TRUE(receiver.waitFor(1));
}

// A stranger's message

class Thrown : public NetworkTest, public testing::WithParamInterface<int> {
 public:
  static void throwIt(int aKind) {
    if (aKind == 0) {
      throw std::runtime_error("what it was");
    }
    throw aKind;
  }

  static std::string line(int aKind) {
    return aKind == 0 ? "NetworkConnection::deliver: Message dropped, exception: what it was"
                      : "NetworkConnection::deliver: Message dropped, unknown exception.";
  }
};

TEST_P(Thrown, ByAReceiverOverTCPIsLoggedAndTheServiceGoesOn) {
  LogCapture const log;
  Receiver receiver([](std::string const& aText) {
    if (aText == "bad\n") {
      throwIt(GetParam());
    }
  });
  auto const listener = tcpListener(receiver);
  exchange("bad\n");
  EXPECT_TRUE(log.waitFor(PCRealDebug::Error, line(GetParam())));
  exchange("good\n");
  EXPECT_TRUE(receiver.waitFor(2));
}

TEST_P(Thrown, ByAReceiverOverUDPIsLoggedAndTheServiceGoesOn) {
  LogCapture const log;
  Receiver receiver([](std::string const& aText) {
    if (aText == "bad\n") {
      throwIt(GetParam());
    }
  });
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  ASSERT_TRUE(peer.sendTo(mPort, "bad\n"));
  EXPECT_TRUE(log.waitFor(PCRealDebug::Error, line(GetParam())));
  ASSERT_TRUE(peer.sendTo(mPort, "good\n"));
  EXPECT_TRUE(receiver.waitFor(2));
}

INSTANTIATE_TEST_SUITE_P(Exceptions, Thrown, testing::Values(0, 7));

// Bounds

TEST_F(TCPService, DeliversAMessageOfExactlyTheGreatestSize) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  std::string const text = std::string(IncomingText::MaxSize - 1, 'x') + "\n";
  EXPECT_EQ("\n", exchange(text));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_EQ(IncomingText::MaxSize, receiver.messages()[0].size());
}

TEST_F(TCPService, ClosesOnAMessageThatIsTooLongAndGoesOn) {
  LogCapture const log;
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  {
    Peer peer = Peer::connectedTo(mPort);
    std::string const piece(1U << 20, 'x');
    int sent = 0;
    while (sent < 64 && peer.send(piece)) {
      ++sent;
    }
    EXPECT_LT(sent, 64);
  }
  EXPECT_EQ("\n", exchange("good\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("good\n"));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "NetworkConnection::startTCPRead: The message is too long, closing the "
                          "connection."));
}

TEST_F(TCPService, LetsTheLongestSilentGiveWayToOneTooMany) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  int const most = static_cast<int>(NetworkConnection::MaxChildren);
  std::list<Peer> peers = connectPeers(NetworkConnection::MaxChildren);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, most));
  FakeClock::Advance(1000);
  ASSERT_TRUE(peers.front().send("not silent"));
  ASSERT_TRUE(comesTo(FakeSockets::Receive, most + 1));

  EXPECT_EQ("\n", exchange("good\n"));
  auto const second = std::next(peers.begin());
  EXPECT_TRUE(second->seesEnd());
  peers.erase(second);
  for (Peer& peer : peers) {
    ASSERT_TRUE(peer.send(" any more\n"));
  }
  ASSERT_TRUE(receiver.waitFor(static_cast<std::size_t>(most)));
  EXPECT_THAT(receiver.messages(), testing::Contains("not silent any more\n"));
}

TEST_F(TCPService, LetsTheNextOneWaitWhileAllAreBusyWithAMessageThatHasArrived) {
  std::counting_semaphore<> mayGoOn{0};
  Receiver receiver([&](std::string const&) { mayGoOn.acquire(); });
  auto const listener = tcpListener(receiver);
  std::list<Peer> peers = connectPeers(NetworkConnection::MaxChildren);
  for (Peer& peer : peers) {
    ASSERT_TRUE(peer.send("text\n"));
  }
  ASSERT_TRUE(receiver.waitFor(NetworkConnection::MaxChildren));
  Peer late = Peer::connectedTo(mPort);
  ASSERT_TRUE(late.send("late\n"));
  mayGoOn.release(NetworkConnection::MaxChildren + 1);
  EXPECT_EQ("\n", late.receiveAll());
  EXPECT_TRUE(receiver.waitFor(NetworkConnection::MaxChildren + 1));
}

TEST_F(TCPService, LetsTheLongestSilentGiveWayWhenDescriptorsRunOut) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  Peer silent = Peer::connectedTo(mPort);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 1));
  FakeSockets::FailNext(FakeSockets::Accept, EMFILE);
  EXPECT_EQ("\n", exchange("one\n"));  // wakes the listener, whose next attempt fails
  EXPECT_TRUE(silent.seesEnd());
  EXPECT_EQ("\n", exchange("two\n"));
  EXPECT_TRUE(receiver.waitFor(2));
}

TEST_F(TCPService, ForgetsConnectionsThatAreDone) {
  LogCapture const log;
  Receiver receiver;
  auto listener = tcpListener(receiver);
  for (int i = 0; i < 20; ++i) {
    exchange("text\n");
  }
  ASSERT_TRUE(receiver.waitFor(20));
  listener.reset();
  // Those that were left to the end are told of; the others went as new ones came.
  EXPECT_LT(log.countContaining(PCRealDebug::Trace, "Waiting for a join"), 20);
}

// Errors that pass

class PassingAcceptError : public NetworkTest, public testing::WithParamInterface<int> {};

TEST_P(PassingAcceptError, DoesNotEndTheListener) {
  FakeSockets::FailNext(FakeSockets::Accept, GetParam(), 8);
  Receiver receiver;
  std::int64_t const before = FakeClock::MonotonicMs();
  auto const listener = tcpListener(receiver);
  EXPECT_EQ("\n", exchange("good\n"));
  EXPECT_TRUE(receiver.waitFor(1));
  EXPECT_EQ(10 + 20 + 40 + 80 + 160 + 320 + 500 + 500, FakeClock::MonotonicMs() - before);
}

INSTANTIATE_TEST_SUITE_P(Errors, PassingAcceptError,
                         testing::Values(EMFILE, ENFILE, ECONNABORTED, EINTR, ENOMEM, ENOBUFS,
                                         EPROTO, EPERM, ENETDOWN, ETIMEDOUT));

class PassingReceiveError : public NetworkTest, public testing::WithParamInterface<int> {};

TEST_P(PassingReceiveError, DoesNotEndTheReader) {
  FakeSockets::FailNext(FakeSockets::Receive, GetParam(), 8);
  Receiver receiver;
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  ASSERT_TRUE(peer.sendTo(mPort, "good\n"));
  EXPECT_TRUE(receiver.waitFor(1));
}

INSTANTIATE_TEST_SUITE_P(Errors, PassingReceiveError,
                         testing::Values(EINTR, ENOBUFS, ENOMEM, ENETDOWN, ENETUNREACH,
                                         ECONNREFUSED, EHOSTUNREACH, EAGAIN));

class FinalError : public NetworkTest, public testing::WithParamInterface<int> {};

TEST_P(FinalError, EndsTheListener) {
  LogCapture const log;
  FakeSockets::FailNext(FakeSockets::Accept, GetParam());
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  listener->Destroy();
  EXPECT_TRUE(listener->isFinished());
  EXPECT_FALSE(Peer(Peer::Stream).connect(mPort));
}

TEST_P(FinalError, EndsTheReader) {
  FakeSockets::FailNext(FakeSockets::Receive, GetParam());
  Receiver receiver;
  auto const reader = udpReader(receiver);
  reader->Destroy();
  EXPECT_TRUE(reader->isFinished());
}

INSTANTIATE_TEST_SUITE_P(Errors, FinalError, testing::Values(EBADF, EINVAL, ENOTSOCK));

TEST_F(TCPService, GoesOnWhenAThreadCannotBeHad) {
  LogCapture const log;
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  FakeThreads::FailNext(1);
  EXPECT_EQ("", exchange("lost\n"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkConnection::startTCPListening: Failed to create a new TCP read "
                          "thread."));
  EXPECT_EQ("\n", exchange("good\n"));
  EXPECT_TRUE(receiver.waitFor(1));
}

// Receiving over UDP

TEST_F(UDPService, DeliversEachDatagramAsBothArguments) {
  Receiver receiver;
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  ASSERT_TRUE(peer.sendTo(mPort, "one\n"));
  ASSERT_TRUE(peer.sendTo(mPort, "two"));
  ASSERT_TRUE(receiver.waitFor(2));
  EXPECT_THAT(receiver.messages(), ElementsAre("one\n", "two"));
  EXPECT_THAT(receiver.senders(), ElementsAre("one\n", "two"));
}

TEST_F(UDPService, CutsADatagramAt4095Bytes) {
  Receiver receiver;
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  ASSERT_TRUE(peer.sendTo(mPort, std::string(4095, 'x')));
  ASSERT_TRUE(peer.sendTo(mPort, std::string(4095, 'y') + "z"));
  ASSERT_TRUE(receiver.waitFor(2));
  EXPECT_THAT(receiver.messages(), ElementsAre(std::string(4095, 'x'), std::string(4095, 'y')));
}

TEST_F(UDPService, CutsADatagramAtItsFirstNul) {
  Receiver receiver;
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  ASSERT_TRUE(peer.sendTo(mPort, std::string("ab\0cd\n", 6)));
  ASSERT_TRUE(peer.sendTo(mPort, std::string("\0cd\n", 4)));
  ASSERT_TRUE(receiver.waitFor(2));
  EXPECT_THAT(receiver.messages(), ElementsAre("ab", ""));
}

TEST_F(UDPService, TakesNoNoticeOfEmptyDatagrams) {
  Receiver receiver;
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(peer.sendTo(mPort, ""));
  }
  ASSERT_TRUE(peer.sendTo(mPort, "good\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("good\n"));
}

TEST_F(UDPService, IsRefusedWithPortZeroBeforeAnySocketIsOpened) {
  LogCapture const log;
  Receiver receiver;
  NetworkConnection connection("udp", "", "", 0, &receiver, Zelv::Adapter::UDPHandler);
  EXPECT_FALSE(connection.createUDPHandler());
  EXPECT_EQ(0, FakeSockets::Count(FakeSockets::Open));
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "NetworkConnection::createUDPHandler: Port not set!!!!"));
}

TEST_F(UDPService, HearsAGroupOnTheInterfaceThatItWasGiven) {
  Receiver receiver;
  auto const port = Peer::freePort(Peer::Datagram);
  NetworkConnection reader("udp", "239.255.41.7", "127.0.0.1", port, &receiver,
                           Zelv::Adapter::UDPHandler);
  ASSERT_TRUE(reader.createUDPHandler());
  ASSERT_NE(0, reader.Create("reader", 4096));
  NetworkConnection sender("udp", "239.255.41.7", "127.0.0.1", port, nullptr,
                           Zelv::Adapter::OutgoingConnection);
  // A device does not hear its own multicast; here both ends are one device.
  FakeSockets::FailOption(0, 34, ENOPROTOOPT);
  ASSERT_TRUE(sender.createUDPConnection());
  EXPECT_TRUE(sender.sendMessage("to all", 1));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("to all\n"));
}

// Sending

TEST_F(Sending, OverTCPAppendsOneLineEndAndWaitsForTheAcknowledgement) {
  mPort = Peer::freePort(Peer::Stream);
  Peer server(Peer::Stream);
  ASSERT_TRUE(server.listen(mPort));
  std::string heard;
  std::thread serving([&] {
    Peer peer = server.accept();
    heard = peer.receive();
    peer.send("\n");
  });
  auto const connection = outgoing("tcp");
  EXPECT_TRUE(connection->createTCPConnection());
  EXPECT_TRUE(connection->sendMessage("<a/>", 1));
  serving.join();
  EXPECT_EQ("<a/>\n", heard);
}

class Acknowledgement : public NetworkTest, public testing::WithParamInterface<std::string> {};

TEST_P(Acknowledgement, OfAnyKindMeansSent) {
  LogCapture const log;
  mPort = Peer::freePort(Peer::Stream);
  Peer server(Peer::Stream);
  ASSERT_TRUE(server.listen(mPort));
  std::thread serving([&] {
    Peer peer = server.accept();
    peer.receive();
    peer.send(GetParam());
  });
  auto const connection = outgoing("tcp");
  EXPECT_TRUE(connection->createTCPConnection());
  EXPECT_TRUE(connection->sendMessage("<a/>", 1));
  serving.join();
  EXPECT_EQ(1, log.count(PCRealDebug::Detail,
                         "NetworkConnection::sendMessage: Some problem in the receive message: " +
                             GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Wrong, Acknowledgement, testing::Values("", "no", "\n\n", "x\n"));

TEST_F(Sending, OverTCPTakesNoNoticeOfTheRepeatCount) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  auto const connection = outgoing("tcp");
  ASSERT_TRUE(connection->createTCPConnection());
  EXPECT_TRUE(connection->sendMessage("once", 0));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_THAT(receiver.messages(), ElementsAre("once\n"));
}

TEST_F(Sending, OverTCPFailsWhenNobodyListens) {
  mPort = Peer::freePort(Peer::Stream);
  EXPECT_FALSE(outgoing("tcp")->createTCPConnection());
}

TEST_F(Sending, ToAnEmptyAddressDoesNotReachThisMachine) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  EXPECT_FALSE(outgoing("tcp", "")->createTCPConnection());
  EXPECT_FALSE(outgoing("tcp", "localhost")->createTCPConnection());
}

TEST_F(Sending, OverTCPFailsWhenNoAcknowledgementComesInTime) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  auto const connection = outgoing("tcp");
  ASSERT_TRUE(connection->createTCPConnection());
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 1));  // the other end waits for the text
  FakeSockets::FailNext(FakeSockets::Receive, EAGAIN);
  EXPECT_FALSE(connection->sendMessage("<a/>", 1));
}

TEST_F(Sending, OverTCPBoundsConnectingSendingAndReceivingTo3Seconds) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  FakeSockets::TakeOptions();
  auto const connection = outgoing("tcp");
  ASSERT_TRUE(connection->createTCPConnection());
  long const patience[2] = {3, 0};
  std::string const value(reinterpret_cast<char const*>(patience), sizeof patience);
  auto const options = FakeSockets::TakeOptions();
  ASSERT_GE(options.size(), 2U);
  EXPECT_EQ(options[0], (Zelv::Platform::Fake::SocketOption{1, 21, value}));
  EXPECT_EQ(options[1], (Zelv::Platform::Fake::SocketOption{1, 20, value}));
}

TEST_F(Sending, OverTCPGoesOnWithoutTimeoutsThatCannotBeSet) {
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  FakeSockets::FailOption(1, 20, ENOMEM);
  FakeSockets::FailOption(1, 21, ENOMEM);
  auto const connection = outgoing("tcp");
  EXPECT_TRUE(connection->createTCPConnection());
  EXPECT_TRUE(connection->sendMessage("<a/>", 1));
}

TEST_F(Sending, OverUDPRepeatsTheDatagramAsOftenAsTold) {
  FakeSockets::CatchDatagrams();
  mPort = 4449;
  auto const connection = outgoing("udp", "192.0.2.7");
  ASSERT_TRUE(connection->createUDPConnection());
  EXPECT_TRUE(connection->sendMessage("<a/>", 3));
  auto const sent = FakeSockets::TakeDatagrams();
  ASSERT_EQ(3U, sent.size());
  for (auto const& datagram : sent) {
    EXPECT_EQ("<a/>\n", datagram.text);
    EXPECT_EQ("192.0.2.7", datagram.address);
    EXPECT_EQ(4449, datagram.port);
  }
}

TEST_F(Sending, OverUDPZeroOrLessTimesSendsNothingAndIsAllRight) {
  FakeSockets::CatchDatagrams();
  auto const connection = outgoing("udp");
  ASSERT_TRUE(connection->createUDPConnection());
  EXPECT_TRUE(connection->sendMessage("<a/>", 0));
  EXPECT_TRUE(connection->sendMessage("<a/>", -1));
  EXPECT_THAT(FakeSockets::TakeDatagrams(), IsEmpty());
}

TEST_F(Sending, OverUDPStopsAtTheFirstFailureAndIsAllRight) {
  FakeSockets::CatchDatagrams();
  auto const connection = outgoing("udp");
  ASSERT_TRUE(connection->createUDPConnection());
  FakeSockets::FailNext(FakeSockets::Send, ENETUNREACH);
  EXPECT_TRUE(connection->sendMessage("<a/>", 3));
  EXPECT_EQ(1, FakeSockets::Count(FakeSockets::Send));
  EXPECT_THAT(FakeSockets::TakeDatagrams(), IsEmpty());
}

TEST_F(Sending, ToAGroupPreparesTheSocketForIt) {
  auto const connection = outgoing("udp", "239.255.255.250", "127.0.0.1");
  ASSERT_TRUE(connection->createUDPConnection());
  using Zelv::Platform::Fake::SocketOption;
  EXPECT_THAT(FakeSockets::TakeOptions(),
              ElementsAre(SocketOption{0, 33, std::string(1, '\1')},
                          SocketOption{0, 34, std::string(1, '\0')},
                          SocketOption{0, 32, std::string("\x7F\0\0\1", 4)}));
}

TEST_F(Sending, ToAGroupLeavesTheInterfaceToTheKernelWhenNoneIsGiven) {
  auto const connection = outgoing("udp", "239.255.255.250");
  ASSERT_TRUE(connection->createUDPConnection());
  EXPECT_THAT(FakeSockets::TakeOptions(), testing::Contains(Zelv::Platform::Fake::SocketOption{
                                              0, 32, std::string("\0\0\0\0", 4)}));
}

TEST_F(Sending, ToAGroupGoesOnWithOptionsThatCannotBeSet) {
  for (int const option : {32, 33, 34}) {
    FakeSockets::FailOption(0, option, ENOMEM);
  }
  EXPECT_TRUE(outgoing("udp", "239.255.255.250")->createUDPConnection());
}

TEST_F(Sending, ToASinglePeerNeedsNoMulticast) {
  EXPECT_TRUE(outgoing("udp")->createUDPConnection());
  EXPECT_THAT(FakeSockets::TakeOptions(), IsEmpty());
}

TEST_F(Sending, OverAnythingElseFails) {
  EXPECT_FALSE(outgoing("TCP")->sendMessage("<a/>", 1));
  EXPECT_FALSE(outgoing("")->sendMessage("<a/>", 1));
}

TEST_F(Sending, JoinsTheGroupOnTheInterfaceGiven) {
  NetworkConnection reader("udp", "239.255.41.7", "127.0.0.1", Peer::freePort(Peer::Datagram),
                           nullptr, Zelv::Adapter::UDPHandler);
  FakeSockets::TakeOptions();
  ASSERT_TRUE(reader.createUDPHandler());
  using Zelv::Platform::Fake::SocketOption;
  EXPECT_THAT(FakeSockets::TakeOptions(),
              ElementsAre(SocketOption{1, 2, std::string("\1\0\0\0", 4)},
                          SocketOption{0, 35, std::string("\xEF\xFF\x29\x07\x7F\0\0\1", 8)}));
}

// Closing

TEST_F(Closing, ClosesTheDescriptorOnceHoweverOftenItIsAsked) {
  Receiver receiver;
  int before = 0;
  {
    auto const listener = tcpListener(receiver);
    before = FakeSockets::Count(FakeSockets::Close);
    listener->closeConnection();
    listener->closeConnection();
    listener->Destroy();
    listener->closeConnection();
  }
  EXPECT_EQ(before + 1, FakeSockets::Count(FakeSockets::Close));
}

TEST_F(Closing, TellsOfASecondTime) {
  LogCapture const log;
  auto const connection = outgoing("udp");
  ASSERT_TRUE(connection->createUDPConnection());
  connection->closeConnection();
  EXPECT_EQ(0, log.countContaining(PCRealDebug::Notable, "Failed to Shutdown socket"));
  connection->closeConnection();
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "NetworkConnection::closeConnection: Failed to Shutdown socket, "
                          "errno=Bad file descriptor."));
}

TEST_F(Closing, EndsAListenerByAFailedAcceptThatIsLogged) {
  LogCapture const log;
  Receiver receiver;
  auto const listener = tcpListener(receiver);
  listener->closeConnection();
  listener->Destroy();
  EXPECT_EQ(1, log.countContaining(
                   PCRealDebug::Error,
                   "NetworkConnection::startTCPListening: Failed to ACCEPT TCP connection, errno="))
      << log.dump();
  EXPECT_FALSE(Peer(Peer::Stream).connect(mPort));
}

TEST_F(Closing, EndsAReaderByAFailedReadThatIsLogged) {
  LogCapture const log;
  Receiver receiver;
  auto const reader = udpReader(receiver);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 1));
  reader->closeConnection();
  reader->Destroy();
  EXPECT_EQ(1, log.countContaining(
                   PCRealDebug::Error,
                   "NetworkConnection::startUDPRead: Failed to receive datagram, errno="));
}

TEST_F(Closing, DoesNotWaitForTheThread) {
  std::binary_semaphore mayGoOn{0};
  Receiver receiver([&](std::string const&) { mayGoOn.acquire(); });
  auto const reader = udpReader(receiver);
  ASSERT_TRUE(Peer(Peer::Datagram).sendTo(mPort, "text"));
  ASSERT_TRUE(receiver.waitFor(1));
  reader->closeConnection();
  EXPECT_TRUE(reader->isClosed());
  EXPECT_FALSE(reader->isFinished());
  mayGoOn.release();
  reader->Destroy();
  EXPECT_TRUE(reader->isFinished());
}

TEST_F(Closing, DeliversNothingAnyMore) {
  std::binary_semaphore mayGoOn{0};
  Receiver receiver([&](std::string const&) { mayGoOn.acquire(); });
  auto const reader = udpReader(receiver);
  Peer peer(Peer::Datagram);
  ASSERT_TRUE(peer.sendTo(mPort, "one"));
  ASSERT_TRUE(peer.sendTo(mPort, "two"));
  ASSERT_TRUE(receiver.waitFor(1));
  reader->closeConnection();
  mayGoOn.release();
  reader->Destroy();
  EXPECT_THAT(receiver.messages(), ElementsAre("one"));
}

TEST_F(Closing, EndsConnectionsThatAreSilent) {
  Receiver receiver;
  auto listener = tcpListener(receiver);
  std::list<Peer> peers = connectPeers(20);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 20));
  listener.reset();
  for (Peer& peer : peers) {
    EXPECT_TRUE(peer.seesEnd());
  }
}

TEST_F(Closing, IsSafeAtAnyMomentOfTheThreadsStart) {
  Receiver receiver;
  for (int i = 0; i < 100; ++i) {
    NetworkConnection listener("tcp", "", "", 0, &receiver, Zelv::Adapter::TCPListener);
    ASSERT_TRUE(listener.createTCPListener());
    ASSERT_NE(0, listener.Create("listener", 4096));
    listener.closeConnection();
  }
  for (int i = 0; i < 100; ++i) {
    auto const reader = udpReader(receiver);
    reader->closeConnection();
  }
  EXPECT_THAT(receiver.messages(), IsEmpty());
}

TEST_F(Closing, IsFinishedOnlyWhenItsConnectionsAre) {
  std::binary_semaphore mayGoOn{0};
  Receiver receiver([&](std::string const&) { mayGoOn.acquire(); });
  auto const listener = tcpListener(receiver);
  Peer peer = Peer::connectedTo(mPort);
  ASSERT_TRUE(peer.send("text\n"));
  ASSERT_TRUE(receiver.waitFor(1));
  listener->closeConnection();
  listener->Destroy();
  EXPECT_FALSE(listener->isFinished());
  mayGoOn.release();
}

// Addresses

struct AddressCase {
  char const* text;
  bool multicast;
};

class MulticastAddress : public testing::TestWithParam<AddressCase> {};

TEST_P(MulticastAddress, IsToldByItsText) {
  EXPECT_EQ(GetParam().multicast, NetworkConnection::isMulticastAddress(GetParam().text))
      << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MulticastAddress,
    testing::Values(AddressCase{"224.0.0.0", true}, AddressCase{"239.255.255.250", true},
                    AddressCase{"239.255.255.255", true}, AddressCase{"223.255.255.255", false},
                    AddressCase{"240.0.0.0", false}, AddressCase{"230.1.2", false},
                    AddressCase{"230", false}, AddressCase{"", false},
                    AddressCase{"230.1.2.256", false}, AddressCase{"230.256.2.3", false},
                    AddressCase{"230.1.256.3", false}, AddressCase{"230.1.2.-1", false},
                    AddressCase{"192.0.2.7", false}, AddressCase{"230.1.2.3x", true},
                    AddressCase{"230...", true}, AddressCase{"localhost", false}));

}  // namespace
