// Strangers at the service for remote data.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "zelv/controller/RemoteDataReader.h"
#include "zelv/controller/testing/Elsewhere.h"
#include "zelv/controller/testing/RemoteDataTest.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::Logged;
using Testing::Elsewhere;
using Testing::RawDevice;
using Testing::RemoteDataTest;

class StrangersAtRemoteData : public RemoteDataTest {
 protected:
  StrangersAtRemoteData() { node->start(); }

  /// A well-behaved device is served.
  void expectService() {
    hear(device->requestData(cId, "/Zelv/A"));
    EXPECT_EQ(next(), onData(cId, "one"));
  }

  /// As many "/Zelv/..." paths as wanted, which nobody can read.
  void subscribeOften(std::size_t aCount, std::string const& aDevice) {
    RawDevice stranger;
    stranger.id = aDevice;
    for (std::size_t index = 0; index < aCount; ++index) {
      hear(stranger.subscribeData(GUID::createGUID().toString(), "/Zelv/nothing"));
    }
  }

  static std::vector<std::string> hostilePaths() {
    std::string const deep(3000, '[');
    return {"",
            "/",
            "/Zelv",
            "Zelv/A",
            "/Zelvish/A",
            "/Zelv[@DeviceId='x']",
            "/Zelv[@DeviceId=",
            "//A",
            "..",
            "/Zelv/A[",
            "/Zelv/A[b='1'][",
            "/Zelv/" + deep,
            "/Zelv/A[b='1",
            "/Zelv/A]b[",
            "/Zelv/A[b=\"1']",
            "/Zelv/A[count(//*[count(//*[count(//*)])])]",
            "/Zelv/A/descendant-or-self::*",
            "/Zelv/" + std::string(100000, 'x'),
            std::string("/Zelv/A\n/B"),
            "<![CDATA[/Zelv/A]]>",
            "&amp;lt;&#x13;&unknown;",
            "%s%n%d"};
  }
};

TEST_F(StrangersAtRemoteData, AskForPathsThatAreNone) {
  for (std::string const& path : hostilePaths()) {
    hear(device->requestData(cOther, path));
    hear(RawDevice::setData(path, "value"));
    node->drain();
    hear(device->subscribeData(cOther, path));
    node->change("/Zelv/C", "new");
    hear(device->unsubscribeData(cOther));
    node->drain();
    EXPECT_EQ(node->remote->getContexts().size(), 0U) << path;
  }
  // Some of them this tree could take, and told the device; another one is served all the same.
  device = std::make_unique<RawDevice>();
  expectService();
}

TEST_F(StrangersAtRemoteData, SendPathsThatAreDroppedWithALine) {
  for (char const* path : {"/Zelv", "Zelv/A", "/Zelv[@DeviceId='x']", "/Zelv/A["}) {
    for (std::string const& message :
         {device->requestData(cOther, path), device->subscribeData(cOther, path),
          RawDevice::setData(path, "value")}) {
      log.clear();
      hear(message);
      EXPECT_THAT(
          log, Logged(PCRealDebug::Error, std::string("RemoteDataController::onMessage: XPath '") +
                                              path + "' is not a path of this device."));
    }
  }
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  expectService();
}

TEST_F(StrangersAtRemoteData, SendAPathWithALineFeed) {
  hear(device->requestData(cOther, "/Zelv/A<![CDATA[\n]]>"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "RemoteDataController::onMessage: Exception: Invalid XPath."));
  hear(device->subscribeData(cOther, "<![CDATA[/Zelv/A]]>"));
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  expectService();
}

TEST_F(StrangersAtRemoteData, SendPathsAroundTheLongest) {
  std::string const longest = "/Zelv/" + std::string(RemoteDataReader::cPathLength - 6, 'x');
  node->texts.put(longest, "long");
  hear(device->requestData(cOther, longest));
  EXPECT_EQ(next(), onData(cOther, "long"));
  node->texts.put(longest + "x", "longer");
  hear(device->requestData(cOther, longest + "x"));
  expectService();
}

TEST_F(StrangersAtRemoteData, HaveNamesAroundTheLongest) {
  device->id = std::string(RemoteDataReader::cDeviceIdLength, 'x');
  expectService();
  device->id += "x";
  hear(device->requestData(cOther, "/Zelv/A"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "RemoteDataController::onMessage: SenderID '" +
                                                  device->id + "' is too long."));
  device->id = "phone";
  expectService();
}

TEST_F(StrangersAtRemoteData, HaveAddressesThatAreTooLong) {
  std::string const good = device->url();
  device->notifyTo = good + std::string(RemoteDataReader::cUrlLength, 'x');
  hear(device->requestData(cOther, "/Zelv/A"));
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Error, "is not a URL."));
  device->notifyTo = good;
  expectService();
}

