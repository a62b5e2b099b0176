#include "zelv/adapter/NetworkAdapter.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <list>
#include <memory>
#include <semaphore>
#include <thread>
#include <vector>

#include "zelv/adapter/testing/NetworkTest.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace {

using testing::ElementsAre;
using Zelv::Adapter::NetworkAdapter;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::URL;
using Zelv::Platform::Fake::FakeThreads;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;
using Zelv::Testing::Peer;
using Zelv::Testing::Receiver;

class Adapter : public Zelv::Testing::NetworkTest {
 protected:
  Adapter() : mAdapter(NetworkAdapter::getInstance()) {}
  ~Adapter() override { mAdapter.reset(); }

  URL url(char const* aProtocol) {
    mPort = Peer::freePort(std::string(aProtocol) == "tcp" ? Peer::Stream : Peer::Datagram);
    return again(aProtocol);
  }

  /// The same port once more.
  URL again(char const* aProtocol, char const* aPath = "") const {
    return URL(aProtocol, "127.0.0.1", std::to_string(mPort), aPath);
  }

  Receiver mReceiver;
  std::unique_ptr<NetworkAdapter> mAdapter;
};

TEST_F(Adapter, IsOneUntilItIsDeleted) {
  EXPECT_EQ(mAdapter.get(), NetworkAdapter::getInstance());
  LogCapture const log;
  mAdapter.reset();
  EXPECT_THAT(log,
              Logged(PCRealDebug::Trace,
                     "NetworkAdapter::~NetworkAdapter: Setting the Network Adapter Instance to "
                     "NULL."));
  mAdapter.reset(NetworkAdapter::getInstance());
  EXPECT_NE(GUID::nullGUID, mAdapter->registerService(url("tcp"), &mReceiver, ""));
}

TEST_F(Adapter, ListensAndSendsOverTCP) {
  URL const there = url("tcp");
  GUID const handle = mAdapter->registerService(there, &mReceiver, "");
  EXPECT_NE(GUID::nullGUID, handle);
  GUID const sent = mAdapter->send(there, "<a/>", "", 3);
  EXPECT_NE(GUID::nullGUID, sent);
  EXPECT_NE(handle, sent);
  ASSERT_TRUE(mReceiver.waitFor(1));
  EXPECT_THAT(mReceiver.messages(), ElementsAre("<a/>\n"));
}

TEST_F(Adapter, ListensAndSendsOverUDPAsOftenAsTold) {
  URL const there = url("udp");
  EXPECT_NE(GUID::nullGUID, mAdapter->registerService(there, &mReceiver, ""));
  EXPECT_NE(GUID::nullGUID, mAdapter->send(there, "<a/>", "", 3));
  ASSERT_TRUE(mReceiver.waitFor(3));
  EXPECT_THAT(mReceiver.messages(), ElementsAre("<a/>\n", "<a/>\n", "<a/>\n"));
}

TEST_F(Adapter, ServesAUrlOnceAndLeavesTheFirstAsItIs) {
  Receiver other;
  ASSERT_NE(GUID::nullGUID, mAdapter->registerService(url("tcp"), &mReceiver, ""));
  LogCapture const log;
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(again("tcp"), &other, ""));
  EXPECT_EQ(0, log.count(PCRealDebug::Error) + log.count(PCRealDebug::Warning)) << log.dump();
  EXPECT_EQ("\n", exchange("text\n"));
  EXPECT_TRUE(mReceiver.waitFor(1));
}

TEST_F(Adapter, CountsAUrlWithAndWithoutAFinalSlashAsTheSame) {
  url("tcp");
  std::string const text = "tcp://127.0.0.1:" + std::to_string(mPort);
  EXPECT_NE(GUID::nullGUID, mAdapter->registerService(URL(text), &mReceiver, ""));
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(URL(text + "/"), &mReceiver, ""));
}

TEST_F(Adapter, DoesNotListenAtAPortThatIsTaken) {
  ASSERT_NE(GUID::nullGUID, mAdapter->registerService(url("tcp"), &mReceiver, ""));
  LogCapture const log;
  // Another key, so that it comes to binding.
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(again("tcp", "path"), &mReceiver, ""));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkConnection::createTCPListener: Failed to BIND TCP socket, "
                          "errno=Address already in use."));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkAdapter::spawnMessageListener: createTCPListener failed."));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkAdapter::registerService: Unable to spawnMessageListener!!"));
}

