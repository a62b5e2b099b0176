#include "zelv/controller/LocalDataController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/testing/FakeProvider.h"
#include "zelv/controller/testing/RecordingCallback.h"
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
using ::testing::SizeIs;

class Context : public ContextInformation {};

class LocalDataControllerTest : public ::testing::Test {
 protected:
  void get(std::string const& aPath) {
    controller.executeGetData(id, aPath, &context, &callback, true);
  }
  void set(std::string const& aPath, bool aNotifyRemote = true) {
    controller.executeSetData(id, aPath, "value", false, &callback, aNotifyRemote);
  }
  void add(std::string const& aPath, bool aNotifyRemote = true) {
    controller.executeSetData(id, aPath, "value", true, &callback, aNotifyRemote);
  }

  /// That the callback heard of aCount failures and nothing else.
  void expectFailures(std::size_t aCount) {
    EXPECT_THAT(callback.heard(), SizeIs(aCount));
    for (Heard const& heard : callback.heard()) {
      EXPECT_EQ(heard.kind, Heard::Status);
      EXPECT_EQ(heard.value, "");
      EXPECT_EQ(heard.id, id);
    }
  }

  FakeProvider provider;
  RecordingCallback callback;
  Context context;
  GUID const id = GUID::createGUID();
  LogCapture log;
  LocalDataController controller;
};

TEST_F(LocalDataControllerTest, AnswersAReadWithPathAndContextAsTheyCame) {
  controller.registerDataProvider("/Zelv/A", &provider);
  get("/Zelv/A/b");
  ASSERT_THAT(callback.heard(), SizeIs(1));
  Heard const heard = callback.heard()[0];
  EXPECT_EQ(heard.kind, Heard::Data);
  EXPECT_EQ(heard.path, "/Zelv/A/b");
  EXPECT_EQ(heard.value, "value of /Zelv/A/b");
  EXPECT_EQ(heard.context, &context);
  EXPECT_EQ(heard.id, id);
}

TEST_F(LocalDataControllerTest, ReadsADevicePathInItsPlainFormAndAnswersInTheOther) {
  controller.registerDataProvider("/Zelv/A", &provider);
  get("/Zelv[@DeviceId='x']/A/b");
  EXPECT_THAT(provider.calls(), ElementsAre("get /Zelv/A/b"));
  EXPECT_EQ(callback.heard().at(0).path, "/Zelv[@DeviceId='x']/A/b");
}

TEST_F(LocalDataControllerTest, ThrowsForADevicePathWithNoStepBehindIt) {
  EXPECT_THROW(get("/Zelv[@DeviceId='x']"), std::out_of_range);
  EXPECT_THROW(controller.getData("/Zelv[@DeviceId='x']", nullptr, id, &provider, &callback),
               std::out_of_range);
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(LocalDataControllerTest, GivesTheTransactionToTheProvider) {
  GUID seen;
  provider.get = [&](std::string const&, std::string&, GUID const& aId) {
    seen = aId;
    return 0;
  };
  controller.registerDataProvider("/Zelv/A", &provider);
  get("/Zelv/A");
  EXPECT_EQ(seen, id);
}

TEST_F(LocalDataControllerTest, ReportsAReadUnderNoProviderTwice) {
  get("/Zelv/A");
  expectFailures(2);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "LocalDataController::findDataProvider: DataProvider not found for "
                          "'/Zelv/A'!"));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "LocalDataController::executeGetData: Data provider not found for XPath "
                          "'/Zelv/A'."));
}

TEST_F(LocalDataControllerTest, ReportsAWriteUnderNoProviderOnce) {
  set("/Zelv/A");
  expectFailures(1);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "LocalDataController::findDataProvider: DataProvider not found for "
                          "'/Zelv/A'!"));
}

TEST_F(LocalDataControllerTest, ReportsAnAddUnderNoProviderOnce) {
  add("/Zelv/A");
  expectFailures(1);
}

TEST_F(LocalDataControllerTest, TellsNobodyOfAWriteUnderNoProviderWithoutACallback) {
  controller.executeSetData(id, "/Zelv/A", "value", false, nullptr, true);
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0) << log.dump();
}

TEST_F(LocalDataControllerTest, FindsNoProviderForAWriteInTheFormOfTheOwnDevice) {
  controller.registerDataProvider("/Zelv/A", &provider);
  set("/Zelv[@DeviceId='x']/A");
  EXPECT_THAT(provider.calls(), IsEmpty());
  expectFailures(1);
}

TEST_F(LocalDataControllerTest, LetsAShorterBranchWinOverALongerOne) {
  FakeProvider inner;
  controller.registerDataProvider("/Zelv/A/B", &inner);
  controller.registerDataProvider("/Zelv/A", &provider);
  get("/Zelv/A/B/c");
  EXPECT_THAT(provider.calls(), SizeIs(1));
  EXPECT_THAT(inner.calls(), IsEmpty());
}