TEST_F(StrangersAtRemoteData, UseIdentifiersThatAreNone) {
  for (char const* id : {"", "x", "2cb63c08", "AAAAAAAAAAAAAAAAAAAAAA", "{}", "-----",
                         "00000000-0000-0000-0000-000000000000", "<a/>", "%s"}) {
    hear(device->requestData(id, "/Zelv/A"));
    hear(device->subscribeData(id, "/Zelv/A"));
    hear(device->unsubscribeData(id));
    hear(device->onData(id, "value"));
  }
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  expectService();
}

TEST_F(StrangersAtRemoteData, SayThatTheNullIdentifierNamesNoRequest) {
  hear(device->subscribeData("AAAAAAAAAAAAAAAAAAAAAA", "/Zelv/A"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "RemoteDataController::onMessage: the null GUID names no request."));
}

TEST_F(StrangersAtRemoteData, SendFragmentsOfEachMessage) {
  std::vector<std::string> const messages = {
      device->requestData(cOther, "/Zelv/B"), device->subscribeData(cOther, "/Zelv/B"),
      device->unsubscribeData(cOther), device->onData(cOther, "value"),
      RawDevice::setData("/Zelv/B", "value")};
  for (std::string const& message : messages) {
    for (std::size_t length = 0; length < message.size(); length += 3) {
      hear(message.substr(0, length));
      hear(message.substr(length));
    }
  }
  hear(device->unsubscribeData(cOther));
  node->drain();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  expectService();
}

TEST_F(StrangersAtRemoteData, WantTheirAnswersAtTheSetItself) {
  device->notifyTo = "tcp://127.0.0.1:4446/";
  hear(device->subscribeData(cOther, "/Zelv/A"));
  EXPECT_TRUE(log.waitFor(PCRealDebug::Warning,
                          std::string("DataSubscriptionManager::notifySubscriber: subscription '") +
                              cOther + "' not found."));
  device->notifyTo = device->url();
  expectService();
}

TEST_F(StrangersAtRemoteData, WantTheirAnswersWhereNobodyIs) {
  device->notifyTo = "tcp://127.0.0.1:1/";
  hear(device->requestData(cOther, "/Zelv/A"));
  device->notifyTo = "tcp://127.0.0.1:/";
  hear(device->requestData(cOther, "/Zelv/A"));
  device->notifyTo = "else://127.0.0.1:1/";
  hear(device->requestData(cOther, "/Zelv/A"));
  device->notifyTo = "tcp://somewhere:1/";
  hear(device->requestData(cOther, "/Zelv/A"));
  node->drain();
  device->notifyTo = device->url();
  expectService();
}

TEST_F(StrangersAtRemoteData, WantTheirAnswersWhereNobodyReads) {
  // One that the kernel lets in so many to, while the others knock without end.
  RawDevice const silent;
  for (int index = 0; index < 500; ++index) {
    device->notifyTo = silent.url() + std::to_string(index);
    hear(device->subscribeData(cOther, "/Zelv/A"));
  }
  node->drain();
  EXPECT_EQ(node->remote->getQueues().size(), RemoteDeviceQueues::cQueues);
  device->notifyTo = device->url();
  expectService();
  // They hold up neither a change nor the end.
  node->change("/Zelv/A", "one");
  expectService();
  node->mobiles("other");
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
  node->stop();
  EXPECT_EQ(node->remote->getQueues().getPending(), 0U);
}

TEST_F(StrangersAtRemoteData, WantTheirAnswersInMorePlacesThanThereAreQueues) {
  std::string const url = device->url();
  for (std::size_t index = 1; index <= 2 * RemoteDeviceQueues::cQueues; ++index) {
    device->notifyTo = "tcp://127.0.0.1:" + std::to_string(index) + "/";
    hear(device->requestData(cOther, "/Zelv/A"));
    EXPECT_LE(node->remote->getQueues().size(), RemoteDeviceQueues::cQueues);
  }
  node->drain();
  device->notifyTo = url;
  expectService();
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Warning, "gives way."));
  node->mobiles("other");
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
}

TEST_F(StrangersAtRemoteData, SubscribeUpToTheBoundAndBeyond) {
  subscribeOften(RemoteDataContexts::cSubscriptions - 1, "stranger");
  // The last one fits as ever.
  hear(device->subscribeData(cOther, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cOther, "one"));
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Warning, "Too many remote subscriptions"));
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          std::string("RemoteDataController::onMessage: Too many remote "
                                      "subscriptions, '") +
                              cId + "' of device 'phone' is refused."));
  subscribeOften(1000, "stranger");
  EXPECT_EQ(node->remote->getContexts().countSubscriptions(), RemoteDataContexts::cSubscriptions);
  // Those that stand go on, and requests are answered.
  node->change("/Zelv/A", "one");
  EXPECT_EQ(next(), onData(cOther, "one"));
  expectService();
  // All of it goes with the next change of the list.
  node->mobiles("other");
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(StrangersAtRemoteData, GiveWayToADeviceThatIsThere) {
  node->mobiles("phone");
  subscribeOften(RemoteDataContexts::cSubscriptions, "stranger");
  hear(device->subscribeData(cOther, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cOther, "one"));
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Warning, "' of device 'stranger' gives way."));
  EXPECT_EQ(node->remote->getContexts().countSubscriptions(), RemoteDataContexts::cSubscriptions);
}