TEST_F(Adapter, MayBeAskedAgainForAUrlThatCouldNotBeServed) {
  URL const there = url("tcp");
  FakeSockets::FailNext(FakeSockets::Listen, EADDRINUSE);
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(there, &mReceiver, ""));
  EXPECT_NE(GUID::nullGUID, mAdapter->registerService(there, &mReceiver, ""));
}

TEST_F(Adapter, StopsListeningWhenTold) {
  GUID const handle = mAdapter->registerService(url("tcp"), &mReceiver, "");
  mAdapter->unregisterService(handle);
  EXPECT_EQ(GUID::nullGUID, mAdapter->send(again("tcp"), "text", "", 1));
}

TEST_F(Adapter, ListensAgainAtAUrlThatWasGivenUp) {
  URL const there = url("tcp");
  for (int i = 0; i < 50; ++i) {
    GUID const handle = mAdapter->registerService(there, &mReceiver, "");
    ASSERT_NE(GUID::nullGUID, handle) << i;
    ASSERT_NE(GUID::nullGUID, mAdapter->send(there, "text", "", 1)) << i;
    mAdapter->unregisterService(handle);
  }
  EXPECT_TRUE(mReceiver.waitFor(50));
}

TEST_F(Adapter, ChangesNothingForAHandleThatIsUnknown) {
  GUID const handle = mAdapter->registerService(url("tcp"), &mReceiver, "");
  LogCapture const log;
  mAdapter->unregisterService(GUID::createGUID());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "NetworkAdapter::unregisterService: Registration not found!"));
  EXPECT_NE(GUID::nullGUID, mAdapter->send(again("tcp"), "text", "", 1));
  mAdapter->unregisterService(handle);
  mAdapter->unregisterService(handle);
  EXPECT_EQ(2, log.count(PCRealDebug::Warning,
                         "NetworkAdapter::unregisterService: Registration not found!"));
}

TEST_F(Adapter, TellsWhenNobodyListensOverTCPButNotOverUDP) {
  EXPECT_EQ(GUID::nullGUID, mAdapter->send(url("tcp"), "text", "", 1));
  EXPECT_NE(GUID::nullGUID, mAdapter->send(url("udp"), "text", "", 1));
}

TEST_F(Adapter, GivesANewIdentifierForEachMessage) {
  URL const there = url("udp");
  EXPECT_NE(mAdapter->send(there, "text", "", 1), mAdapter->send(there, "text", "", 1));
}

TEST_F(Adapter, KnowsNoOtherProtocol) {
  LogCapture const log;
  url("tcp");
  EXPECT_EQ(GUID::nullGUID, mAdapter->send(again("http"), "text", "", 1));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkAdapter::send: Not a valid Transport Protocol "
                          "!!."));
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(again("http"), &mReceiver, ""));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkAdapter::spawnMessageListener: TCP / UDP flag not set!!!."));
}

TEST_F(Adapter, TellsOfTheListenersThatItMakes) {
  LogCapture const log;
  mAdapter->registerService(url("tcp"), &mReceiver, "127.0.0.1");
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "NetworkAdapter::spawnMessageListener: Local Interface IP found = "
                          "127.0.0.1."));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "NetworkAdapter::spawnMessageListener: Created a new tcp listener "
                          "connection."));
  mAdapter->registerService(url("udp"), &mReceiver, "");
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "NetworkAdapter::spawnMessageListener: Created a new udp handler "
                          "connection."));
  EXPECT_EQ(1, log.countContaining(PCRealDebug::Trace, "Local Interface IP found"));
}

TEST_F(Adapter, TellsOfTheInterfaceThatItSendsOn) {
  LogCapture const log;
  mAdapter->send(url("udp"), "text", "127.0.0.1", 1);
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "NetworkAdapter::send: Local Interface IP found = 127.0.0.1."));
}

TEST_F(Adapter, DoesNotListenAtPortZeroOverUDP) {
  LogCapture const log;
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(URL("udp://x:port/"), &mReceiver, ""));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkAdapter::spawnMessageListener: createUDPHandler failed."));
}

TEST_F(Adapter, DoesNotListenWithoutAThread) {
  LogCapture const log;
  FakeThreads::FailNext(1);
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(url("tcp"), &mReceiver, ""));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "NetworkAdapter::spawnMessageListener: Failed to create Listener "
                          "thread."));
  EXPECT_FALSE(Peer(Peer::Stream).connect(mPort));
  EXPECT_NE(GUID::nullGUID, mAdapter->registerService(again("tcp"), &mReceiver, ""));
}

