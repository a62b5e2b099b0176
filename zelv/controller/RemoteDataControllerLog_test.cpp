// What the remote data controller says, and at which level.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "zelv/controller/testing/RemoteDataTest.h"
#include "zelv/platform/fake/FakeThreads.h"

namespace Zelv::Controller {
namespace {

using Infrastructure::URL;
using Platform::Fake::FakeThreads;
using Platform::Fake::Logged;
using Testing::RawDevice;
using Testing::RemoteDataTest;
using Testing::RemoteNode;

using Level = PCRealDebug::Level;

struct Line {
  Level level;
  /// "URL" stands for the address of the device.
  std::string text;
  std::function<void(RemoteNode<>&, RawDevice&)> action;
};

std::ostream& operator<<(std::ostream& aStream, Line const& aLine) {
  return aStream << aLine.level << " " << aLine.text;
}

std::string const cGuid = "2cb63c08-01e0-41cd-950e-1566f18e0983";

GetDataContext contextFor(std::string const& aDevice) {
  return {GUID(cGuid), "/Zelv[@DeviceId='" + aDevice + "']/A", true, aDevice, "/Zelv/lookup"};
}

class RemoteDataLine : public RemoteDataTest, public ::testing::WithParamInterface<Line> {};

TEST_P(RemoteDataLine, IsLoggedAtItsLevel) {
  node->start();
  log.clear();
  GetParam().action(*node, *device);
  node->giveTreeBack();
  node->drain();
  node->drain();
  std::string text = GetParam().text;
  auto const url = text.find("URL'");
  if (url != std::string::npos && url > 0 && text[url - 1] == '\'') {
    text.replace(url, 3, device->url());
  }
  EXPECT_THAT(log, Logged(GetParam().level, text));
}

auto hears(std::string const& aMessage) {
  return [aMessage](RemoteNode<>& aNode, RawDevice&) { aNode.remote->onMessage(aMessage, ""); };
}

auto hearsWithId(std::string const& aType, std::string const& aElement, std::string const& aId) {
  return [=](RemoteNode<>& aNode, RawDevice& aDevice) {
    aNode.remote->onMessage(
        RawDevice::envelope("<NotifyTo>" + aDevice.url() + "</NotifyTo>",
                            "<" + aType + "><" + aElement + ">" + aId + "</" + aElement +
                                "><XPath>/Zelv/A</XPath></" + aType + ">"),
        "");
  };
}

auto hearsWithNotifyTo(std::string const& aType, std::string const& aNotifyTo) {
  return hears(RawDevice::envelope("<NotifyTo>" + aNotifyTo + "</NotifyTo>",
                                   "<" + aType + "><TransactionId>" + cGuid +
                                       "</TransactionId><SubscriptionId>" + cGuid +
                                       "</SubscriptionId><XPath>/Zelv/A</XPath></" + aType + ">"));
}

template <typename Action>
auto withoutTree(Action const& aAction) {
  return [aAction](RemoteNode<>& aNode, RawDevice&) {
    RemoteNode<>::loseTree();
    aAction(*aNode.remote);
  };
}

template <typename Action>
auto withoutThreads(Action const& aAction) {
  return [aAction](RemoteNode<>& aNode, RawDevice& aDevice) {
    FakeThreads::FailNext(1);
    aAction(*aNode.remote, URL(aDevice.url()));
    FakeThreads::Reset();
  };
}

std::string const cLost =
    "RemoteDataController::sendRequestData: ERROR sending message to deviceID = 'B'";

INSTANTIATE_TEST_SUITE_P(
    OfTheTree, RemoteDataLine,
    ::testing::Values(
        Line{Level::Error, "CommandController::initialize: Failed to obtain ICoreData interface.",
             withoutTree([](RemoteDataController& aRemote) { aRemote.initialize(); })},
        Line{Level::Error,
             "RemoteDataProvider::executeGetData: Failed to obtain ICoreData interface.",
             withoutTree([](RemoteDataController& aRemote) {
               aRemote.executeGetData(GUID(cGuid), "/Zelv[@DeviceId='B']/A", nullptr, nullptr,
                                      true);
             })},
        Line{Level::Error, "RemoteDataProvider::onMessage: Failed to obtain ICoreData interface.",
             withoutTree([](RemoteDataController& aRemote) { aRemote.onMessage("<a/>", ""); })},
        Line{Level::Error,
             "RemoteDataProvider::removeInactiveDeviceSubscription: Failed to obtain ICoreData "
             "interface.",
             withoutTree([](RemoteDataController& aRemote) {
               aRemote.removeInactiveDeviceSubscription({"phone"});
             })},
        Line{Level::Error,
             "RemoteDataProvider::removeAllRemoteDeviceService: Failed to obtain ICoreData "
             "interface.",
             withoutTree([](RemoteDataController& aRemote) {
               aRemote.removeAllRemoteDeviceService();
             })}));

INSTANTIATE_TEST_SUITE_P(
    OfMessages, RemoteDataLine,
    ::testing::Values(
        Line{Level::Error, "RemoteDataController::onMessage: Failed to load Message.",
             hears("no message")},
        Line{Level::Error, "RemoteDataController::onMessage: Failed to load Message.", hears("")},
        Line{Level::Notable, "RemoteDataController::onMessage: Received OnData.",
             hearsWithId("OnData", "SubscriptionId", cGuid)},
        Line{Level::Notable, "RemoteDataController::onMessage: Received RequestData.",
             hearsWithId("RequestData", "TransactionId", cGuid)},
        Line{Level::Notable, "RemoteDataController::onMessage: Received SubscribeData.",
             hearsWithId("SubscribeData", "SubscriptionId", cGuid)},
        Line{Level::Notable, "RemoteDataController::onMessage: Received UnsubscribeData.",
             hearsWithId("UnsubscribeData", "SubscriptionId", cGuid)},
        Line{Level::Notable, "RemoteDataController::onMessage: Received SetData.",
             hears(RawDevice::setData("/Zelv/A", "x"))},
        Line{Level::Notable, "RemoteDataController::onMessage: '/Zelv/A' is set by device 'phone'.",
             hears(RawDevice::setData("/Zelv/A", "x"))},
        Line{Level::Error, "RemoteDataController::onMessage: SubscriptionId 'x' is not a GUID.",
             hearsWithId("OnData", "SubscriptionId", "x")},
        Line{Level::Error, "RemoteDataController::onMessage: TransactionId '' is not a GUID.",
             hearsWithId("RequestData", "TransactionId", "")},
        Line{Level::Error,
             "RemoteDataController::onMessage: TransactionId '2cb63c08-01e0-41cd' is not a GUID.",
             hearsWithId("RequestData", "TransactionId", "2cb63c08-01e0-41cd")},
        Line{Level::Error, "RemoteDataController::onMessage: SubscriptionId 'y' is not a GUID.",
             hearsWithId("SubscribeData", "SubscriptionId", "y")},
        Line{Level::Error, "RemoteDataController::onMessage: SubscriptionId 'z' is not a GUID.",
             hearsWithId("UnsubscribeData", "SubscriptionId", "z")},
        Line{Level::Warning,
             "RemoteDataController::onMessage: Remote subscription '" + cGuid + "' not found!",
             hearsWithId("UnsubscribeData", "SubscriptionId", cGuid)},
        Line{Level::Notable,
             "RemoteDataController::onMessage: Removing subscription '" + cGuid + "'.",
             [](RemoteNode<>& aNode, RawDevice& aDevice) {
               aNode.remote->onMessage(aDevice.subscribeData(cGuid, "/Zelv/A"), "");
               aNode.remote->onMessage(aDevice.unsubscribeData(cGuid), "");
             }},
        Line{Level::Error, "RemoteDataController::onMessage: Data '' is no element.",
             hears(RawDevice::envelope("", "<SetData><XPath>/Zelv/A</XPath></SetData>"))}));

INSTANTIATE_TEST_SUITE_P(
    OfAddressesForAnswers, RemoteDataLine,
    ::testing::Values(
        Line{Level::Error, "RemoteDataController::onMessage: NotifyTo '' is not a URL.",
             hearsWithNotifyTo("RequestData", "")},
        Line{Level::Error,
             "RemoteDataController::onMessage: NotifyTo 'tcp://127.0.0.1/' is not a URL.",
             hearsWithNotifyTo("RequestData", "tcp://127.0.0.1/")},
        Line{Level::Error, "RemoteDataController::onMessage: NotifyTo 'a:' is not a URL.",
             hearsWithNotifyTo("SubscribeData", "a:")},
        Line{Level::Error,
             "RemoteDataController::onMessage: NotifyTo 'udp://239.1.2.3:80/' is not a URL.",
             hearsWithNotifyTo("SubscribeData", "udp://239.1.2.3:80/")},
        Line{Level::Error,
             "RemoteDataController::onMessage: NotifyTo 'udp://255.255.255.255:80/' is not a URL.",
             hearsWithNotifyTo("RequestData", "udp://255.255.255.255:80/")},
        Line{Level::Error,
             "RemoteDataController::onMessage: NotifyTo 'tcp://0.0.0.0:80/' is not a URL.",
             hearsWithNotifyTo("RequestData", "tcp://0.0.0.0:80/")}));

INSTANTIATE_TEST_SUITE_P(
    OfSending, RemoteDataLine,
    ::testing::Values(
        Line{Level::Trace, "RemoteDataController::onData: DataControl service URL='URL'",
             [](RemoteNode<>& aNode, RawDevice&) {
               aNode.controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, aNode.remote);
             }},
        Line{Level::Warning, "RemoteDataController::onData: DataControl service URL not found!",
             [](RemoteNode<>& aNode, RawDevice&) {
               aNode.know("C", "");
               aNode.controller.requestData("/Zelv[@DeviceId='C']/A", nullptr, aNode.remote);
             }},
        Line{Level::Notable, cLost, withoutThreads([](RemoteDataController& aRemote, URL aUrl) {
               GetDataContext const context = contextFor("B");
               aRemote.sendRequestData(aUrl, &context);
             })},
        Line{Level::Notable, cLost, withoutThreads([](RemoteDataController& aRemote, URL aUrl) {
               GetDataContext const context = contextFor("B");
               aRemote.sendSubscribeData(aUrl, &context);
             })},
        Line{Level::Notable, cLost, withoutThreads([](RemoteDataController& aRemote, URL aUrl) {
               aRemote.sendUnsubscribeData(aUrl, GUID(cGuid), "B");
             })},
        Line{Level::Notable, cLost, withoutThreads([](RemoteDataController& aRemote, URL aUrl) {
               aRemote.sendOnData(GUID(cGuid), aUrl, "value", "B");
             })},
        Line{Level::Error,
             "RemoteDataController::sendToDeviceServiceQueue: deviceServiceQueue initialize "
             "failed!!!!",
             withoutThreads([](RemoteDataController& aRemote, URL aUrl) {
               aRemote.sendToDeviceServiceQueue("text", aUrl, "B");
             })}));

class RemoteDataLog : public RemoteDataTest {
 protected:
  /// Of the lines of a level, the one that begins so.
  std::string lineWith(Level aLevel, std::string const& aBegin) const {
    for (std::string const& text : log.texts(aLevel)) {
      if (text.starts_with(aBegin)) {
        return text;
      }
    }
    return "";
  }
};

TEST_F(RemoteDataLog, ShowsTheMessagesThatAskOtherDevices) {
  node->start();
  GetDataContext const context = contextFor("B");
  node->remote->sendRequestData(URL(device->url()), &context);
  EXPECT_EQ(lineWith(Level::Notable, "RemoteDataController::sendRequestData: message="),
            "RemoteDataController::sendRequestData: message='" + device->take() + "'");
  node->remote->sendSubscribeData(URL(device->url()), &context);
  EXPECT_EQ(lineWith(Level::Notable, "RemoteDataController::sendSubscribeData: message="),
            "RemoteDataController::sendSubscribeData: message='" + device->take() + "'");
}

TEST_F(RemoteDataLog, ShowsTheArgumentsAsDetails) {
  GetDataContext const context = contextFor("B");
  std::string const arguments = "service='" + device->url() + "', transaction='" + cGuid +
                                "', XPath='/Zelv[@DeviceId='B']/A', deviceID='B'";
  node->remote->sendRequestData(URL(device->url()), &context);
  EXPECT_THAT(log, Logged(Level::Detail, "RemoteDataController::sendRequestData: " + arguments));
  node->remote->sendSubscribeData(URL(device->url()), &context);
  EXPECT_TRUE(
      log.hasContaining(Level::Detail, "RemoteDataController::sendSubscribeData: service='" +
                                           device->url() + "', subscription='" + cGuid));
}

TEST_F(RemoteDataLog, TellsOfWhateverAMessageThrew) {
  RemoteDataController remote(&node->controller, []() -> ICoreData* { throw 1; });
  EXPECT_NO_THROW(remote.onMessage("<a/>", ""));
  EXPECT_THAT(log, Logged(Level::Error, "RemoteDataController::onMessage: Unknown exception."));
}

TEST_F(RemoteDataLog, NamesTheThreadOfANewQueueAsAnError) {
  node->remote->sendToDeviceServiceQueue("text", URL(device->url()), "B");
  EXPECT_THAT(log, Logged(Level::Error,
                          ::testing::MatchesRegex(
                              "RemoteDataController::sendToDeviceServiceQueue: deviceServiceQueue "
                              "launched Thread ID=[0-9]+. for device: B")));
  EXPECT_EQ(device->take(), "text");
}

TEST_F(RemoteDataLog, HasEntryAndExitOfTheOperations) {
  node->start();
  hear(device->requestData(cId, "/Zelv/A"));
  next();
  node->mobiles("x");
  node->mobiles("");
  node->remote->sendUnsubscribeData(URL(device->url()), GUID(cGuid), "B");
  node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  node->controller.subscribeData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  node->controller.requestData("/Zelv/nothing", nullptr, node->remote);
  node->drain();
  node->drain();
  node->stop();
  for (char const* operation :
       {"initialize", "startService", "terminate", "executeGetData", "onData", "onStatus",
        "onMessage", "sendRequestData", "sendSubscribeData", "sendUnsubscribeData", "sendOnData",
        "sendToDeviceServiceQueue", "removeAllRemoteDeviceService",
        "removeInactiveDeviceSubscription", "terminateInactiveDeviceQueue"}) {
    std::string const name = std::string("RemoteDataController::") + operation;
    EXPECT_TRUE(log.has(Level::Trace, name + ": Entry.")) << name;
    EXPECT_EQ(log.count(Level::Trace, name + ": Entry."), log.count(Level::Trace, name + ": Exit."))
        << name;
  }
}

}  // namespace
}  // namespace Zelv::Controller
