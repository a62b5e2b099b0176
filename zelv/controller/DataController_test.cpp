#include "zelv/controller/DataController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/testing/FakeProvider.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/controller/testing/RunningSystem.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::ElementsAre;
using Testing::FakeProvider;
using Testing::Heard;
using ::testing::IsEmpty;
using Testing::RecordingCallback;
using Testing::RunningSystem;
using ::testing::SizeIs;

char const cDevice[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";

class Context : public ContextInformation {};

/// The kind of an exception and its text.
std::string thrownBy(std::function<void()> const& aOperation) {
  try {
    aOperation();
  } catch (std::invalid_argument const& error) {
    return std::string("invalid_argument ") + error.what();
  } catch (std::out_of_range const&) {
    return "out_of_range";
  } catch (std::logic_error const& error) {
    return std::string("logic_error ") + error.what();
  } catch (std::runtime_error const& error) {
    return std::string("runtime_error ") + error.what();
  }
  return "nothing";
}

class DataControllerTest : public ::testing::Test {
 protected:
  void knowItself(std::string const& aDevice = cDevice) {
    devices.get = [aDevice](std::string const& aXPath, std::string& aData, GUID const&) {
      aData = aXPath == "/Zelv/Devices/LocalTV/@ID" ? aDevice : "value of " + aXPath;
      return 0;
    };
    controller.registerDataProvider("/Zelv/Devices", &devices);
  }

  // Callbacks and providers outlive the worker.
  RecordingCallback callback;
  RecordingCallback second;
  FakeProvider provider;
  FakeProvider devices;
  Context context;
  LogCapture log;
  DataController controller{"", nullptr};
};

// Paths.

TEST_F(DataControllerTest, TakesOnlyPathsBelowItsOwnRootForLocal) {
  DataController const named("me", nullptr);
  EXPECT_TRUE(named.isLocalXPath("/Zelv/"));
  EXPECT_TRUE(named.isLocalXPath("/Zelv/a"));
  EXPECT_TRUE(named.isLocalXPath("/Zelv[@DeviceId='me']/a"));
  EXPECT_TRUE(named.isLocalXPath("/Zelv[@DeviceId=\"me\"]/a"));
  for (char const* path :
       {"", "/", "/Zelv", "Zelv/a", "/ZelvOld/a", "/Zelv[@DeviceId='me']", "/Zelv[@DeviceId='me'",
        "/Zelv[@DeviceId='me\"]/a", "/Zelv[@DeviceId=me]/a", "/Zelv[@DeviceId='you']/a",
        "/Zelv[@DeviceId='']/a", "/Zelv[@ID='me']/a", "/zelv/a", " /Zelv/a"}) {
    EXPECT_FALSE(named.isLocalXPath(path)) << path;
  }
  // Before the device is known, the form that names nobody is local.
  EXPECT_TRUE(controller.isLocalXPath("/Zelv[@DeviceId='']/a"));
}

TEST(DataController, ConvertsADevicePathIntoThePlainForm) {
  EXPECT_EQ(DataController::convertToLocalXPath("/Zelv[@DeviceId='x']/a/b"), "/Zelv/a/b");
  EXPECT_EQ(DataController::convertToLocalXPath("/Zelv[@DeviceId=\"x\"]/a"), "/Zelv/a");
  EXPECT_EQ(DataController::convertToLocalXPath("/Zelv[@DeviceId=/a"), "/Zelv/a");
  EXPECT_EQ(DataController::convertToLocalXPath("/Zelv/a"), "/Zelv/a");
  EXPECT_EQ(DataController::convertToLocalXPath(""), "");
}

TEST(DataController, ThrowsOutOfRangeForADevicePathWithNoStepBehindIt) {
  EXPECT_THROW(DataController::convertToLocalXPath("/Zelv[@DeviceId='x']"), std::out_of_range);
  EXPECT_THROW(DataController::convertToLocalXPath("/Zelv[@DeviceId="), std::out_of_range);
}

TEST(DataController, FindsTheDeviceThatAPathNames) {
  EXPECT_EQ(DataController::getDeviceIdFromXPath("/Zelv[@DeviceId='x\"y']/a'"), "x\"y");
  EXPECT_EQ(DataController::getDeviceIdFromXPath("/Zelv[@DeviceId=\"x'y\"]/a"), "x'y");
  EXPECT_EQ(DataController::getDeviceIdFromXPath("/Zelv/a"), "");
  EXPECT_EQ(DataController::getDeviceIdFromXPath("/Zelv[@DeviceId=x]/a"), "");
  EXPECT_EQ(DataController::getDeviceIdFromXPath("/Zelv[@DeviceId="), "");
  // Without a closing quote, the rest.
  EXPECT_EQ(DataController::getDeviceIdFromXPath("/Zelv[@DeviceId='x/a"), "x/a");
}

TEST_F(DataControllerTest, FindsOnlyALineFeedInvalid) {
  EXPECT_EQ(thrownBy([] { DataController::validateXPath("/Zelv/\n"); }),
            "runtime_error Invalid XPath.");
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "DataController::validateXPath: Invalid XPath '/Zelv/\n'"));
  EXPECT_EQ(thrownBy([] { DataController::validateXPath("[/\r\t'"); }), "nothing");
}

