#include "zelv/adapter/SendCancel.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <semaphore>
#include <thread>
#include <vector>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/testing/NetworkTest.h"
#include "zelv/platform/CCmSocket.h"

namespace {

using Zelv::Adapter::NetworkAdapter;
using Zelv::Adapter::SendCancel;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::URL;
using Zelv::Testing::Peer;
using Zelv::Testing::Receiver;

/// Sends and cancels. Not cancelled, each of these sends would take 3 seconds, so that a number of
/// them together takes longer than any of them may.
class Cancel : public Zelv::Testing::NetworkTest {
 protected:
  static constexpr int cTurns = 10;

  Cancel() : mAdapter(NetworkAdapter::getInstance()) {
    mPort = Peer::freePort(Peer::Stream);
    mStart = std::chrono::steady_clock::now();
  }

  URL there(char const* aProtocol = "tcp") const {
    return URL(aProtocol, "127.0.0.1", std::to_string(mPort), "");
  }

  GUID send(SendCancel& aCancel, std::string const& aText = "text") {
    return mAdapter->send(there(), aText, "", 1, aCancel);
  }

  bool inTime() const {
    return std::chrono::steady_clock::now() - mStart < std::chrono::seconds(3 * cTurns / 2);
  }

  std::unique_ptr<NetworkAdapter> mAdapter;
  std::chrono::steady_clock::time_point mStart;
};

TEST_F(Cancel, ChangesNothingWhileNobodyCancels) {
  Receiver receiver;
  Connection const listener = tcpListener(receiver);
  SendCancel cancel;
  EXPECT_NE(GUID::nullGUID, send(cancel, "<a/>"));
  ASSERT_TRUE(receiver.waitFor(1));
  EXPECT_EQ("<a/>\n", receiver.messages().front());
  EXPECT_FALSE(cancel.isCancelled());
}

TEST_F(Cancel, EndsConnectingAtOnce) {
  // With room for one waiting connection, which is taken, the kernel answers nobody else.
  Peer listener(Peer::Stream);
  ASSERT_TRUE(listener.listen(mPort, 0));
  Peer const first = Peer::connectedTo(mPort);
  for (int turn = 0; turn < cTurns; ++turn) {
    int const before = FakeSockets::Count(FakeSockets::Connect);
    SendCancel cancel;
    GUID result = GUID::createGUID();
    std::thread sender([&] { result = send(cancel); });
    EXPECT_TRUE(comesTo(FakeSockets::Connect, before + 1));
    cancel.cancel();
    sender.join();
    EXPECT_EQ(GUID::nullGUID, result);
  }
  EXPECT_TRUE(inTime());
}

TEST_F(Cancel, EndsTheWaitForTheAcknowledgementAtOnce) {
  Peer listener(Peer::Stream);
  ASSERT_TRUE(listener.listen(mPort));
  for (int turn = 0; turn < cTurns; ++turn) {
    SendCancel cancel;
    GUID result = GUID::createGUID();
    std::thread sender([&] { result = send(cancel); });
    Peer silent = listener.accept();
    EXPECT_EQ("text\n", silent.receive());
    cancel.cancel();
    sender.join();
    EXPECT_EQ(GUID::nullGUID, result);
  }
  EXPECT_TRUE(inTime());
}

TEST_F(Cancel, EndsWritingAtOnce) {
  Peer listener(Peer::Stream);
  ASSERT_TRUE(listener.listen(mPort));
  std::string const more(32 * 1024 * 1024, 'x');  // than the kernel takes without a reader
  for (int turn = 0; turn < cTurns; ++turn) {
    int const before = FakeSockets::Count(FakeSockets::Send);
    SendCancel cancel;
    GUID result = GUID::createGUID();
    std::thread sender([&] { result = send(cancel, more); });
    Peer const silent = listener.accept();
    EXPECT_TRUE(comesTo(FakeSockets::Send, before + 1));
    cancel.cancel();
    sender.join();
    EXPECT_EQ(GUID::nullGUID, result);
  }
  EXPECT_TRUE(inTime());
}

TEST_F(Cancel, LetsLaterSendsFailWithoutASocket) {
  Receiver receiver;
  Connection const listener = tcpListener(receiver);
  SendCancel cancel;
  cancel.cancel();
  cancel.cancel();
  EXPECT_TRUE(cancel.isCancelled());
  int const opened = FakeSockets::Count(FakeSockets::Open);
  EXPECT_EQ(GUID::nullGUID, send(cancel));
  EXPECT_EQ(GUID::nullGUID, mAdapter->send(there("udp"), "text", "", 1, cancel));
  EXPECT_EQ(opened, FakeSockets::Count(FakeSockets::Open));
  EXPECT_NE(GUID::nullGUID, mAdapter->send(there(), "text", "", 1)) << "that of somebody else";
}

TEST_F(Cancel, EndsAllSendsThatItWasHandedTo) {
  Peer listener(Peer::Stream);
  ASSERT_TRUE(listener.listen(mPort));
  SendCancel cancel;
  std::vector<std::thread> senders;
  std::vector<Peer> silent;
  for (int i = 0; i < cTurns; ++i) {
    senders.emplace_back([&] { EXPECT_EQ(GUID::nullGUID, send(cancel)); });
    silent.push_back(listener.accept());
  }
  cancel.cancel();
  for (std::thread& sender : senders) {
    sender.join();
  }
  EXPECT_TRUE(inTime());
}

TEST_F(Cancel, IsSafeAtAnyMomentOfASend) {
  Receiver receiver;
  Connection const listener = tcpListener(receiver);
  for (int turn = 0; turn < 300; ++turn) {
    SendCancel cancel;
    std::binary_semaphore start{0};
    std::thread canceller([&] {
      start.acquire();
      for (int i = 0; i < turn * 20; ++i) {
        std::atomic_signal_fence(std::memory_order_seq_cst);
      }
      cancel.cancel();
    });
    start.release();
    send(cancel);
    canceller.join();
    EXPECT_EQ(GUID::nullGUID, send(cancel));
  }
  EXPECT_NE(GUID::nullGUID, mAdapter->send(there(), "last", "", 1));
}

TEST_F(Cancel, EndsInTheSocketThatWasOpenedMeanwhile) {
  SendCancel cancel;
  cancel.cancel();
  Zelv::Adapter::NetworkConnection connection("tcp", "127.0.0.1", "", mPort, nullptr,
                                              Zelv::Adapter::OutgoingConnection);
  Zelv::Platform::Fake::LogCapture const log;
  SendCancel::Scope const scope(cancel, connection);
  EXPECT_FALSE(connection.createTCPConnection());
  EXPECT_EQ(0, FakeSockets::Count(FakeSockets::Connect));
  EXPECT_TRUE(log.has(PCRealDebug::Error,
                      "NetworkConnection::createTCPConnection: Failed to connect to TCP server, "
                      "errno=Operation canceled."));
}

}  // namespace
