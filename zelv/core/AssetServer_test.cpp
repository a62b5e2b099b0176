#include "zelv/core/AssetServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/core/AssetRequestHandler.h"
#include "zelv/core/testing/AssetPortTest.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeThreads;
using Platform::Fake::Logged;
using Testing::AssetPortTest;
using Testing::Peer;

constexpr char const* cAddress =
    "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";

/// Notes what is subscribed.
class Subscriptions : public Controller::Testing::FakeCoreData {
 public:
  GUID subscribeData(std::string const& aXPath, ContextInformation const* aContext,
                     IBaseDataCallback* aCallback) override {
    return requestData(aXPath, aContext, aCallback);
  }
};

IBase* findTree(GUID) {
  return Controller::Testing::FakeCoreData::find();
}

IBase* findNothing(GUID) {
  return nullptr;
}

class AssetServerTest : public AssetPortTest {
 protected:
  static constexpr char const* cThread = "Quorl - AssetServer::onData";

  void initialize() { ASSERT_TRUE(server->initialize(&provider, "http://0.0.0.0:4449")); }

  void tellAddress(std::string const& aAddress = "192.0.2.7") {
    tree.answer(tree.requests.at(0), aAddress);
  }

  void expectServed() {
    std::string const response = exchange(post(cEnvelope));
    EXPECT_EQ(response, answer(response)) << log.dump();
  }

  static bool runsListener() {
    std::vector<std::string> const running = PCThread::Running();
    return std::count(running.begin(), running.end(), cThread) == 1;
  }

  Subscriptions tree;
  std::unique_ptr<Core::AssetServer> server = std::make_unique<Core::AssetServer>(findTree);
};

TEST_F(AssetServerTest, NeedsAProvider) {
  EXPECT_FALSE(server->initialize(nullptr, ""));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "AssetServer::initialize: Invalid Asset Provider pointer."));
}

TEST_F(AssetServerTest, NeedsTheTree) {
  Core::AssetServer lost(findNothing);
  EXPECT_FALSE(lost.initialize(&provider, ""));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "AssetServer::initialize: Failed to obtain ICoreData interface."));
}

TEST_F(AssetServerTest, WaitsForTheAddressOfTheSet) {
  initialize();
  ASSERT_EQ(tree.requests.size(), 1U);
  EXPECT_EQ(tree.requests[0].path, cAddress);
  EXPECT_THROW(connect(), std::runtime_error);
  tellAddress();
  EXPECT_THAT(log, Logged(PCRealDebug::Detail, "AssetServer::onData: Local IP='192.0.2.7'"));
  expectServed();
  EXPECT_TRUE(runsListener());
}

TEST_F(AssetServerTest, TakesNoNoticeOfOtherTransactions) {
  initialize();
  server->onData(cAddress, "192.0.2.7", nullptr, GUID::createGUID());
  EXPECT_EQ(log.countContaining(PCRealDebug::Detail, "Local IP"), 0);
  EXPECT_THROW(connect(), std::runtime_error);
}

TEST_F(AssetServerTest, OnlyLogsAStatus) {
  initialize();
  log.clear();
  server->onStatus(StatusInformation(std::exception()), tree.requests[0].id);
  EXPECT_EQ(log.lines().size(), 1U);
  EXPECT_THROW(connect(), std::runtime_error);
}

TEST_F(AssetServerTest, StartsTheListenerAnewWithEachAddress) {
  initialize();
  for (int turn = 0; turn < 50; ++turn) {
    tellAddress("192.0.2." + std::to_string(turn));
    expectServed();
  }
  EXPECT_TRUE(comesTo(runsListener));
}

TEST_F(AssetServerTest, KeepsNothingOfListenersThatWereReplaced) {
  initialize();
  tellAddress();
  expectServed();
  int const before = descriptors();
  for (int turn = 0; turn < 50; ++turn) {
    tellAddress();
    expectServed();
  }
  EXPECT_TRUE(comesTo([&] { return descriptors() == before; }));
}

