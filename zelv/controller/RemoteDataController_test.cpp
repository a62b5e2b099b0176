#include "zelv/controller/RemoteDataController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "zelv/controller/testing/RemoteDataTest.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::Logged;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Testing::RawDevice;
using Testing::RemoteDataTest;
using ::testing::SizeIs;

class Context : public ContextInformation {};

// Asking another device.

class AskingAnotherDevice : public RemoteDataTest {
 protected:
  AskingAnotherDevice() { node->start(); }

  static std::string request(std::string const& aId, std::string const& aXPath) {
    return "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
           "<From>tcp://127.0.0.1:4446/</From><NotifyTo>tcp://127.0.0.1:4446/</NotifyTo></Header>"
           "<Body><RequestData><TransactionId>" +
           aId + "</TransactionId><XPath>" + aXPath + "</XPath></RequestData></Body></Envelope>";
  }

  static std::string subscription(std::string const& aId, std::string const& aXPath) {
    return "<Envelope><Header><SenderID>me</SenderID><MessageID>#</MessageID>"
           "<From>tcp://127.0.0.1:4446/</From><NotifyTo>tcp://127.0.0.1:4446/</NotifyTo></Header>"
           "<Body><SubscribeData><SubscriptionId>" +
           aId + "</SubscriptionId><XPath>" + aXPath + "</XPath></SubscribeData></Body></Envelope>";
  }

  Context context;
};

TEST_F(AskingAnotherDevice, SendsARequestAndHandsTheAnswerToWhoAsked) {
  std::string const path = "/Zelv[@DeviceId='B']/Devices/LocalTV/Name/text()";
  GUID const id = node->controller.requestData(path, &context, &callback);
  EXPECT_EQ(next(), request(id.toString(), "/Zelv/Devices/LocalTV/Name/text()"));
  hear(device->onData(id.toString(), "Kitchen"));
  ASSERT_THAT(callback.heard(), SizeIs(1));
  EXPECT_EQ(callback.heard()[0].path, path);
  EXPECT_EQ(callback.heard()[0].value, "Kitchen");
  EXPECT_EQ(callback.heard()[0].context, &context);
  EXPECT_EQ(callback.heard()[0].id, id);
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AskingAnotherDevice, SubscribesAndHandsOnEachValue) {
  GUID const id = node->controller.subscribeData("/Zelv[@DeviceId=\"B\"]/A", &context, &callback);
  EXPECT_EQ(next(), subscription(id.toString(), "/Zelv/A"));
  hear(device->onData(id.toString(), "one"));
  hear(device->onData(id.toString(), ""));
  hear(device->onData(id.toString(), "<a b='c'>x</a>"));
  ASSERT_THAT(callback.heardOf(id), SizeIs(3));
  EXPECT_EQ(callback.heard()[0].value, "one");
  EXPECT_EQ(callback.heard()[1].value, "");
  EXPECT_EQ(callback.heard()[2].value, "<a b='c'>x</a>");
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AskingAnotherDevice, EscapesThePathAndLeavesOutItsDevice) {
  GUID const id = node->controller.requestData(
      "/Zelv[@DeviceId='B']/Users/User[@ID='1']/A[b<\"2\"]", nullptr, &callback);
  EXPECT_EQ(next(),
            request(id.toString(), "/Zelv/Users/User[@ID=&apos;1&apos;]/A[b&lt;&quot;2&quot;]"));
}

TEST_F(AskingAnotherDevice, ReadsSeveralNodesOfAnAnswerAsAMultiString) {
  GUID const id = node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  next();
  hear(device->onData(id.toString(), "<a/><b>x</b>"));
  ASSERT_THAT(callback.heard(), SizeIs(1));
  EXPECT_EQ(callback.heard()[0].value, "<a/>&#x13;<b>x</b>");
}

TEST_F(AskingAnotherDevice, LooksItsAddressUpAnewEachTime) {
  RawDevice moved;
  node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  EXPECT_THAT(next(), HasSubstr("<XPath>/Zelv/A</XPath>"));
  node->know("B", moved.url());
  node->controller.requestData("/Zelv[@DeviceId='B']/B", nullptr, &callback);
  EXPECT_THAT(moved.take(), HasSubstr("<XPath>/Zelv/B</XPath>"));
  EXPECT_EQ(node->remote->getQueues().size(), 2U);
}

