// The data controller with a way to other devices.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>

#include "zelv/controller/DataController.h"
#include "zelv/controller/testing/FakeProvider.h"
#include "zelv/controller/testing/MockRemoteDataHandler.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::_;
using Testing::FakeProvider;
using ::testing::InSequence;
using ::testing::Invoke;
using Testing::MockRemoteDataHandler;
using ::testing::NiceMock;
using ::testing::Not;
using Testing::RecordingCallback;
using ::testing::SizeIs;

char const cAddressPath[] = "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";
char const cDiscoveredPath[] = "/Zelv/Devices/Mobile/@ID";

class Context : public ContextInformation {};

class DataControllerRemoteTest : public ::testing::Test {
 protected:
  DataControllerRemoteTest() {
    auto handler = std::make_unique<NiceMock<MockRemoteDataHandler>>();
    remote = handler.get();
    controller = std::make_unique<DataController>("me", std::move(handler));
    provider.get = [](std::string const& aXPath, std::string& aData, GUID const&) {
      aData = aXPath == cDiscoveredPath ? "" : "value of " + aXPath;
      return 0;
    };
    controller->registerDataProvider("/Zelv/", &provider);
  }

  /// Waits until everything queued so far has run.
  void drain() {
    RecordingCallback last;
    controller->requestData("/Zelv/last", nullptr, &last);
    ASSERT_TRUE(last.waitFor(1));
  }

  RecordingCallback callback;
  RecordingCallback second;
  FakeProvider provider;
  Context context;
  std::unique_ptr<DataController> controller;
  NiceMock<MockRemoteDataHandler>* remote = nullptr;
};

TEST_F(DataControllerRemoteTest, TellsTheRemoteSideTheLocalAddressFirst) {
  EXPECT_EQ(controller->getQueueSize(), 2U);
  EXPECT_CALL(*remote, onData(cAddressPath, std::string("value of ") + cAddressPath, nullptr, _));
  controller->initialize();
  drain();
  EXPECT_EQ(provider.calls().at(0), std::string("get ") + cAddressPath);
  EXPECT_EQ(provider.calls().at(1), std::string("get ") + cDiscoveredPath);
}

TEST_F(DataControllerRemoteTest, InitialisesTheRemoteSideBeforeTheWorkerRuns) {
  InSequence order;
  EXPECT_CALL(*remote, initialize()).WillOnce(Invoke([this] {
    EXPECT_TRUE(provider.calls().empty());
  }));
  EXPECT_CALL(*remote, onData(cAddressPath, _, _, _));
  EXPECT_CALL(*remote, terminate());
  controller->initialize();
  drain();
  controller->terminate();
}

TEST_F(DataControllerRemoteTest, HandsARemoteRequestOverWithTheIdOfItsEntry) {
  GUID handed;
  EXPECT_CALL(*remote, executeGetData(_, "/Zelv[@DeviceId='x']/a", &context,
                                      static_cast<IBaseDataCallback*>(&callback), true))
      .WillOnce(::testing::SaveArg<0>(&handed));
  controller->initialize();
  GUID const id = controller->requestData("/Zelv[@DeviceId='x']/a", &context, &callback);
  drain();
  EXPECT_EQ(handed, id);
  controller->notifyDataSubscriber(id, "answer");
  ASSERT_THAT(callback.heard(), SizeIs(1));
  EXPECT_EQ(callback.heard()[0].value, "answer");
  EXPECT_EQ(callback.heard()[0].path, "/Zelv[@DeviceId='x']/a");
}

TEST_F(DataControllerRemoteTest, HandsARemoteSubscriptionOverAsNoOneTimeRequest) {
  GUID handed;
  EXPECT_CALL(*remote, executeGetData(_, "/Zelv", &context,
                                      static_cast<IBaseDataCallback*>(&callback), false))
      .WillOnce(::testing::SaveArg<0>(&handed));
  controller->initialize();
  GUID const id = controller->subscribeData("/Zelv", &context, &callback);
  drain();
  EXPECT_EQ(handed, id);
}

TEST_F(DataControllerRemoteTest, KeepsLocalPathsFromTheRemoteSide) {
  EXPECT_CALL(*remote, executeGetData(_, _, _, _, _)).Times(0);
  EXPECT_CALL(*remote, executeSetData(_, _, _, _, _, _)).Times(0);
  controller->initialize();
  controller->requestData("/Zelv[@DeviceId='me']/a", nullptr, &callback);
  controller->subscribeData("/Zelv/a", nullptr, &callback);
  controller->setData("/Zelv/a", "v", nullptr, true);
  drain();
  EXPECT_EQ(callback.count(), 2U);
}

TEST_F(DataControllerRemoteTest, SendsNothingToADeviceThatIsUnsubscribedFrom) {
  EXPECT_CALL(*remote, executeGetData(_, _, _, _, _)).Times(1);
  controller->initialize();
  controller->unsubscribeData(controller->subscribeData("/Zelv", nullptr, &callback));
  drain();
}

// Keeping a change from other devices.

class Withholding : public DataControllerRemoteTest {
 protected:
  void SetUp() override {
    provider.set = provider.add = [this](std::string const& aXPath, std::string const& aData,
                                         GUID const& aId) {
      controller->notifyDataSubscribers(aXPath, aData, aId);
      return 0;
    };
    controller->initialize();
    controller->subscribeData("/Zelv/a", nullptr, &callback);
    controller->subscribeData("/Zelv/a", nullptr, remote);
    drain();
    ::testing::Mock::VerifyAndClearExpectations(remote);
  }