TEST_F(AssetServerTest, LetsTheClientsOfAReplacedListenerFinish) {
  std::string const path = file("a.png", "");
  std::filesystem::resize_file(path, 16U << 20);
  initialize();
  tellAddress();
  provider.reactWith(
      [&](AssetRequestHandler& handler) { handler.sendFiles({object(path)}, false); });
  Peer peer = connect();
  ASSERT_TRUE(peer.send(post(cEnvelope)));
  std::string response = peer.receive();
  ASSERT_FALSE(response.empty());
  tellAddress("192.0.2.8");
  response += peer.receiveAll();
  EXPECT_TRUE(response == answer(response, filePart(response, "image/png", "id",
                                                    std::string(16U << 20, '\0'))));
}

TEST_F(AssetServerTest, EndsConnectionsThatOutliveManyChangesOfTheAddress) {
  initialize();
  tellAddress();
  Peer peer = connect();
  std::vector<Peer> kept;
  for (int count = 1; !log.has(PCRealDebug::Warning,
                               "AssetRequestHandler::startListener: Failed to receive TCP packet, "
                               "errno=Success.\n");
       ++count) {
    ASSERT_LT(count, 100);
    Peer other = connect();
    tellAddress();
    expectServed();
    kept.push_back(std::move(other));
  }
  EXPECT_EQ(peer.receiveAll(), "");
}

TEST_F(AssetServerTest, GoesOnWithoutAListenerThatCannotBeOpened) {
  initialize();
  tellAddress();
  FakeSockets::FailNext(FakeSockets::Bind, EADDRINUSE);
  tellAddress();
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error,
                     "AssetServer::onData: Error initializing Asset Connection Listener !!!!"));
  EXPECT_THROW(connect(), std::runtime_error);
  tellAddress();
  expectServed();
}

TEST_F(AssetServerTest, GoesOnWithoutAListenerThatGetsNoThread) {
  initialize();
  int const before = descriptors();
  FakeThreads::FailNext(1);
  tellAddress();
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "AssetServer::onData: Error creating a new thread"));
  EXPECT_THROW(connect(), std::runtime_error);
  EXPECT_EQ(descriptors(), before);
  tellAddress();
  expectServed();
}

TEST_F(AssetServerTest, AcceptsNobodyOnceTerminated) {
  initialize();
  tellAddress();
  server->terminate();
  EXPECT_THROW(connect(), std::runtime_error);
  tellAddress("192.0.2.8");
  EXPECT_THROW(connect(), std::runtime_error);
  EXPECT_EQ(log.countContaining(PCRealDebug::Detail, "192.0.2.8"), 0);
}

TEST_F(AssetServerTest, LetsConnectionsGoOnWhenTerminated) {
  initialize();
  tellAddress();
  Peer peer = connect();
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) > 0; }));
  server->terminate();
  ASSERT_TRUE(peer.send(post(cEnvelope)));
  std::string const response = peer.receiveAll();
  EXPECT_EQ(response, answer(response));
}

TEST_F(AssetServerTest, CanBeTerminatedWithoutAListener) {
  server->terminate();
  initialize();
  server->terminate();
  EXPECT_EQ(log.count(PCRealDebug::Error), 0);
}

TEST_F(AssetServerTest, WaitsForItsListenersWhenItGoes) {
  initialize();
  tellAddress();
  Peer silent = connect();
  ASSERT_TRUE(comesTo([] { return FakeSockets::Count(FakeSockets::Receive) > 0; }));
  tellAddress();
  server.reset();
  EXPECT_EQ(log.countContaining(PCRealDebug::Trace,
                                "AssetServer::~AssetServer: Waiting for a join on threadID = "),
            2);
  EXPECT_EQ(log.countContaining(PCRealDebug::Trace,
                                "AssetConnectionListener::~AssetConnectionListener: Waiting for a "
                                "join on threadID = "),
            1);
  EXPECT_EQ(silent.receiveAll(), "");
}

}  // namespace
}  // namespace Zelv