TEST_F(AskingAnotherDevice, SendsNothingToOneWithoutTheService) {
  node->know("C", "");
  node->controller.requestData("/Zelv[@DeviceId='C']/A", nullptr, &callback);
  node->controller.subscribeData("/Zelv[@DeviceId='C']/A", nullptr, &callback);
  node->drain();
  node->drain();
  EXPECT_EQ(log.count(PCRealDebug::Warning,
                      "RemoteDataController::onData: DataControl service URL not found!"),
            2);
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
}

TEST_F(AskingAnotherDevice, ForgetsARequestToOneThatNobodyKnows) {
  node->controller.requestData("/Zelv[@DeviceId='nobody']/A", nullptr, &callback);
  node->controller.subscribeData("/Zelv", nullptr, &callback);
  node->drain();
  node->drain();
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
}

TEST_F(AskingAnotherDevice, SurvivesAnAddressThatIsNone) {
  node->know("C", "nowhere");
  node->controller.requestData("/Zelv[@DeviceId='C']/A", nullptr, &callback);
  GUID const id = node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  EXPECT_EQ(next(), request(id.toString(), "/Zelv/A"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DataController::processTasks: Exception in a task: Invalid URL."));
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AskingAnotherDevice, SurvivesAPathThatEndsWithTheDevice) {
  node->controller.requestData("/Zelv[@DeviceId='B']", nullptr, &callback);
  GUID const id = node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  EXPECT_EQ(next(), request(id.toString(), "/Zelv/A"));
  EXPECT_TRUE(
      log.hasContaining(PCRealDebug::Error, "DataController::processTasks: Exception in a task: "));
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AskingAnotherDevice, TakesAnIdThatWouldChangeTheLookupForNobodys) {
  std::vector<std::string> reads;
  node->texts.whenRead = [&reads](std::string const& aXPath) { reads.push_back(aXPath); };
  node->controller.requestData("/Zelv[@DeviceId=\"x' or '1'='1\"]/A", nullptr, &callback);
  node->controller.requestData("/Zelv[@DeviceId='a[b']/A", nullptr, &callback);
  node->drain();
  EXPECT_EQ(log.count(PCRealDebug::Warning,
                      "RemoteDataController::onData: DataControl service URL not found!"),
            2);
  EXPECT_THAT(reads, ::testing::ElementsAre("/Zelv/Devices/LocalTV/@ID"));
}

TEST_F(AskingAnotherDevice, WritesNothingThere) {
  EXPECT_THROW(node->controller.setData("/Zelv[@DeviceId='B']/A", "v", nullptr, true),
               std::runtime_error);
  node->remote->executeSetData(GUID(cId), "/Zelv/A", "v", false, &callback, true);
  EXPECT_EQ(node->texts.get("/Zelv/A"), "one");
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(AskingAnotherDevice, SaysNothingThereWhenItUnsubscribes) {
  GUID const id = node->controller.subscribeData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  EXPECT_EQ(next(), subscription(id.toString(), "/Zelv/A"));
  node->controller.unsubscribeData(id);
  GUID const later = node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  EXPECT_EQ(next(), request(later.toString(), "/Zelv/A"));
  hear(device->onData(id.toString(), "late"));
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(AskingAnotherDevice, CanUnsubscribeInTheFormOfThePeers) {
  node->remote->sendUnsubscribeData(Infrastructure::URL(device->url()), GUID(cId), "B");
  EXPECT_EQ(next(), std::string("<Envelope><Header><SenderID>me</SenderID>"
                                "<MessageID>#</MessageID><From>tcp://127.0.0.1:4446/</From>"
                                "</Header><Body><UnsubscribeData><SubscriptionId>") +
                        cId + "</SubscriptionId></UnsubscribeData></Body></Envelope>");
}

// Answering another device.

class AnsweringAnotherDevice : public RemoteDataTest {
 protected:
  AnsweringAnotherDevice() { node->start(); }
};

TEST_F(AnsweringAnotherDevice, SendsTheValueThatWasRequested) {
  hear(device->requestData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  node->drain();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AnsweringAnotherDevice, SendsAValueThatIsXMLAsItStands) {
  node->texts.put("/Zelv/A", "<a b='c'>&amp;</a>&#x13;<d/>");
  hear(device->requestData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "<a b='c'>&amp;</a>&#x13;<d/>"));
}

TEST_F(AnsweringAnotherDevice, SendsTheFirstValueOfASubscriptionAndEachChange) {
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  node->change("/Zelv/A", "two");
  EXPECT_EQ(next(), onData(cId, "two"));
  node->controller.setData("/Zelv/A", "three", nullptr, true);
  EXPECT_EQ(next(), onData(cId, "three"));
  EXPECT_EQ(node->remote->getContexts().size(), 1U);
}

TEST_F(AnsweringAnotherDevice, KeepsAChangeBackThatMustNotLeaveThisDevice) {
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  node->controller.setData("/Zelv/A", "two", nullptr, false);
  expectSilence();
}

TEST_F(AnsweringAnotherDevice, EndsASubscription) {
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  hear(device->unsubscribeData(cId));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          std::string("RemoteDataController::onMessage: Removing subscription '") +
                              cId + "'."));
  node->change("/Zelv/A", "two");
  expectSilence();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AnsweringAnotherDevice, OnlyWarnsOfTheEndOfASubscriptionThatItDoesNotKnow) {
  log.clear();
  hear(device->unsubscribeData(cId));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          std::string("RemoteDataController::onMessage: Remote subscription '") +
                              cId + "' not found!"));
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
}