TEST_F(Adapter, ClosesWhatItsOwnersLeftBehind) {
  URL const there = url("tcp");
  GUID const handle = mAdapter->registerService(there, &mReceiver, "");
  LogCapture const log;
  mAdapter->terminate();
  EXPECT_THAT(log, Logged(PCRealDebug::Trace,
                          "NetworkAdapter::terminate: Found a dangling URL Registration '" +
                              there.toString() + "'. !!!!"));
  EXPECT_EQ(GUID::nullGUID, mAdapter->send(there, "text", "", 1));
  // The handle is known no more, while the URL stays taken.
  mAdapter->unregisterService(handle);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "NetworkAdapter::unregisterService: Registration not found!"));
  EXPECT_EQ(GUID::nullGUID, mAdapter->registerService(there, &mReceiver, ""));
  log.lines();
  mAdapter->terminate();
  EXPECT_EQ(1, log.countContaining(PCRealDebug::Trace, "dangling"));
}

TEST_F(Adapter, FindsNothingDanglingThatWasGivenUp) {
  LogCapture const log;
  mAdapter->unregisterService(mAdapter->registerService(url("tcp"), &mReceiver, ""));
  mAdapter->terminate();
  EXPECT_EQ(0, log.countContaining(PCRealDebug::Trace, "dangling"));
}

TEST_F(Adapter, WaitsForEachListenerAtItsEnd) {
  LogCapture const log;
  mAdapter->registerService(url("tcp"), &mReceiver, "");
  mAdapter->registerService(url("udp"), &mReceiver, "");
  mAdapter->terminate();
  mAdapter.reset();
  EXPECT_EQ(
      2, log.countContaining(PCRealDebug::Trace,
                             "NetworkAdapter::~NetworkAdapter: Waiting for a join on threadID = "));
}

TEST_F(Adapter, EndsThoughNobodyTerminatedIt) {
  mAdapter->registerService(url("tcp"), &mReceiver, "");
  ASSERT_TRUE(comesTo(FakeSockets::Accept, 1));
  std::list<Peer> silent = connectPeers(10);
  ASSERT_TRUE(comesTo(FakeSockets::Receive, 10));
  mAdapter.reset();
  EXPECT_TRUE(silent.front().seesEnd());
}

TEST_F(Adapter, LetsAReceiverRegisterAndSendFromWithinAMessage) {
  URL const second = url("udp");
  GUID made(GUID::nullGUID);
  Receiver inner;
  Receiver outer([&](std::string const&) {
    made = mAdapter->registerService(second, &inner, "");
    mAdapter->send(second, "inner", "", 1);
  });
  mAdapter->registerService(url("tcp"), &outer, "");
  exchange("outer\n");
  EXPECT_TRUE(inner.waitFor(1));
  mAdapter->terminate();
  mAdapter.reset();
  EXPECT_NE(GUID::nullGUID, made);
}

TEST_F(Adapter, LetsAReceiverGiveUpItsOwnServiceFromWithinAMessage) {
  GUID handle(GUID::nullGUID);
  std::binary_semaphore known{0};
  std::binary_semaphore done{0};
  Receiver receiver([&](std::string const&) {
    known.acquire();
    mAdapter->unregisterService(handle);
    done.release();
  });
  handle = mAdapter->registerService(url("udp"), &receiver, "");
  ASSERT_TRUE(Peer(Peer::Datagram).sendTo(mPort, "text"));
  known.release();
  ASSERT_TRUE(done.try_acquire_for(std::chrono::seconds(20)));
  mAdapter.reset();
}

TEST_F(Adapter, ServesAndSendsOnManyThreadsAtATime) {
  URL const there = url("tcp");
  mAdapter->registerService(there, &mReceiver, "");
  std::vector<std::thread> threads;
  std::atomic<int> failed{0};
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      URL const own("udp://127.0.0.1:" + std::to_string(mPort + 1 + i) + "/");
      for (int turn = 0; turn < 50; ++turn) {
        failed += mAdapter->send(there, "text", "", 1) == GUID::nullGUID ? 1 : 0;
        GUID const handle = mAdapter->registerService(own, &mReceiver, "");
        mAdapter->unregisterService(handle);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(0, failed);
  EXPECT_TRUE(mReceiver.waitFor(200));
}

}  // namespace
