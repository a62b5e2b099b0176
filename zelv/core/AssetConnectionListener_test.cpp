#include "zelv/core/AssetConnectionListener.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>

#include "zelv/core/AssetRequestHandler.h"
#include "zelv/core/testing/AssetPortTest.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::FakeThreads;
using Platform::Fake::Logged;
using Testing::AssetPortTest;
using Testing::Peer;

constexpr char const* cTooMany =
    "AssetConnectionListener::startConnectionListener: Too many connections, closed the one idle "
    "for longest of 256.";

class AssetConnectionListenerTest : public AssetPortTest {
 protected:
  /// Waits until that many connections have been accepted since the start of the test, and one more
  /// is waited for: the system keeps no more than a few waiting, and lets a client too many try
  /// again after a second.
  static bool accepted(int aCount) {
    return comesTo([&] { return FakeSockets::Count(FakeSockets::Accept) > aCount; });
  }

  static std::size_t threadsOfConnections() {
    std::vector<std::string> const running = PCThread::Running();
    return static_cast<std::size_t>(
        std::count(running.begin(), running.end(), cThreadOfConnection));
  }

  void expectServed() {
    std::string const response = exchange(post(cEnvelope));
    EXPECT_EQ(response, answer(response)) << log.dump();
  }
};

// Opening

TEST_F(AssetConnectionListenerTest, NeedsAProvider) {
  AssetConnectionListener listener;
  EXPECT_FALSE(listener.initialize(nullptr));
}

TEST_F(AssetConnectionListenerTest, ListensAtAllAddressesOfItsPort) {
  auto const listener = listen();
  Peer peer(Peer::Stream);
  SocketCommon::SockAddr address = Peer::loopback(4450);
  address.mAddress = CCmSocket::StringToNumeric("127.0.0.2");
  EXPECT_FALSE(Peer(Peer::Stream).bind(4450));
  expectServed();
}

TEST_F(AssetConnectionListenerTest, AllowsItsAddressToBeTakenAnew) {
  listen();
  std::int32_t const one = 1;
  EXPECT_THAT(FakeSockets::TakeOptions(),
              ::testing::Contains(Platform::Fake::SocketOption{
                  1, 2, std::string(reinterpret_cast<char const*>(&one), sizeof one)}));
}

TEST_F(AssetConnectionListenerTest, TellsWhichStepOfOpeningFailed) {
  struct {
    void (*fail)();
    char const* text;
  } const cases[] = {
      {[] { FakeSockets::FailNext(FakeSockets::Open, EMFILE); },
       "AssetConnectionListener::initializeListener: Failed to create socket."},
      {[] { FakeSockets::FailOption(1, 2, EINVAL); },
       "AssetConnectionListener::initializeListener: Failed to Set REUSEADDR option, "
       "errno=Invalid argument."},
      {[] { FakeSockets::FailNext(FakeSockets::Bind, EADDRINUSE); },
       "AssetConnectionListener::initializeListener: Failed to bind socket, errno=Address already "
       "in use."},
      {[] { FakeSockets::FailNext(FakeSockets::Listen, EADDRINUSE); },
       "AssetConnectionListener::initializeListener: Failed to register listening, errno=Address "
       "already in use."},
  };
  int const before = descriptors();
  for (auto const& one : cases) {
    FakeSockets::Reset();
    log.clear();
    one.fail();
    AssetConnectionListener listener;
    EXPECT_FALSE(listener.initialize(&provider)) << one.text;
    EXPECT_EQ(log.texts(PCRealDebug::Error), std::vector<std::string>{one.text});
    EXPECT_EQ(descriptors(), before) << one.text;
  }
}

// Accepting

class PassingAcceptError : public AssetConnectionListenerTest,
                           public ::testing::WithParamInterface<int> {};

TEST_P(PassingAcceptError, DoesNotEndTheListener) {
  FakeSockets::FailNext(FakeSockets::Accept, GetParam(), 3);
  auto const listener = listen();
  expectServed();
  EXPECT_EQ(
      log.countContaining(PCRealDebug::Error,
                          "AssetConnectionListener::startConnectionListener: Failed to ACCEPT TCP "
                          "connection, errno="),
      3);
}

INSTANTIATE_TEST_SUITE_P(Errors, PassingAcceptError,
                         ::testing::Values(EINTR, ECONNABORTED, EMFILE, ENFILE, ENOMEM, ENOBUFS,
                                           EPROTO, EAGAIN));