// What is known while the call runs.

TEST_F(DataControllerTest, ThrowsWhatIsKnownWhileTheCallRuns) {
  struct Case {
    std::function<void()> call;
    std::string thrown;
  };
  std::vector<Case> const cases = {
      {[&] { controller.requestData("/Zelv/\n", nullptr, &callback); },
       "runtime_error Invalid XPath."},
      {[&] { controller.subscribeData("/Zelv/\n", nullptr, &callback); },
       "runtime_error Invalid XPath."},
      {[&] { controller.setData("/Zelv", "v", &callback, true); },
       "runtime_error Cannot set data on remote XPath."},
      {[&] { controller.addData("/Zelv", "v", &callback, true); },
       "runtime_error Cannot add data to remote XPath."},
      {[&] { controller.registerDataProvider("/Zelv", &provider); },
       "logic_error Cannot register data provider for remote XPath."},
      {[&] {
         controller.registerDataProvider("/Zelv/A", &provider);
         controller.registerDataProvider("/Zelv/A", &provider);
       },
       "logic_error Duplicate subscription for XPath."},
      {[&] { controller.unsubscribeData(GUID::createGUID()); }, "nothing"},
  };
  for (Case const& one : cases) {
    EXPECT_EQ(thrownBy(one.call), one.thrown);
  }
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DataSubscriptionManager::GetSubscriptionInfo: Subscription not found!"));
  // The controller is none the worse for it: its locks are free.
  controller.initialize();
  controller.requestData("/Zelv/A", nullptr, &callback);
  EXPECT_TRUE(callback.waitFor(1));
}

TEST_F(DataControllerTest, DoesNotValidateThePathOfAWrite) {
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.setData("/Zelv/A/\n", "v", &callback, true);
  controller.addData("/Zelv/A/\n", "v", &callback, true);
  controller.requestData("/Zelv/A", nullptr, &callback);
  controller.initialize();
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_THAT(provider.calls(),
              ElementsAre("set /Zelv/A/\n = v", "add /Zelv/A/\n = v", "get /Zelv/A"));
}

// What is found out later.