TEST_F(AnsweringAnotherDevice, SetsAValueAndTellsTheSubscribers) {
  node->controller.subscribeData("/Zelv/A", nullptr, &callback);
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  hear(RawDevice::setData("/Zelv/A", "two"));
  EXPECT_EQ(next(), onData(cId, "two"));
  EXPECT_EQ(node->texts.get("/Zelv/A"), "two");
  // Who is told first depends on the identifiers.
  ASSERT_TRUE(callback.waitFor(2));
  EXPECT_EQ(callback.heard().back().value, "two");
}

TEST_F(AnsweringAnotherDevice, ReadsTheValuesOfWritesByTheirTags) {
  struct {
    char const* data;
    char const* value;
  } const cases[] = {
      {"<Data>two</Data>", "two"},
      {"<Data></Data>", ""},
      {"<Data/>", ""},
      {"<Data />", ""},
      {"<Data>1 &lt; 2 &amp; 3</Data>", "1 < 2 & 3"},
      {"<Data><User ID='1'><Name>Ann</Name></User></Data>", "<User ID='1'><Name>Ann</Name></User>"},
      {"<Data><a/><b>x</b></Data>", "<a/><b>x</b>"},
  };
  for (auto const& one : cases) {
    node->texts.put("/Zelv/A", "before");
    hear(RawDevice::envelope(
        "", std::string("<SetData><XPath>/Zelv/A</XPath>") + one.data + "</SetData>"));
    node->drain();
    EXPECT_EQ(node->texts.get("/Zelv/A"), one.value) << one.data;
  }
}

TEST_F(AnsweringAnotherDevice, DropsAWriteWithoutAValue) {
  hear(RawDevice::envelope("", "<SetData><XPath>/Zelv/A</XPath></SetData>"));
  node->drain();
  EXPECT_EQ(node->texts.get("/Zelv/A"), "one");
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "RemoteDataController::onMessage: Data '' is no element."));
}

