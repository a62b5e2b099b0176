// Strangers that misbehave on the wire, against a listener of the adapter: a well-behaved peer is
// answered all the while, everything comes back, and the end comes in time.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "zelv/adapter/IncomingText.h"
#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/NetworkConnection.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/linux/ProcessProbe.h"

namespace {

using Zelv::Adapter::IncomingText;
using Zelv::Adapter::NetworkAdapter;
using Zelv::Adapter::NetworkConnection;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::URL;
using Zelv::Platform::Testing::ProcessProbe;
using Clock = std::chrono::steady_clock;

/// Keeps the last message, and counts.
class Service final : public Zelv::NetworkMessageCallback {
 public:
  void onMessage(std::string const& aMessage, std::string const&) override {
    std::lock_guard lock(mLock);
    ++mCount;
    mLast = aMessage;
    mChanged.notify_all();
  }

  bool waitFor(int aCount) {
    return waitUntil([&] { return mCount >= aCount; });
  }

  bool waitForText(std::string const& aText) {
    return waitUntil([&] { return mLast == aText; });
  }

  int count() {
    std::lock_guard lock(mLock);
    return mCount;
  }

 private:
  template <typename Condition>
  bool waitUntil(Condition aCondition) {
    std::unique_lock lock(mLock);
    return mChanged.wait_for(lock, std::chrono::seconds(20), aCondition);
  }