class FinalAcceptError : public AssetConnectionListenerTest,
                         public ::testing::WithParamInterface<int> {};

TEST_P(FinalAcceptError, EndsTheListener) {
  int const before = descriptors();
  FakeSockets::FailNext(FakeSockets::Accept, GetParam());
  auto const listener = listen();
  listener->Destroy();
  EXPECT_TRUE(listener->isFinished());
  EXPECT_EQ(descriptors(), before);
}

INSTANTIATE_TEST_SUITE_P(Errors, FinalAcceptError, ::testing::Values(EBADF, EINVAL));

TEST_F(AssetConnectionListenerTest, LogsAnAcceptThatFails) {
  FakeSockets::FailNext(FakeSockets::Accept, EINVAL);
  listen()->Destroy();
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetConnectionListener::startConnectionListener: Failed to ACCEPT TCP "
                          "connection, errno=Invalid argument."));
}

TEST_F(AssetConnectionListenerTest, ClosesAConnectionThatGetsNoTypesOfFiles) {
  directories.putReadOnly("Mime.xml", "no XML");
  auto const listener = listen();
  int const before = descriptors();
  EXPECT_EQ(exchange(post(cEnvelope)), "");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetConnectionListener::startConnectionListener: Invalid values "
                          "passed to initialize Asset Request Handler!!!"));
  EXPECT_TRUE(comesTo([&] { return descriptors() == before; }));
  EXPECT_EQ(listener->connections(), 0U);
}

TEST_F(AssetConnectionListenerTest, ClosesAConnectionThatGetsNoThread) {
  auto const listener = listen();
  int const before = descriptors();
  FakeThreads::FailNext(1);
  EXPECT_EQ(exchange(post(cEnvelope)), "");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetConnectionListener::startConnectionListener: Error creating a new "
                          "thread"));
  EXPECT_TRUE(comesTo([&] { return descriptors() == before; }));
  expectServed();
}

TEST_F(AssetConnectionListenerTest, ServesEachConnectionInAThreadOfItsOwn) {
  auto const listener = listen();
  Peer const first = connect();
  Peer const second = connect();
  EXPECT_TRUE(comesTo([] { return threadsOfConnections() == 2; }));
  expectServed();
}

TEST_F(AssetConnectionListenerTest, ReadsTheTypesOfFilesOnceForAllConnections) {
  auto listener = listen();
  expectServed();
  int const opened = FakeFiles::Count(FakeFiles::Open);
  for (int turn = 0; turn < 10; ++turn) {
    expectServed();
  }
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Open), opened);
  listener.reset();
  listener = listen();
  expectServed();
  EXPECT_GT(FakeFiles::Count(FakeFiles::Open), opened);
}

// Many connections

TEST_F(AssetConnectionListenerTest, ForgetsConnectionsThatAreDone) {
  auto const listener = listen();
  int const before = descriptors();
  for (int turn = 0; turn < 300; ++turn) {
    expectServed();
    ASSERT_TRUE(comesTo([] { return threadsOfConnections() == 0; }));
    ASSERT_LE(listener->connections(), 1U);
  }
  EXPECT_TRUE(comesTo([&] { return descriptors() == before; }));
}

TEST_F(AssetConnectionListenerTest, Serves256ConnectionsAtATime) {
  auto const listener = listen();
  std::deque<Peer> peers;
  for (int count = 1; count <= 256; ++count) {
    peers.push_back(connect());
    ASSERT_TRUE(accepted(count));
  }
  EXPECT_EQ(log.count(PCRealDebug::Warning, cTooMany), 0);
  for (Peer& peer : peers) {
    ASSERT_TRUE(peer.send(post(cEnvelope)));
    std::string const response = peer.receiveAll();
    ASSERT_EQ(response, answer(response));
  }
}

TEST_F(AssetConnectionListenerTest, LetsTheLongestIdleGiveWayToOneTooMany) {
  auto const listener = listen();
  std::deque<Peer> peers;
  for (int count = 1; count <= 256; ++count) {
    peers.push_back(connect());
    ASSERT_TRUE(accepted(count));
    FakeClock::Advance(1000);
  }
  // The first one says something, so that the second is silent for longest.
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) == 256; }));
  ASSERT_TRUE(peers.front().send("GET / HTTP/1.1\r\n"));
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) == 257; }));

  expectServed();
  EXPECT_EQ(peers[1].receiveAll(), "");
  EXPECT_EQ(log.count(PCRealDebug::Warning, cTooMany), 1);
  ASSERT_TRUE(peers.front().send("Host: tv\r\n\r\n"));
  std::string const response = peers.front().receiveAll();
  EXPECT_EQ(response, answer(response));
}