TEST_F(LocalDataControllerTest, GivesABranchAllThatBeginsWithItsText) {
  controller.registerDataProvider("/Zelv/Devices", &provider);
  get("/Zelv/DevicesOld");
  EXPECT_THAT(provider.calls(), ElementsAre("get /Zelv/DevicesOld"));
}

TEST_F(LocalDataControllerTest, TakesANullProviderForNone) {
  controller.registerDataProvider("/Zelv/A", nullptr);
  get("/Zelv/A");
  expectFailures(2);
  EXPECT_EQ(controller.findDataProvider("/Zelv/A", nullptr, id), nullptr);
}

TEST_F(LocalDataControllerTest, RefusesASecondProviderForABranch) {
  controller.registerDataProvider("/Zelv/A", &provider);
  try {
    controller.registerDataProvider("/Zelv/A", &provider);
    ADD_FAILURE() << "accepted";
  } catch (std::logic_error const& error) {
    EXPECT_STREQ(error.what(), "Duplicate subscription for XPath.");
  }
}

TEST_F(LocalDataControllerTest, TakesABranchBackAndOnlyWarnsTheSecondTime) {
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.unregisterDataProvider("/Zelv/A");
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0) << log.dump();
  controller.unregisterDataProvider("/Zelv/A");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "LocalDataController::unregisterDataProvider: No data provider "
                          "registered for XPath /Zelv/A."));
  get("/Zelv/A");
  EXPECT_THAT(provider.calls(), IsEmpty());
}

TEST_F(LocalDataControllerTest, ReportsAReadThatThrowsOnce) {
  provider.get = [](std::string const&, std::string&, GUID const&) -> int {
    throw std::runtime_error("not there");
  };
  controller.registerDataProvider("/Zelv/A", &provider);
  get("/Zelv/A");
  expectFailures(1);
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "LocalDataController::getData: Exception: not there"));
}

TEST_F(LocalDataControllerTest, ReportsAWriteThatThrowsOnce) {
  provider.set = provider.add = [](std::string const&, std::string const&, GUID const&) -> int {
    throw std::logic_error("not so");
  };
  controller.registerDataProvider("/Zelv/A", &provider);
  set("/Zelv/A");
  expectFailures(1);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "LocalDataController::executeSetData: Exception in "
                          "IDataProvider::setData: not so"));
  add("/Zelv/A");
  expectFailures(2);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "LocalDataController::executeSetData: Exception in "
                          "IDataProvider::addData: not so"));
}

TEST_F(LocalDataControllerTest, DoesNotLookAtTheResultOfAProvider) {
  provider.get = [](std::string const&, std::string&, GUID const&) { return -1; };
  provider.set =
      provider.add = [](std::string const&, std::string const&, GUID const&) { return -1; };
  controller.registerDataProvider("/Zelv/A", &provider);
  set("/Zelv/A");
  add("/Zelv/A");
  EXPECT_THAT(callback.heard(), IsEmpty());
  get("/Zelv/A");
  EXPECT_EQ(callback.heard().at(0).kind, Heard::Data);
}

TEST_F(LocalDataControllerTest, SaysNothingOfAWriteThatSucceeds) {
  controller.registerDataProvider("/Zelv/A", &provider);
  set("/Zelv/A/x");
  add("/Zelv/A/x");
  EXPECT_THAT(provider.calls(), ElementsAre("set /Zelv/A/x = value", "add /Zelv/A/x = value"));
  EXPECT_THAT(callback.heard(), IsEmpty());
}

TEST_F(LocalDataControllerTest, NeverAsksAProviderAboutSubscriptions) {
  controller.registerDataProvider("/Zelv/A", &provider);
  get("/Zelv/A");
  EXPECT_THAT(provider.calls(), ElementsAre("get /Zelv/A"));
}

TEST_F(LocalDataControllerTest, SurvivesAReadWithoutACallback) {
  controller.executeGetData(id, "/Zelv/A", nullptr, nullptr, true);
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.executeGetData(id, "/Zelv/A", nullptr, nullptr, true);
  EXPECT_THAT(provider.calls(), SizeIs(1));
  provider.get = [](std::string const&, std::string&, GUID const&) -> int {
    throw std::runtime_error("not there");
  };
  controller.executeGetData(id, "/Zelv/A", nullptr, nullptr, true);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "LocalDataController::getData: no callback for XPath '/Zelv/A'."));
  EXPECT_EQ(log.count(PCRealDebug::Warning,
                      "LocalDataController::reportFailure: no callback to report to."),
            2)
      << log.dump();
}