TEST_F(DataControllerTest, AnswersARead) {
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.initialize();
  GUID const id = controller.requestData("/Zelv/A/b", &context, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  Heard const heard = callback.heard()[0];
  EXPECT_EQ(heard.kind, Heard::Data);
  EXPECT_EQ(heard.path, "/Zelv/A/b");
  EXPECT_EQ(heard.value, "value of /Zelv/A/b");
  EXPECT_EQ(heard.context, &context);
  EXPECT_EQ(heard.id, id);
  EXPECT_NE(heard.thread, std::this_thread::get_id());
}

TEST_F(DataControllerTest, PutsALocalReadIntoNoTable) {
  controller.registerDataProvider("/Zelv/A", &provider);
  GUID const id = controller.requestData("/Zelv/A", nullptr, &callback);
  controller.notifyDataSubscriber(id, "value");
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(DataControllerTest, ReportsAReadUnderNoProviderTwice) {
  controller.initialize();
  GUID const id = controller.requestData("/Zelv/Nowhere", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(2));
  for (Heard const& heard : callback.heard()) {
    EXPECT_EQ(heard.kind, Heard::Status);
    EXPECT_EQ(heard.id, id);
    EXPECT_EQ(heard.value, "");
    EXPECT_NE(heard.thread, std::this_thread::get_id());
  }
}

TEST_F(DataControllerTest, ReportsAFailedWriteWithItsTransaction) {
  controller.initialize();
  GUID const set = controller.setData("/Zelv/Nowhere", "v", &callback, true);
  GUID const add = controller.addData("/Zelv/Nowhere", "v", &second, true);
  ASSERT_TRUE(callback.waitFor(1));
  ASSERT_TRUE(second.waitFor(1));
  EXPECT_EQ(callback.heard()[0].id, set);
  EXPECT_EQ(second.heard()[0].id, add);
  EXPECT_FALSE(set == add);
}

TEST_F(DataControllerTest, RunsTasksInTheOrderOfTheCalls) {
  controller.registerDataProvider("/Zelv/A", &provider);
  // Queued before the worker runs, and while it does.
  controller.setData("/Zelv/A/1", "v", nullptr, true);
  controller.requestData("/Zelv/A/2", nullptr, &callback);
  controller.addData("/Zelv/A/3", "v", nullptr, true);
  controller.subscribeData("/Zelv/A/4", nullptr, &callback);
  EXPECT_THAT(provider.calls(), IsEmpty());
  controller.initialize();
  controller.setData("/Zelv/A/5", "v", nullptr, true);
  controller.requestData("/Zelv/A/6", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(3));
  EXPECT_THAT(provider.calls(),
              ElementsAre("set /Zelv/A/1 = v", "get /Zelv/A/2", "add /Zelv/A/3 = v",
                          "get /Zelv/A/4", "set /Zelv/A/5 = v", "get /Zelv/A/6"));
}

TEST_F(DataControllerTest, CountsWhatIsQueued) {
  // Its own subscription on the discovered devices.
  EXPECT_EQ(controller.getQueueSize(), 1U);
  controller.requestData("/Zelv/A", nullptr, &callback);
  controller.setData("/Zelv/A", "v", nullptr, true);
  EXPECT_EQ(controller.getQueueSize(), 3U);
  controller.initialize();
  ASSERT_TRUE(callback.waitFor(2));
  controller.requestData("/Zelv/A", nullptr, &second);
  ASSERT_TRUE(second.waitFor(2));
  EXPECT_EQ(controller.getQueueSize(), 0U);
}

// Identity.

TEST_F(DataControllerTest, LearnsWhichDeviceItIsFromTheDeviceProvider) {
  knowItself();
  EXPECT_THAT(devices.calls(), ElementsAre("get /Zelv/Devices/LocalTV/@ID"));
  EXPECT_THAT(log, Logged(PCRealDebug::Notable,
                          std::string("DataController::registerDataProvider: mLocalDeviceId='") +
                              cDevice + "'"));
  EXPECT_TRUE(controller.isLocalXPath(std::string("/Zelv[@DeviceId='") + cDevice + "']/a"));
}

TEST_F(DataControllerTest, AsksNoOtherProviderForIt) {
  controller.registerDataProvider("/Zelv/Devices/Mobile", &provider);
  controller.registerDataProvider("/Zelv/Device", &provider);
  EXPECT_THAT(provider.calls(), IsEmpty());
}

TEST_F(DataControllerTest, ReadsItsOwnPathsInEitherKindOfQuotes) {
  knowItself();
  controller.initialize();
  for (std::string const quote : {"'", "\""}) {
    std::string const path = "/Zelv[@DeviceId=" + quote + cDevice + quote + "]/Devices/x";
    RecordingCallback reader;
    controller.requestData(path, nullptr, &reader);
    ASSERT_TRUE(reader.waitFor(1));
    EXPECT_EQ(reader.heard()[0].path, path);
    EXPECT_EQ(reader.heard()[0].value, "value of /Zelv/Devices/x");
  }
}

TEST_F(DataControllerTest, FindsNoProviderForAWriteInTheFormOfItsOwnId) {
  knowItself();
  controller.initialize();
  std::string const path = std::string("/Zelv[@DeviceId='") + cDevice + "']/Devices/x";
  GUID const id = controller.setData(path, "v", &callback, true);
  controller.requestData("/Zelv/Devices/x", nullptr, &second);
  ASSERT_TRUE(second.waitFor(1));
  ASSERT_THAT(callback.heard(), SizeIs(1));
  EXPECT_EQ(callback.heard()[0].kind, Heard::Status);
  EXPECT_EQ(callback.heard()[0].id, id);
}

TEST_F(DataControllerTest, ThrowsABadIdentityAtWhoRegistersIt) {
  EXPECT_EQ(thrownBy([&] { knowItself(""); }), "invalid_argument Empty GUID string");
  controller.unregisterDataProvider("/Zelv/Devices");
  EXPECT_EQ(thrownBy([&] { knowItself("zzzzzzzz-01e0-41cd-950e-1566f18e0983"); }),
            "invalid_argument Invalid GUID string");
  // It stays registered: the branch is taken.
  EXPECT_EQ(thrownBy([&] { knowItself(); }), "logic_error Duplicate subscription for XPath.");
}

TEST_F(DataControllerTest, SurvivesADeviceProviderThatIsNull) {
  controller.registerDataProvider("/Zelv/Devices", nullptr);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "DataController::registerDataProvider: no provider "
                          "to read the identity of."));
}