TEST_F(StrangersAtRemoteData, LeaveNothingBehindWhenTheySubscribeAndUnsubscribeWithoutEnd) {
  for (int times = 0; times < 5000; ++times) {
    hear(device->subscribeData(cOther, "/Zelv/nothing"));
    hear(device->unsubscribeData(cOther));
  }
  node->drain();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  expectService();
}

TEST_F(StrangersAtRemoteData, CannotQueueDataTasksWithoutEnd) {
  holdWorker();
  node->controller.requestData("/Zelv/A", nullptr, &callback);
  inside.Take();
  std::string const request = device->requestData(cOther, "/Zelv/nothing");
  std::string const subscription = device->subscribeData(cOther, "/Zelv/nothing");
  std::string const write = RawDevice::setData("/Zelv/B", "value");
  // Lines of so many messages are of no use.
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  while (node->controller.getQueueSize() < RemoteDataController::cDataTasks) {
    hear(request);
  }
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Warning, "Too many data tasks"));
  for (std::string const& message : {request, subscription, write}) {
    log.clear();
    hear(message);
    EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                            "RemoteDataController::onMessage: Too many data tasks, message "
                            "dropped."));
  }
  EXPECT_EQ(node->controller.getQueueSize(), RemoteDataController::cDataTasks);
  // What the set itself wants is never refused.
  node->controller.requestData("/Zelv/A", nullptr, &callback);
  EXPECT_EQ(node->controller.getQueueSize(), RemoteDataController::cDataTasks + 1);
  leave.Give();
  leave.Give();
  ASSERT_TRUE(callback.waitFor(2));
  node->drain();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  PCRealDebug::SetLevel(PCRealDebug::Trace);
  leave.Give();
  expectService();
}

TEST_F(StrangersAtRemoteData, KeepNobodyHereWaitingHoweverFastTheyAskAndWrite) {
  holdWorker();
  node->controller.requestData("/Zelv/A", nullptr, &callback);
  inside.Take();
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  for (int i = 0; i < 1000; ++i) {
    hear(RawDevice::setData("/Zelv/B", "value"));
    hear(device->requestData(cOther, "/Zelv/nothing"));
    hear(device->subscribeData(cOther, "/Zelv/nothing"));
  }
  std::size_t waiting = 0;
  callback.reaction = [this, &waiting](Testing::Heard const& aHeard) {
    if (aHeard.path == "/Zelv/C") {
      waiting = node->controller.getQueueSize();
      inside.Give();
    }
  };
  node->texts.put("/Zelv/C", "soon");
  node->controller.requestData("/Zelv/C", nullptr, &callback);
  leave.Give();
  inside.Take();
  EXPECT_GE(waiting, 2998U);
  PCRealDebug::SetLevel(PCRealDebug::Trace);
  leave.Give();
  expectService();
}

TEST_F(StrangersAtRemoteData, ComeFromManySidesAtOnce) {
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  std::atomic<int> running{0};
  auto const flood = [this, &running](int aNumber) {
    RawDevice stranger;
    stranger.id = "stranger " + std::to_string(aNumber);
    stranger.notifyTo = "tcp://127.0.0.1:" + std::to_string(aNumber + 1) + "/";
    for (int times = 0; times < 200; ++times) {
      std::string const id = GUID::createGUID().toString();
      hear(stranger.subscribeData(id, "/Zelv/B"));
      hear(stranger.requestData(id, "/Zelv/nothing"));
      hear(RawDevice::setData("/Zelv/B", std::to_string(times)));
      hear(stranger.onData(id, "value"));
      hear(stranger.unsubscribeData(id));
    }
    ++running;
  };
  {
    Elsewhere one([&] { flood(1); });
    Elsewhere two([&] { flood(2); });
    Elsewhere three([&] { flood(3); });
    for (int times = 0; times < 50; ++times) {
      node->mobiles("stranger 1");
      node->change("/Zelv/B", "changed");
      node->mobiles("");
    }
  }
  EXPECT_EQ(running, 3);
  node->mobiles("");
  node->drain();
  node->drain();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  PCRealDebug::SetLevel(PCRealDebug::Trace);
  expectService();
}

}  // namespace
}  // namespace Zelv::Controller