TEST_F(LocalDataControllerTest, SurvivesAFailingWriteWithoutACallback) {
  provider.set = [](std::string const&, std::string const&, GUID const&) -> int {
    throw std::runtime_error("no");
  };
  controller.registerDataProvider("/Zelv/A", &provider);
  controller.executeSetData(id, "/Zelv/A", "value", false, nullptr, true);
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "LocalDataController::reportFailure: no callback to report to."));
}

TEST_F(LocalDataControllerTest, LetsTheExceptionOfACallbackPass) {
  callback.reaction = [](Heard const&) { throw std::runtime_error("mine"); };
  controller.registerDataProvider("/Zelv/A", &provider);
  EXPECT_THROW(get("/Zelv/A"), std::runtime_error);
}

// What runs at the moment.

class CurrentTransaction : public LocalDataControllerTest {
 protected:
  void SetUp() override {
    provider.set = provider.add = [this](std::string const&, std::string const&, GUID const&) {
      setWithin = controller.getCurrentSetDataTransactionId();
      addWithin = controller.getCurrentAddDataTransactionId();
      if (fault) {
        fault();
      }
      return 0;
    };
    controller.registerDataProvider("/Zelv/A", &provider);
  }

  GUID setWithin;
  GUID addWithin;
  std::function<void()> fault;
};

TEST_F(CurrentTransaction, IsNoneAtFirst) {
  EXPECT_EQ(controller.getCurrentSetDataTransactionId(), GUID::nullGUID);
  EXPECT_EQ(controller.getCurrentAddDataTransactionId(), GUID::nullGUID);
}

TEST_F(CurrentTransaction, IsAWithheldSetWhileItsProviderRuns) {
  set("/Zelv/A", false);
  EXPECT_EQ(setWithin, id);
  EXPECT_EQ(addWithin, GUID::nullGUID);
  EXPECT_EQ(controller.getCurrentSetDataTransactionId(), GUID::nullGUID);
  EXPECT_THAT(log, Logged(PCRealDebug::Detail,
                          "LocalDataController::executeSetData: changes for this transaction must "
                          "not propagate remotely!"));
}

TEST_F(CurrentTransaction, IsNoneDuringASetForAll) {
  set("/Zelv/A", true);
  EXPECT_EQ(setWithin, GUID::nullGUID);
  EXPECT_EQ(log.countContaining(PCRealDebug::Detail, "must not propagate"), 0);
}

TEST_F(CurrentTransaction, EndsWithASetThatFails) {
  fault = [] { throw std::runtime_error("no"); };
  GUID afterwards = id;
  callback.reaction = [&](Heard const&) {
    afterwards = controller.getCurrentSetDataTransactionId();
  };
  set("/Zelv/A", false);
  EXPECT_EQ(afterwards, GUID::nullGUID);
}

TEST_F(CurrentTransaction, EndsWithASetThatFailsInAStrangeWay) {
  fault = [] { throw 5; };
  EXPECT_THROW(set("/Zelv/A", false), int);
  EXPECT_EQ(controller.getCurrentSetDataTransactionId(), GUID::nullGUID);
  controller.updateSubscriberStatus(id, "too late");
  expectFailures(1);
}

TEST_F(CurrentTransaction, StaysAWithheldAddUntilTheNextWrite) {
  add("/Zelv/A", false);
  EXPECT_EQ(setWithin, id);
  EXPECT_EQ(addWithin, id);
  EXPECT_EQ(controller.getCurrentSetDataTransactionId(), id);
  EXPECT_EQ(controller.getCurrentAddDataTransactionId(), GUID::nullGUID);
  add("/Zelv/A", true);
  EXPECT_EQ(controller.getCurrentSetDataTransactionId(), GUID::nullGUID);
}

TEST_F(CurrentTransaction, ForgetsAnAddThatFails) {
  fault = [] { throw std::runtime_error("no"); };
  add("/Zelv/A", false);
  EXPECT_EQ(controller.getCurrentAddDataTransactionId(), GUID::nullGUID);
}

TEST_F(CurrentTransaction, LetsItsCallbackHearAStatusWhileTheProviderRuns) {
  GUID const other = GUID::createGUID();
  controller.updateSubscriberStatus(other, "too early");
  fault = [&] { controller.updateSubscriberStatus(other, "half way"); };
  set("/Zelv/A");
  controller.updateSubscriberStatus(other, "too late");
  ASSERT_THAT(callback.heard(), SizeIs(1));
  EXPECT_EQ(callback.heard()[0].kind, Heard::Status);
  EXPECT_EQ(callback.heard()[0].value, "half way");
  EXPECT_EQ(callback.heard()[0].id, other);
}

TEST_F(CurrentTransaction, InitialiseAndTerminateChangeNothing) {
  controller.initialize();
  controller.terminate();
  set("/Zelv/A");
  EXPECT_THAT(provider.calls(), SizeIs(1));
}

}  // namespace
}  // namespace Zelv::Controller