TEST_F(AnsweringAnotherDevice, TakesThePathOfAnyDeviceForItsOwn) {
  hear(device->requestData(cId, "/Zelv[@DeviceId=&apos;whoever&apos;]/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  hear(RawDevice::setData("/Zelv[@DeviceId='me']/A", "two"));
  node->drain();
  EXPECT_EQ(node->texts.get("/Zelv/A"), "two");
}

TEST_F(AnsweringAnotherDevice, UnescapesThePathTwice) {
  node->texts.put("/Zelv/A[b='1' and c<2]", "found");
  hear(device->requestData(cId, "/Zelv/A[b=&apos;1&apos; and c&lt;2]"));
  EXPECT_EQ(next(), onData(cId, "found"));
  hear(device->requestData(cId, "/Zelv/A[b=&amp;apos;1&amp;apos; and c&amp;lt;2]"));
  EXPECT_EQ(next(), onData(cId, "found"));
}

TEST_F(AnsweringAnotherDevice, FindsTheElementsOfAMessageByName) {
  hear("  <Envelope>\n <Body> <RequestData><XPath>/Zelv/A</XPath>\n<TransactionId>" +
       std::string(cId) + "</TransactionId></RequestData><SetData/></Body> <Header><NotifyTo>" +
       device->url() + "</NotifyTo><Else/></Header></Envelope>");
  EXPECT_EQ(next(), onData(cId, "one"));
}

TEST_F(AnsweringAnotherDevice, AnswersWhatItIsAskedOfOtherTelevisions) {
  node->texts.put("/Zelv/Devices/RemoteTV[@ID='B']/Name/text()", "Kitchen");
  node->texts.put("/Zelv/Devices/RemoteTV[@ID='C']", "<RemoteTV/>");
  hear(device->requestData(cId, "/Zelv/Devices/RemoteTV[@ID='B']/Name/text()"));
  EXPECT_EQ(next(), onData(cId, "Kitchen"));
  hear(device->subscribeData(cId, "/Zelv/Devices/RemoteTV[@ID='C']"));
  EXPECT_EQ(next(), onData(cId, "<RemoteTV/>"));
  // Also where this set itself asks in just these words.
  hear(device->requestData(cId, Testing::RemoteNode<>::lookupPath("B")));
  EXPECT_EQ(next(), onData(cId, device->url()));
}

TEST_F(AnsweringAnotherDevice, GivesNoAnswerForItsAddressAndKeepsItsService) {
  hear(device->requestData(cId, Testing::RemoteNode<>::cAddressPath));
  expectSilence();
  EXPECT_EQ(log.count(PCRealDebug::Notable,
                      "RemoteDataController::onData: Starting DataControl service on "
                      "'tcp://127.0.0.1:4446/'"),
            2);
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  EXPECT_EQ(RawDevice::tell(4446, device->requestData(cId, "/Zelv/A")), "\n");
  EXPECT_EQ(next(), onData(cId, "one"));
  log.clear();
  node->stop();
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Warning, "Registration not found!"));
}

TEST_F(AnsweringAnotherDevice, SaysNothingOfARequestThatFails) {
  hear(device->requestData(cId, "/Zelv/nothing"));
  expectSilence();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AnsweringAnotherDevice, KeepsASubscriptionWhoseFirstReadFails) {
  hear(device->subscribeData(cId, "/Zelv/later"));
  node->drain();
  node->change("/Zelv/later", "there");
  EXPECT_EQ(next(), onData(cId, "there"));
}

TEST_F(AnsweringAnotherDevice, ServesTwoSubscriptionsOfOneIdAndEndsBoth) {
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  node->change("/Zelv/A", "two");
  EXPECT_EQ(next(), onData(cId, "two"));
  EXPECT_EQ(next(), onData(cId, "two"));
  hear(device->unsubscribeData(cId));
  node->change("/Zelv/A", "three");
  expectSilence();
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
}

TEST_F(AnsweringAnotherDevice, CanEndASubscriptionWhoseFirstReadIsQueued) {
  holdWorker();
  node->controller.requestData("/Zelv/A", nullptr, &callback);
  inside.Take();
  for (int times = 0; times < 100; ++times) {
    hear(device->subscribeData(cId, "/Zelv/B"));
    hear(device->unsubscribeData(cId));
  }
  hear(device->requestData(cId, "/Zelv/B"));
  hear(device->unsubscribeData(cId));
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  node->texts.put("/Zelv/B", "stale");
  leave.Give();
  expectSilence();
}