TEST_F(DataControllerTest, HoldsNoLockWhileItReadsTheIdentity) {
  devices.get = [this](std::string const&, std::string& aData, GUID const&) {
    controller.requestData("/Zelv/Devices/x", nullptr, &callback);
    aData = cDevice;
    return 0;
  };
  controller.registerDataProvider("/Zelv/Devices", &devices);
  EXPECT_EQ(controller.getQueueSize(), 2U);
}

// Subscriptions.

TEST_F(DataControllerTest, DeliversTheCurrentValueFirst) {
  controller.registerDataProvider("/Zelv/A", &provider);
  GUID const id = controller.subscribeData("/Zelv/A/b", &context, &callback);
  controller.initialize();
  ASSERT_TRUE(callback.waitFor(1));
  EXPECT_EQ(callback.heard()[0].id, id);
  EXPECT_EQ(callback.heard()[0].value, "value of /Zelv/A/b");
  EXPECT_EQ(callback.heard()[0].context, &context);
  controller.notifyDataSubscribers("/Zelv/A/b", "new", GUID::createGUID());
  ASSERT_THAT(callback.heard(), SizeIs(2));
  EXPECT_EQ(callback.heard()[1].id, id);
  EXPECT_EQ(callback.heard()[1].value, "new");
  EXPECT_EQ(callback.heard()[1].context, &context);
  EXPECT_EQ(callback.heard()[1].thread, std::this_thread::get_id());
}

TEST_F(DataControllerTest, TellsASubscriberNothingAfterItUnsubscribed) {
  GUID const id = controller.subscribeData("/Zelv/A", nullptr, &callback);
  controller.unsubscribeData(id);
  controller.notifyDataSubscribers("/Zelv/A", "new", GUID::createGUID());
  controller.notifyDataSubscriber(id, "new");
  EXPECT_THAT(callback.heard(), IsEmpty());
  controller.unsubscribeData(id);
}

TEST_F(DataControllerTest, TellsOneSubscriberByItsId) {
  GUID const id = controller.subscribeData("/Zelv/A", &context, &callback);
  controller.notifyDataSubscriber(id, "for you");
  EXPECT_EQ(callback.heard().at(0).value, "for you");
  EXPECT_EQ(callback.heard().at(0).path, "/Zelv/A");
}

TEST_F(DataControllerTest, LetsASubscriberCallBackIn) {
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.initialize();
  callback.reaction = [this](Heard const& aHeard) {
    if (aHeard.value == "new") {
      controller.requestData("/Zelv/A/again", nullptr, &second);
      controller.subscribeData("/Zelv/A/more", nullptr, &second);
      controller.setData("/Zelv/A/x", "v", nullptr, true);
    }
  };
  controller.subscribeData("/Zelv/A/b", nullptr, &callback);
  controller.notifyDataSubscribers("/Zelv/A/b", "new", GUID::createGUID());
  EXPECT_TRUE(second.waitFor(2));
}

TEST_F(DataControllerTest, LetsASubscriberUnsubscribeWhileItIsTold) {
  GUID const id = controller.subscribeData("/Zelv/A", nullptr, &callback);
  callback.reaction = [&](Heard const&) { controller.unsubscribeData(id); };
  controller.notifyDataSubscribers("/Zelv/A", "new", GUID::createGUID());
  controller.notifyDataSubscribers("/Zelv/A", "newer", GUID::createGUID());
  EXPECT_EQ(callback.count(), 1U);
}

TEST_F(DataControllerTest, AcceptsNoCallbackAtAll) {
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.requestData("/Zelv/A", nullptr, nullptr);
  controller.requestData("/Zelv/Nowhere", nullptr, nullptr);
  GUID const id = controller.subscribeData("/Zelv/A", nullptr, nullptr);
  controller.setData("/Zelv/A", "v", nullptr, true);
  controller.setData("/Zelv/Nowhere", "v", nullptr, true);
  controller.requestData("/elsewhere", nullptr, nullptr);
  controller.requestData("/Zelv/A", nullptr, &callback);
  controller.initialize();
  ASSERT_TRUE(callback.waitFor(1));
  controller.notifyDataSubscribers("/Zelv/A", "new", GUID::createGUID());
  controller.notifyDataSubscriber(id, "new");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DataSubscriptionManager::notifySubscriber: Found NULL "
                          "IBaseDataCallback pointer!!!."));
}