TEST_F(AssetConnectionListenerTest, ServesAClientBesideAThousandThatSendAByteAMinute) {
  std::string const path = file("a.png", bytes(100000));
  provider.reactWith(
      [&](AssetRequestHandler& handler) { handler.sendFiles({object(path)}, true); });
  auto const listener = listen();
  std::deque<Peer> peers;
  for (int count = 1; count <= 1000; ++count) {
    peers.push_back(connect());
    ASSERT_TRUE(accepted(count));
    ASSERT_TRUE(peers.back().send("G"));
    FakeClock::Advance(60);
    if (peers.size() > 300) {
      peers.pop_front();  // this process has only so many descriptors
    }
  }
  EXPECT_LE(listener->connections(), 256U);
  EXPECT_GT(log.count(PCRealDebug::Warning, cTooMany), 600);
  std::string const response = exchange(post(cEnvelope));
  EXPECT_TRUE(response ==
              answer(response, filePart(response, "image/png", "id", bytes(100000), "\r\n\r\n")));
}

TEST_F(AssetConnectionListenerTest, LetsTheLongestIdleGoWhenDescriptorsRunOut) {
  auto const listener = listen();
  Peer idle = connect();
  ASSERT_TRUE(accepted(1));
  FakeSockets::FailNext(FakeSockets::Accept, EMFILE);
  expectServed();  // taken by the accept under way
  expectServed();  // after the one that fails
  EXPECT_EQ(idle.receiveAll(), "");
}

// Closing

TEST_F(AssetConnectionListenerTest, ServesWhoIsThereWhenItStopsAccepting) {
  auto const listener = listen();
  Peer peer = connect();
  ASSERT_TRUE(accepted(1));
  listener->closeConnectionListener();
  listener->Destroy();
  EXPECT_FALSE(listener->isFinished());
  EXPECT_THROW(connect(), std::runtime_error);
  ASSERT_TRUE(peer.send(post(cEnvelope)));
  std::string const response = peer.receiveAll();
  EXPECT_EQ(response, answer(response));
  EXPECT_TRUE(comesTo([&] { return listener->isFinished(); }));
}

TEST_F(AssetConnectionListenerTest, LogsAShutdownThatFails) {
  AssetConnectionListener listener;
  ASSERT_TRUE(listener.initialize(&provider));
  FakeSockets::FailNext(FakeSockets::Shutdown, ENOTCONN);
  listener.closeConnectionListener();
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AssetConnectionListener::closeConnectionListener: Failed to Shutdown "
                          "socket, errno=Transport endpoint is not connected."));
}

TEST_F(AssetConnectionListenerTest, ClosesItsSocketOnce) {
  AssetConnectionListener listener;
  ASSERT_TRUE(listener.initialize(&provider));
  listener.closeConnectionListener();
  // May have the number by now.
  Peer other(Peer::Stream);
  int const closed = FakeSockets::Count(FakeSockets::Close);
  listener.closeConnectionListener();
  EXPECT_EQ(FakeSockets::Count(FakeSockets::Close), closed);
}

TEST_F(AssetConnectionListenerTest, EndsConnectionsWhateverTheyWaitForWhenItGoes) {
  std::string const path = file("a.png", "");
  std::filesystem::resize_file(path, 16U << 20);
  provider.reactWith(
      [&](AssetRequestHandler& handler) { handler.sendFiles({object(path)}, true); });
  int const before = descriptors();
  {
    auto listener = listen();
    Peer const silent = connect();
    Peer half = connect();
    ASSERT_TRUE(half.send("POST / HTTP/1.1\r\n"));
    Peer stalled = connect();
    ASSERT_TRUE(stalled.send(post(cEnvelope)));
    ASSERT_FALSE(stalled.receive().empty());
    ASSERT_TRUE(comesTo([] { return threadsOfConnections() == 3; }));
    listener.reset();
    EXPECT_EQ(half.receiveAll(), "");
  }
  EXPECT_EQ(log.countContaining(PCRealDebug::Trace,
                                "AssetConnectionListener::~AssetConnectionListener: Waiting for a "
                                "join on threadID = "),
            3);
  EXPECT_EQ(descriptors(), before);
  EXPECT_EQ(threadsOfConnections(), 0U);
}

}  // namespace
}  // namespace Zelv