  void expectRemoteTold(int aTimes) {
    EXPECT_CALL(*remote, onData("/Zelv/a", "new", nullptr, _)).Times(aTimes);
  }

  void expectLocalTold() {
    ASSERT_THAT(callback.heard(), SizeIs(2));
    EXPECT_EQ(callback.heard()[1].value, "new");
  }
};

TEST_F(Withholding, KeepsAWithheldSetFromTheRemoteSideAndTellsLocalSubscribers) {
  LogCapture log;
  expectRemoteTold(0);
  controller->setData("/Zelv/a", "new", nullptr, false);
  drain();
  expectLocalTold();
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "DataController::notifyDataSubscribers: "
                          "RemoteDataController will not be notified."));
}

TEST_F(Withholding, TellsAllOfASetForAll) {
  LogCapture log;
  expectRemoteTold(1);
  controller->setData("/Zelv/a", "new", nullptr, true);
  drain();
  expectLocalTold();
  EXPECT_THAT(log, Not(Logged(PCRealDebug::Detail,
                              "DataController::notifyDataSubscribers: "
                              "RemoteDataController will not be notified.")));
}

TEST_F(Withholding, KeepsAWithheldAddFromTheRemoteSide) {
  expectRemoteTold(0);
  controller->addData("/Zelv/a", "new", nullptr, false);
  drain();
  expectLocalTold();
}

TEST_F(Withholding, KeepsAChangeWithTheNullIdOnThisDeviceWhileTheWorkerIsIdle) {
  expectRemoteTold(0);
  controller->notifyDataSubscribers("/Zelv/a", "new", GUID::nullGUID);
  expectLocalTold();
}

TEST_F(Withholding, TellsAllOfAChangeWithAFreshId) {
  expectRemoteTold(1);
  controller->notifyDataSubscribers("/Zelv/a", "new", GUID::createGUID());
  expectLocalTold();
}

TEST_F(Withholding, TellsAllOfAChangeWithTheNullIdWhileAWithheldSetRuns) {
  expectRemoteTold(1);
  provider.set = [this](std::string const&, std::string const&, GUID const&) {
    controller->notifyDataSubscribers("/Zelv/a", "new", GUID::nullGUID);
    return 0;
  };
  controller->setData("/Zelv/x", "v", nullptr, false);
  drain();
  expectLocalTold();
}

// Devices that come and go.

class Discovered : public DataControllerRemoteTest {
 protected:
  void start(std::string const& aDevices) {
    provider.get = [aDevices](std::string const& aXPath, std::string& aData, GUID const&) {
      aData = aXPath == cDiscoveredPath ? aDevices : "";
      return 0;
    };
    controller->initialize();
    drain();
  }
};

TEST_F(Discovered, DropsEverythingWhenNoDeviceIsLeft) {
  LogCapture log;
  EXPECT_CALL(*remote, removeAllRemoteDeviceService()).Times(2);
  EXPECT_CALL(*remote, terminateInactiveDeviceQueue(_)).Times(0);
  start("");
  controller->notifyDataSubscribers(cDiscoveredPath, "", GUID::createGUID());
  EXPECT_EQ(log.count(PCRealDebug::Detail, "DataController::onData: mDiscoveredDevSubscription=''"),
            2)
      << log.dump();
}

TEST_F(Discovered, DropsTheQueuesAndThenTheSubscriptionsOfThoseThatLeft) {
  LogCapture log;
  std::list<std::string> const online = {"one", "", "two"};
  {
    InSequence order;
    EXPECT_CALL(*remote, terminateInactiveDeviceQueue(std::list<std::string>{"one"}));
    EXPECT_CALL(*remote, removeInactiveDeviceSubscription(std::list<std::string>{"one"}));
    EXPECT_CALL(*remote, terminateInactiveDeviceQueue(online));
    EXPECT_CALL(*remote, removeInactiveDeviceSubscription(online));
  }
  EXPECT_CALL(*remote, removeAllRemoteDeviceService()).Times(0);
  start("one");
  controller->notifyDataSubscribers(cDiscoveredPath, "one&#x13;&#x13;two&#x13;",
                                    GUID::createGUID());
  EXPECT_THAT(
      log, Logged(PCRealDebug::Detail, "DataController::onData: mDiscoveredDevSubscription='one'"));
}

TEST_F(Discovered, IgnoresWhatItIsToldUnderAnyOtherId) {
  EXPECT_CALL(*remote, removeAllRemoteDeviceService()).Times(0);
  EXPECT_CALL(*remote, terminateInactiveDeviceQueue(_)).Times(0);
  LogCapture log;
  controller->onData(cDiscoveredPath, "", nullptr, GUID::createGUID());
  controller->onData(cDiscoveredPath, "one", nullptr, GUID::nullGUID);
  EXPECT_EQ(log.countContaining(PCRealDebug::Detail, "mDiscoveredDevSubscription"), 0);
}

TEST(DataControllerWithoutRemoteSide, OnlyLogsTheDevicesThatCome) {
  FakeProvider provider;
  RecordingCallback callback;
  LogCapture log;
  provider.get = [](std::string const&, std::string& aData, GUID const&) {
    aData = "one";
    return 0;
  };
  DataController controller("me", nullptr);
  controller.registerDataProvider("/Zelv/", &provider);
  controller.initialize();
  controller.requestData("/Zelv/last", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Detail, "DataController::onData: mDiscoveredDevSubscription='one'"));
}

TEST(DataControllerWithoutRemoteSide, TakesANullHandlerForNone) {
  DataController controller("me", nullptr);
  EXPECT_EQ(controller.getQueueSize(), 1U);
}

}  // namespace
}  // namespace Zelv::Controller