TEST_F(DataControllerTest, DoesNothingInItsEmptyOperations) {
  controller.subscribeData("/Zelv/A", nullptr, &callback);
  controller.unsubscribeForAllData("device");
  controller.updateSubscriberStatus(GUID::createGUID(), "status");
  controller.onStatus(StatusInformation("text"), GUID::createGUID());
  controller.notifyDataSubscribers("/Zelv/A", "new", GUID::createGUID());
  EXPECT_EQ(callback.count(), 1U);
}

// Without a way to other devices.

TEST_F(DataControllerTest, RecordsWhatIsAskedOfOtherDevicesAndNeverAnswers) {
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.initialize();
  GUID const request = controller.requestData("/Zelv[@DeviceId='x']/a", &context, &callback);
  GUID const subscription = controller.subscribeData("/elsewhere", nullptr, &callback);
  controller.requestData("/Zelv/A", nullptr, &second);
  ASSERT_TRUE(second.waitFor(1));
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "UnreachableDataHandler::executeGetData: no way to the device of XPath "
                          "'/Zelv[@DeviceId='x']/a'."));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "UnreachableDataHandler::executeGetData: no way to the device of XPath "
                          "'/elsewhere'."));
  // An answer would find its way.
  controller.notifyDataSubscriber(request, "answer");
  controller.notifyDataSubscriber(subscription, "answer");
  ASSERT_THAT(callback.heard(), SizeIs(2));
  EXPECT_EQ(callback.heard()[0].path, "/Zelv[@DeviceId='x']/a");
  EXPECT_EQ(callback.heard()[0].context, &context);
  EXPECT_EQ(callback.heard()[0].id, request);
}

// Reads that follow a change, through the library that runs.

class DataControllerSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(system.started);
    data = system.data();
    ASSERT_NE(data, nullptr);
    provider.set = [this](std::string const& aXPath, std::string const& aData, GUID const& aId) {
      data->notifyDataSubscribers(aXPath, aData, aId);
      return 0;
    };
    data->registerDataProvider("/Zelv/Test", &provider);
  }

  RecordingCallback callback;
  RecordingCallback second;
  FakeProvider provider;
  RunningSystem system;
  ICoreData* data = nullptr;
};

TEST_F(DataControllerSystemTest, ReadsThePathOfASubscriberAboveAChange) {
  GUID const id = data->subscribeData("/Zelv/Test/a", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(1));
  data->setData("/Zelv/Test/a/b", "set", nullptr, true);
  ASSERT_TRUE(callback.waitFor(2));
  Heard const heard = callback.heard()[1];
  EXPECT_EQ(heard.path, "/Zelv/Test/a");
  EXPECT_EQ(heard.value, "value of /Zelv/Test/a");
  EXPECT_EQ(heard.id, id);
  EXPECT_EQ(heard.thread, callback.heard()[0].thread);
}

TEST_F(DataControllerSystemTest, TellsASubscriberNothingOfAFailedReadAfterAChange) {
  data->subscribeData("/Zelv/Nowhere", nullptr, &callback);
  ASSERT_TRUE(callback.waitFor(2));
  data->notifyDataSubscribers("/Zelv/Nowhere/b", "new", GUID::createGUID());
  data->requestData("/Zelv/Test", nullptr, &second);
  ASSERT_TRUE(second.waitFor(1));
  EXPECT_EQ(callback.count(), 2U);
}

TEST_F(DataControllerSystemTest, LetsWorkerAndReporterTellSubscribersThatAskAtTheSameTime) {
  // One is told on the worker after reads, the other on the reporting thread; both call back in.
  callback.reaction = second.reaction = [this](Heard const& aHeard) {
    if (aHeard.path != "/Zelv/Test/z" && aHeard.kind == Heard::Data) {
      data->requestData("/Zelv/Test/z", nullptr, &callback);
    }
  };
  data->subscribeData("/Zelv/Test/a", nullptr, &callback);
  data->subscribeData("/Zelv/Test/a/b", nullptr, &second);
  for (int round = 0; round < 300; ++round) {
    data->notifyDataSubscribers("/Zelv/Test/a/b", "new", GUID::createGUID());
  }
  // Two first deliveries, 300 of either kind, and a read after each.
  EXPECT_TRUE(second.waitFor(301));
  EXPECT_TRUE(callback.waitFor(301 + 602));
}

}  // namespace
}  // namespace Zelv::Controller
