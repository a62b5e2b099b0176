// Where calls to objects of others are timed.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "zelv/controller/LocalDataController.h"
#include "zelv/controller/TimerController.h"
#include "zelv/controller/UserInputSubscriptionManager.h"
#include "zelv/controller/testing/CommandTrial.h"
#include "zelv/controller/testing/FakeProvider.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/controller/testing/RecordingUserCallback.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/Fakes.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::LogCapture;
using Testing::FakeProvider;
using Testing::RecordingCallback;

constexpr std::int64_t cMs = 1000000;

/// The record on one line: "OPERATION CALLEE SUBJECT MS".
std::string textOf(LongestCall const& aCall) {
  LongestCall::Record const record = aCall.get();
  return record.operation + " " + record.callee + " " + record.subject + " " +
         std::to_string(record.nanoseconds / cMs);
}

class TimedData : public ::testing::Test {
 protected:
  TimedData() { controller.registerDataProvider("/Zelv/A", &provider); }

  void get(std::string const& aPath) {
    controller.executeGetData(id, aPath, nullptr, &callback, true);
  }
  void write(std::string const& aPath, bool aAdd) {
    controller.executeSetData(id, aPath, "value", aAdd, &callback, true);
  }
  /// Lets a provider take its time.
  static auto taking(int aMs) {
    return [aMs](std::string const&, auto&, GUID const&) {
      FakeClock::Advance(aMs);
      return 0;
    };
  }

  LogCapture log;
  FakeProvider provider;
  RecordingCallback callback;
  GUID const id = GUID::createGUID();
  LocalDataController controller;
};

TEST_F(TimedData, TimesTheReadAndTheCallbackEachForItself) {
  provider.get = taking(7);
  callback.reaction = [](Testing::Heard const&) { FakeClock::Advance(5); };
  get("/Zelv[@DeviceId='x']/A/b");
  EXPECT_EQ(textOf(controller.getLongestProvider()),
            "getData Zelv::Controller::Testing::FakeProvider /Zelv/A/b 7");
  EXPECT_EQ(textOf(controller.getLongestCallback()),
            "onData Zelv::Controller::Testing::RecordingCallback /Zelv[@DeviceId='x']/A/b 5");
}

TEST_F(TimedData, TimesWritesAndAdditions) {
  provider.set = taking(3);
  provider.add = taking(4);
  write("/Zelv/A/b", false);
  EXPECT_EQ(textOf(controller.getLongestProvider()),
            "setData Zelv::Controller::Testing::FakeProvider /Zelv/A/b 3");
  write("/Zelv/A/c", true);
  EXPECT_EQ(textOf(controller.getLongestProvider()),
            "addData Zelv::Controller::Testing::FakeProvider /Zelv/A/c 4");
}

TEST_F(TimedData, TimesProvidersThatThrowAndTheReportOfIt) {
  provider.get = [](std::string const&, std::string&, GUID const&) -> int {
    FakeClock::Advance(9);
    throw std::runtime_error("no");
  };
  callback.reaction = [](Testing::Heard const&) { FakeClock::Advance(2); };
  get("/Zelv/A/b");
  EXPECT_EQ(textOf(controller.getLongestProvider()),
            "getData Zelv::Controller::Testing::FakeProvider /Zelv/A/b 9");
  EXPECT_EQ(textOf(controller.getLongestCallback()),
            "onStatus Zelv::Controller::Testing::RecordingCallback /Zelv/A/b 2");
}

TEST_F(TimedData, TimesTheReportThatThereIsNoProvider) {
  callback.reaction = [](Testing::Heard const&) { FakeClock::Advance(2); };
  get("/Zelv/B");
  EXPECT_EQ(textOf(controller.getLongestCallback()),
            "onStatus Zelv::Controller::Testing::RecordingCallback /Zelv/B 2");
  EXPECT_EQ(controller.getLongestProvider().get().nanoseconds, 0);
}

class TimerCallback : public IBaseTimerCallback {
 public:
  void onTimer(std::string const&, GUID) override { FakeClock::Advance(6); }
  void onStatus(StatusInformation const&, GUID const&) override {}
};

TEST(TimedTimer, TimesTheCallback) {
  {
    TimerCallback callback;
    TimerController controller;
    controller.createTimer(10, 1, "tea", &callback);
    FakeClock::Advance(10);
    LongestCall::Record const record = controller.getLongestCallback().get();
    EXPECT_EQ(record.operation, "onTimer");
    EXPECT_EQ(record.subject, "tea");
    EXPECT_EQ(record.nanoseconds, 6 * cMs);
  }
  Platform::Fake::ResetFakes();
}

TEST(TimedInput, TimesTheCallback) {
  Testing::RecordingUserCallback callback(
      [](Testing::HeardInput const&) { FakeClock::Advance(8); });
  UserInputSubscriptionManager manager;
  manager.addSubscription("Key", &callback, "");
  manager.notifySubscribers("Key", "v", "device", "user");
  EXPECT_EQ(textOf(manager.getLongestCallback()),
            "onUserInput Zelv::Controller::Testing::RecordingUserCallback Key 8");
}

class TimedCommand : public Testing::CommandTrial {};

TEST_F(TimedCommand, TimesTheHandler) {
  start();
  Testing::CommandHandler handler([](std::string const&, CommandArgs const&) {
    FakeClock::Advance(8);
    return "";
  });
  GUID const handle = mController->registerCommandHandler("Work", &handler);
  mController->executeCommand("<Work>x</Work>", "", &mCallback);
  settle();
  mController->unregisterCommandHandler(handle);
  LongestCall::Record const record = mController->getStatistics().mLongestCallback;
  EXPECT_EQ(record.operation, "onCommand");
  EXPECT_EQ(record.callee, "Zelv::Controller::Testing::CommandHandler");
  EXPECT_EQ(record.subject, "Work");
  EXPECT_EQ(record.nanoseconds, 8 * cMs);
}

TEST_F(TimedCommand, TimesTheCallerThatIsToldTheReturn) {
  start();
  Testing::CommandCallback caller([](std::string const&) { FakeClock::Advance(9); });
  Testing::CommandHandler handler(
      [](std::string const&, CommandArgs const&) { return "<Result/>"; });
  GUID const handle = mController->registerCommandHandler("Work", &handler);
  mController->executeCommand("<Work>", "", &caller);
  settle();
  mController->unregisterCommandHandler(handle);
  mController->discardCommandCallback(&caller);
  LongestCall::Record const record = mController->getStatistics().mLongestCallback;
  EXPECT_EQ(record.operation, "onReturn");
  EXPECT_EQ(record.callee, "Zelv::Controller::Testing::CommandCallback");
  EXPECT_EQ(record.subject, "");
  EXPECT_EQ(record.nanoseconds, 9 * cMs);
}

}  // namespace
}  // namespace Zelv::Controller