TEST_F(AnsweringAnotherDevice, SendsAnAnswerWhereItWasWanted) {
  RawDevice elsewhere;
  device->notifyTo = elsewhere.url();
  hear(device->requestData(cId, "/Zelv/A"));
  EXPECT_EQ(RawDevice::withoutMessageId(elsewhere.take()), onData(cId, "one"));
}

TEST_F(AnsweringAnotherDevice, HandsAnAnswerOfUnknownIdToTheSubscriptions) {
  hear(device->onData(cId, "value"));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          std::string("DataSubscriptionManager::notifySubscriber: subscription '") +
                              cId + "' not found."));
}

TEST_F(AnsweringAnotherDevice, IgnoresOtherMessagesInSilence) {
  node->drain();
  log.clear();
  hear(RawDevice::envelope("", "<Ping/>"));
  hear(RawDevice::envelope("", ""));
  hear("<Else/>");
  for (auto const level : {PCRealDebug::Error, PCRealDebug::Warning, PCRealDebug::Notable}) {
    EXPECT_EQ(log.count(level), 0) << log.dump();
  }
}

// Devices that leave.

class DevicesThatLeave : public RemoteDataTest {
 protected:
  DevicesThatLeave() { node->start(); }

  void subscribe(std::string const& aDevice, std::string const& aId) {
    device->id = aDevice;
    hear(device->subscribeData(aId, "/Zelv/A"));
    EXPECT_EQ(next(), onData(aId, "one"));
  }
};

TEST_F(DevicesThatLeave, TakeTheirQueueFirstAndThenTheirSubscriptions) {
  subscribe("phone", cId);
  log.clear();
  node->mobiles("other&#x13;another");
  std::vector<std::string> const expected = {
      "RemoteDataController::terminateInactiveDeviceQueue: mOnlineDevIDList.size=2",
      "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'other'",
      "RemoteDataController::terminateInactiveDeviceQueue: Compare with Device ID: 'another'",
      "RemoteDataController::terminateInactiveDeviceQueue: Device ID: 'phone', not present in the "
      "updated list.",
      "RemoteDataController::removeInactiveDeviceSubscription: mOnlineDevIDList.size=2",
      "RemoteDataController::removeInactiveDeviceSubscription: Compare with Device ID: 'other'",
      "RemoteDataController::removeInactiveDeviceSubscription: Compare with Device ID: 'another'",
      "RemoteDataController::removeInactiveDeviceSubscription: Device ID: 'phone', not present in "
      "the updated list."};
  std::vector<std::string> seen;
  for (std::string const& text : log.texts(PCRealDebug::Detail)) {
    if (text.find("Inactive") != std::string::npos) {
      seen.push_back(text);
    }
  }
  EXPECT_EQ(seen, expected);
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
  node->change("/Zelv/A", "two");
  expectSilence();
}

TEST_F(DevicesThatLeave, LeaveTheOthersAlone) {
  subscribe("phone", cId);
  node->mobiles("other&#x13;phone");
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "RemoteDataController::terminateInactiveDeviceQueue: Device ID: 'phone', "
                          "found."));
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "RemoteDataController::removeInactiveDeviceSubscription: Device ID: "
                          "'phone', found."));
  node->change("/Zelv/A", "two");
  EXPECT_EQ(next(), onData(cId, "two"));
}

TEST_F(DevicesThatLeave, DoNotTakeThatOfADeviceWithoutAName) {
  subscribe("", cId);
  node->mobiles("other");
  EXPECT_EQ(node->remote->getContexts().size(), 1U);
  EXPECT_EQ(node->remote->getQueues().size(), 1U);
  node->change("/Zelv/A", "two");
  EXPECT_EQ(next(), onData(cId, "two"));
}

TEST_F(DevicesThatLeave, TakeEverythingWhenTheyAreTheLast) {
  subscribe("phone", cId);
  subscribe("", cOther);
  node->mobiles("");
  EXPECT_EQ(log.count(PCRealDebug::Detail,
                      "RemoteDataController::removeAllRemoteDeviceService: Remote Device List "
                      "empty, remove everything."),
            1);
  EXPECT_EQ(log.count(PCRealDebug::Detail,
                      "RemoteDataController::removeAllRemoteDeviceService: Remote Device List "
                      "empty, remove all remote subscriptions."),
            2);
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
}