  std::mutex mLock;
  std::condition_variable mChanged;
  int mCount = 0;
  std::string mLast;
};

/// One stranger's socket.
class Stranger {
 public:
  Stranger(int aType, int aPort) : mSocket(::socket(AF_INET, aType | SOCK_CLOEXEC, 0)) {
    mAddress.sin_family = AF_INET;
    mAddress.sin_port = htons(static_cast<std::uint16_t>(aPort));
    mAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    timeval const patience{20, 0};
    ::setsockopt(mSocket, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    ::setsockopt(mSocket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  Stranger(Stranger const&) = delete;
  Stranger& operator=(Stranger const&) = delete;
  ~Stranger() { ::close(mSocket); }

  bool connect() {
    return ::connect(mSocket, reinterpret_cast<sockaddr const*>(&mAddress), sizeof mAddress) == 0;
  }

  bool send(std::string const& aText) {
    return ::send(mSocket, aText.data(), aText.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(aText.size());
  }

  /// Sends pieces until the other end has had enough. @return whether it had, before aMost pieces.
  bool sendsUntilClosed(std::string const& aPiece, int aMost) {
    for (int i = 0; i < aMost; ++i) {
      if (!send(aPiece)) {
        return true;
      }
    }
    return false;
  }

  void sendDatagram(std::string const& aText) {
    ::sendto(mSocket, aText.data(), aText.size(), 0, reinterpret_cast<sockaddr const*>(&mAddress),
             sizeof mAddress);
  }

  std::string receive() {
    char buffer[64];
    ssize_t const size = ::recv(mSocket, buffer, sizeof buffer, 0);
    return std::string(buffer, size > 0 ? static_cast<std::size_t>(size) : 0);
  }

 private:
  int mSocket;
  sockaddr_in mAddress{};
};

std::size_t heap() {
  auto const info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
}

class HostileTransport : public testing::Test {
 protected:
  HostileTransport() {
    allowDescriptors();
    // Else the allocator reserves 64 MiB of addresses for each of the first threads that meet in
    // it, and no thread's stack could be told from that. No other thread runs yet.
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    ::mallopt(M_ARENA_MAX, 1);
    PCRealDebug::Silence();
    PCThread::ReleaseParked();
    mThreads = ProcessProbe::threads();
    mDescriptors = ProcessProbe::descriptors();
    mAdapter = NetworkAdapter::getInstance();
    mTcpPort = serve("tcp", SOCK_STREAM);
    mUdpPort = serve("udp", SOCK_DGRAM);
  }

  ~HostileTransport() override {
    end();
    PCRealDebug::SetLevel(PCRealDebug::Warning);
  }

  static void allowDescriptors() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 8192);
    ::setrlimit(RLIMIT_NOFILE, &limit);
  }

  int serve(std::string const& aProtocol, int aType) {
    std::mt19937 random{std::random_device{}()};
    for (int i = 0; i < 1000; ++i) {
      int const port = 20000 + static_cast<int>(random() % 12000);
      URL const url(aProtocol, "127.0.0.1", std::to_string(port), "");
      if (isFree(aType, port) && mAdapter->registerService(url, &mService, "") != GUID::nullGUID) {
        return port;
      }
    }
    ADD_FAILURE() << "no free port";
    return 0;
  }

  static bool isFree(int aType, int aPort) {
    int const probe = ::socket(AF_INET, aType, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(aPort));
    bool const free =
        ::bind(probe, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
    ::close(probe);
    return free;
  }

  /// What a peer does that tries three times, as sets do: the listener keeps two waiting, so that
  /// in a crowd the first attempt may have to be repeated.
  bool wellBehavedPeerIsServed() {
    std::string const text = "message " + std::to_string(++mNumber);
    URL const url("tcp", "127.0.0.1", std::to_string(mTcpPort), "");
    for (int attempt = 0; attempt < 3; ++attempt) {
      if (mAdapter->send(url, text, "", 1) != GUID::nullGUID) {
        return mService.waitForText(text + "\n");
      }
    }
    return false;
  }

  using Crowd = std::vector<std::unique_ptr<Stranger>>;

  /// Strangers that have connected. A message after every second one shows that they have been
  /// accepted, since those who wait are served in order: were the listener's short queue full, the
  /// kernel would let the next one try again only after a second.
  Crowd crowd(int aCount) {
    Crowd strangers;
    for (int i = 0; i < aCount; ++i) {
      strangers.push_back(std::make_unique<Stranger>(SOCK_STREAM, mTcpPort));
      EXPECT_TRUE(strangers.back()->connect()) << i;
      if (i % 2 == 1) {
        EXPECT_TRUE(wellBehavedPeerIsServed()) << i;
      }
    }
    return strangers;
  }

  bool datagramArrives() {
    std::string const text = "datagram " + std::to_string(++mNumber);
    Stranger peer(SOCK_DGRAM, mUdpPort);
    for (int attempt = 0; attempt < 100; ++attempt) {
      int const before = mService.count();
      peer.sendDatagram(text);
      if (mService.waitFor(before + 1) && mService.waitForText(text)) {
        return true;
      }
    }
    return false;
  }

  /// Ends the service. @return whether that took less than 5 seconds.
  bool end() {
    auto const begin = Clock::now();
    if (mAdapter != nullptr) {
      mAdapter->terminate();
      delete mAdapter;
      mAdapter = nullptr;
    }
    return Clock::now() - begin < std::chrono::seconds(5);
  }

  /// After the end: whether all threads and descriptors are back.
  bool allIsBack() {
    PCThread::ReleaseParked();
    return ProcessProbe::comesToThreads(mThreads) && ProcessProbe::descriptors() == mDescriptors &&
           IncomingText::inFlight() == 0;
  }

  int mThreads = 0;
  int mDescriptors = 0;
  NetworkAdapter* mAdapter = nullptr;
  Service mService;
  int mTcpPort = 0;
  int mUdpPort = 0;
  int mNumber = 0;
};

TEST_F(HostileTransport, TwoThousandSilentConnectionsKeepNobodyOut) {
  Crowd strangers = crowd(2000);
  int const most = static_cast<int>(NetworkConnection::MaxChildren);
  EXPECT_LE(ProcessProbe::threads(), mThreads + most + 20);
  EXPECT_TRUE(wellBehavedPeerIsServed());
  EXPECT_TRUE(end());
  strangers.clear();
  EXPECT_TRUE(allIsBack());
}

TEST_F(HostileTransport, OneByteAtATimeIsWaitedForAndPutTogether) {
  Crowd strangers = crowd(10);
  for (int turn = 0; turn < 200; ++turn) {
    for (auto const& stranger : strangers) {
      ASSERT_TRUE(stranger->send("x"));
    }
    if (turn % 20 == 0) {
      EXPECT_TRUE(wellBehavedPeerIsServed());
    }
  }
  int const before = mService.count();
  for (auto const& stranger : strangers) {
    ASSERT_TRUE(stranger->send("\n"));
    EXPECT_EQ("\n", stranger->receive());
  }
  EXPECT_TRUE(mService.waitFor(before + 10));
  EXPECT_TRUE(mService.waitForText(std::string(200, 'x') + "\n"));
  EXPECT_TRUE(end());
  strangers.clear();
  EXPECT_TRUE(allIsBack());
}

TEST_F(HostileTransport, MessagesWithoutEndAreCutOff) {
  std::size_t const before = heap();
  std::vector<std::thread> threads;
  std::atomic<int> closed{0};
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([&] {
      Stranger stranger(SOCK_STREAM, mTcpPort);
      std::string const piece(1U << 20, 'x');
      closed += stranger.connect() && stranger.sendsUntilClosed(piece, 64) ? 1 : 0;
    });
  }
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(wellBehavedPeerIsServed());
    EXPECT_LE(IncomingText::inFlight(), IncomingText::MaxInFlight);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(6, closed);
  EXPECT_TRUE(wellBehavedPeerIsServed());
  EXPECT_TRUE(end());
  EXPECT_TRUE(allIsBack());
  EXPECT_LT(heap(), before + (1U << 20));
}

TEST_F(HostileTransport, NulBytesWithoutEndHoldNoMemory) {
  Stranger stranger(SOCK_STREAM, mTcpPort);
  ASSERT_TRUE(stranger.connect());
  std::string const nuls(1U << 20, '\0');
  for (int i = 0; i < 40; ++i) {
    ASSERT_TRUE(stranger.send(nuls));
    EXPECT_LT(IncomingText::inFlight(), 1U << 20);
  }
  EXPECT_TRUE(wellBehavedPeerIsServed());
  ASSERT_TRUE(stranger.send("\n"));
  EXPECT_EQ("\n", stranger.receive());
  // The line end came in a read of its own, or in the last one with NUL bytes in front.
  EXPECT_TRUE(mService.waitFor(2));
  EXPECT_TRUE(end());
}

TEST_F(HostileTransport, AMegabyteWithoutALineEndIsDroppedWhenItsSenderGoes) {
  int const before = mService.count();
  for (int i = 0; i < 10; ++i) {
    Stranger stranger(SOCK_STREAM, mTcpPort);
    ASSERT_TRUE(stranger.connect());
    ASSERT_TRUE(stranger.send(std::string(1000000, 'x')));
  }
  EXPECT_TRUE(wellBehavedPeerIsServed());
  EXPECT_EQ(before + 1, mService.count());
  EXPECT_TRUE(end());
  EXPECT_TRUE(allIsBack());
}

TEST_F(HostileTransport, ConnectionsThatGoAtOnceLeaveNothing) {
  for (int i = 0; i < 100; ++i) {
    crowd(2).clear();
  }
  EXPECT_TRUE(end());
  EXPECT_TRUE(allIsBack());
}

/// More in the long form, tests/long/messages.
int messagesInARow() {
  // Nobody changes the environment of a test.
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  char const* const text = std::getenv("ZELV_TEST_MESSAGES");
  return text == nullptr ? 20000 : std::atoi(text);
}

TEST_F(HostileTransport, ThousandsOfMessagesLeaveMemoryThreadsAndDescriptorsFlat) {
  URL const url("tcp", "127.0.0.1", std::to_string(mTcpPort), "");
  std::string const text(600, 'x');
  int failed = 0;
  auto const send = [&](int aCount) {
    int const before = mService.count();
    for (int i = 0; i < aCount; ++i) {
      failed += mAdapter->send(url, text, "", 1) == GUID::nullGUID ? 1 : 0;
    }
    EXPECT_TRUE(mService.waitFor(before + aCount));
  };
  send(1000);
  int const threads = ProcessProbe::threads();
  int const descriptors = ProcessProbe::descriptors();
  std::size_t const memory = heap();
  long const space = ProcessProbe::addressSpace();
  send(messagesInARow());
  EXPECT_EQ(0, failed);
  EXPECT_LE(ProcessProbe::threads(), threads + 10);
  EXPECT_LE(ProcessProbe::descriptors(), descriptors + 5);
  EXPECT_LT(heap(), memory + (1U << 18));
  EXPECT_LT(ProcessProbe::addressSpace(), space + (64L << 20));
  EXPECT_TRUE(end());
  EXPECT_TRUE(allIsBack());
}

TEST_F(HostileTransport, RandomAndEmptyDatagramsAtFullSpeedDoNotEndTheReader) {
  std::mt19937 random{7};
  {
    Stranger stranger(SOCK_DGRAM, mUdpPort);
    for (int i = 0; i < 20000; ++i) {
      std::string text(random() % 4 == 0 ? 0 : random() % 5000, '\0');
      std::generate(text.begin(), text.end(), [&] { return static_cast<char>(random()); });
      stranger.sendDatagram(text);
    }
  }
  EXPECT_TRUE(datagramArrives());
  EXPECT_TRUE(end());
  EXPECT_TRUE(allIsBack());
}

}  // namespace