TEST_F(DevicesThatLeave, TakeThoseOfTelevisionsWithThem) {
  node->controller.requestData("/Zelv[@DeviceId='B']/A", nullptr, &callback);
  EXPECT_THAT(next(), HasSubstr("<XPath>/Zelv/A</XPath>"));
  subscribe("B", cId);
  node->mobiles("phone");
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  // The next request makes a new queue.
  node->controller.requestData("/Zelv[@DeviceId='B']/B", nullptr, &callback);
  EXPECT_THAT(next(), HasSubstr("<XPath>/Zelv/B</XPath>"));
  EXPECT_EQ(node->remote->getQueues().size(), 1U);
}

TEST_F(DevicesThatLeave, TakeSubscriptionsWhoseFirstReadIsQueued) {
  holdWorker();
  node->controller.requestData("/Zelv/A", nullptr, &callback);
  inside.Take();
  node->texts.put("/Zelv/B", "stale");
  hear(device->subscribeData(cId, "/Zelv/B"));
  hear(device->requestData(cId, "/Zelv/B"));
  node->mobiles("other");
  EXPECT_EQ(node->remote->getContexts().size(), 0U);
  leave.Give();
  expectSilence();
}

TEST_F(DevicesThatLeave, AreTakenOutOfAMultiStringOfThem) {
  EXPECT_THAT(RemoteDataController::multiStringToList("a&#x13;b"),
              ::testing::ElementsAre("a", "b"));
  EXPECT_THAT(RemoteDataController::multiStringToList(""), IsEmpty());
}

// Start and end.

class RemoteService : public RemoteDataTest {};

TEST_F(RemoteService, StartsWhenTheAddressArrives) {
  EXPECT_THAT(log, Not(Logged(PCRealDebug::Notable, HasSubstr("Starting DataControl service"))));
  node->start();
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "RemoteDataController::onData: Starting DataControl service on "
                          "'tcp://127.0.0.1:4446/'"));
  EXPECT_EQ(RawDevice::tell(4446, device->requestData(cId, "/Zelv/A")), "\n");
  EXPECT_EQ(next(), onData(cId, "one"));
}

TEST_F(RemoteService, EndsWithTheController) {
  node->start();
  hear(device->requestData(cId, "/Zelv/A"));
  EXPECT_EQ(next(), onData(cId, "one"));
  node->stop();
  EXPECT_EQ(node->remote->getQueues().size(), 0U);
  EXPECT_EQ(node->remote->getQueues().getPending(), 0U);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "RemoteDataController::terminate: terminate all Device Service Queue."));
  // An address that comes late starts nothing, and a value makes no queue.
  log.clear();
  node->remote->onData(Testing::RemoteNode<>::cAddressPath, "127.0.0.1", nullptr, GUID(cOther));
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Notable, "Created a new tcp listener"));
  node->remote->sendOnData(GUID(cId), Infrastructure::URL(device->url()), "late", "phone");
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          "RemoteDataController::sendRequestData: ERROR sending message to "
                          "deviceID = 'phone'"));
}

TEST_F(RemoteService, EndsWithRequestsThatAreStillQueued) {
  node->start();
  holdWorker();
  node->controller.requestData("/Zelv/A", nullptr, &callback);
  inside.Take();
  hear(device->requestData(cId, "/Zelv/A"));
  hear(device->subscribeData(cId, "/Zelv/A"));
  EXPECT_EQ(node->remote->getContexts().size(), 2U);
  leave.Give();
  leave.Give();
  leave.Give();
  node->stop();
}

TEST_F(RemoteService, IsWhatADataControllerMakesForItself) {
  DataController const controller("");
  // The local address and the list of phones.
  EXPECT_EQ(controller.getQueueSize(), 2U);
}

}  // namespace
}  // namespace Zelv::Controller
