#include "zelv/controller/LifetimeController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zelv/controller/EnvironmentController.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using ::testing::ElementsAre;
using ::testing::Not;

/// What a component was sent.
struct Sent {
  std::string component;
  int command;
  GUID transaction;
};

class Component : public IBaseLifetimeCallback {
 public:
  using Reaction = std::function<void(eLifetimeCommand)>;

  Component(std::string const& aName, std::vector<Sent>& aSent, Reaction const& aReaction)
      : mName(aName), mSent(aSent), mReaction(aReaction) {}

  void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) override {
    mSent.push_back({mName, aCommand, aTransactionID});
    if (mReaction) {
      mReaction(aCommand);
    }
  }
  void onStatus(StatusInformation const&, GUID const&) override {}

 private:
  std::string mName;
  std::vector<Sent>& mSent;
  Reaction mReaction;
};

class MockLifetimeCallback : public IBaseLifetimeCallback {
 public:
  MOCK_METHOD(void, onLifetime, (eLifetimeCommand, GUID), (override));
  MOCK_METHOD(void, onStatus, (StatusInformation const&, GUID const&), (override));
};

/// An environment with an entry that no registry takes: a name without a component.
class BrokenEnvironment : public EnvironmentController {
 public:
  Table getRegisteredComponents() override {
    Table components = EnvironmentController::getRegisteredComponents();
    components.emplace("m", nullptr);
    return components;
  }
};

class LifetimeControllerTest : public ::testing::Test {
 protected:
  LifetimeControllerTest() { environment() = &mEnvironment; }
  ~LifetimeControllerTest() override { environment() = nullptr; }

  static ICoreEnvironment*& environment() {
    static ICoreEnvironment* current = nullptr;
    return current;
  }

  static ICoreEnvironment* obtain() { return environment(); }

  void add(std::string const& aName, Component::Reaction const& aReaction = nullptr) {
    mEnvironment.registerComponent(aName, new Component(aName, mSent, aReaction));
  }

  /// What was sent so far, as "component command".
  std::vector<std::string> sent() const {
    std::vector<std::string> texts;
    for (Sent const& entry : mSent) {
      texts.push_back(entry.component + " " + std::to_string(entry.command));
    }
    return texts;
  }

  /// Whether another thread gets its turn.
  bool isFree() {
    auto const turn = std::async(std::launch::async, [this] {
      return mController.setLifetimeState(LIFETIME_STOP, "nobody", nullptr);
    });
    return turn.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
  }

  LogCapture mLog;
  std::vector<Sent> mSent;
  EnvironmentController mEnvironment;
  LifetimeController mController{&LifetimeControllerTest::obtain};
};

TEST_F(LifetimeControllerTest, InitializeSendsCommandZeroToAllBeforeCommandOneToAny) {
  add("a");
  add("b");
  mController.initialize();
  EXPECT_THAT(sent(), ElementsAre("a 0", "b 0", "a 1", "b 1"));
}

TEST_F(LifetimeControllerTest, PassGoesByNameNotByRegistration) {
  for (char const* name : {"MultiDevice", "ConfigurationManager", "MultiAccount", "AssetProvider",
                           "ApplicationsManager"}) {
    add(name);
  }
  mController.terminate();
  EXPECT_THAT(sent(), ElementsAre("ApplicationsManager 3", "AssetProvider 3",
                                  "ConfigurationManager 3", "MultiAccount 3", "MultiDevice 3"));
}

TEST_F(LifetimeControllerTest, NamesAreComparedAsPlainText) {
  for (char const* name : {"b", "B", "a", "aa", "", "\xff"}) {
    add(name);
  }
  mController.terminate();
  EXPECT_THAT(sent(), ElementsAre(" 3", "B 3", "a 3", "aa 3", "b 3", "\xff 3"));
}

TEST_F(LifetimeControllerTest, EachComponentReceivesADifferentTransactionIdInEachPass) {
  add("a");
  add("b");
  mController.initialize();
  mController.terminate();
  std::set<std::string> ids;
  for (Sent const& entry : mSent) {
    ids.insert(entry.transaction.toString());
  }
  EXPECT_EQ(ids.size(), 6U);
  EXPECT_EQ(ids.count(GUID::nullGUID.toString()), 0U);
}

TEST_F(LifetimeControllerTest, WithoutComponentsInitializeAndTerminateDoNothing) {
  mController.initialize();
  mController.terminate();
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 0) << mLog.dump();
  EXPECT_EQ(mLog.count(PCRealDebug::Warning), 0) << mLog.dump();
}

TEST_F(LifetimeControllerTest, TerminateReachesAComponentThatWasOnlyInitialised) {
  add("a");
  mController.setLifetimeState(LIFETIME_INITIALISE, "a", nullptr);
  mController.terminate();
  EXPECT_THAT(sent(), ElementsAre("a 0", "a 3"));
}

TEST_F(LifetimeControllerTest, OnlySetLifetimeStateSendsCommandTwo) {
  add("a");
  mController.initialize();
  mController.terminate();
  EXPECT_THAT(sent(), Not(::testing::Contains("a 2")));
  mController.setLifetimeState(LIFETIME_STOP, "a", nullptr);
  EXPECT_EQ(sent().back(), "a 2");
}

TEST_F(LifetimeControllerTest, SetLifetimeStateReachesOneComponentAndReturnsTheIdThatItGot) {
  add("a");
  add("b");
  GUID const id = mController.setLifetimeState(LIFETIME_START, "b", nullptr);
  ASSERT_THAT(sent(), ElementsAre("b 1"));
  EXPECT_EQ(mSent[0].transaction, id);
  EXPECT_NE(id, GUID::nullGUID);
}

TEST_F(LifetimeControllerTest, SetLifetimeStatePassesAnyNumberOn) {
  add("a");
  mController.setLifetimeState(static_cast<eLifetimeCommand>(77), "a", nullptr);
  EXPECT_THAT(sent(), ElementsAre("a 77"));
}

TEST_F(LifetimeControllerTest, SetLifetimeStateDoesNotUseItsCallback) {
  add("a");
  ::testing::StrictMock<MockLifetimeCallback> callback;
  mController.setLifetimeState(LIFETIME_START, "a", &callback);
  EXPECT_THAT(sent(), ElementsAre("a 1"));
}

TEST_F(LifetimeControllerTest, UnknownNameGivesTheAllZeroIdAndAWarning) {
  add("a");
  EXPECT_EQ(mController.setLifetimeState(LIFETIME_START, "A", nullptr), GUID::nullGUID);
  EXPECT_TRUE(mSent.empty());
  EXPECT_THAT(mLog, Logged(PCRealDebug::Warning,
                           "LifetimeController::setLifetimeState: Component not found!"));
}

TEST_F(LifetimeControllerTest, NameWithoutComponentIsAnErrorOfSetLifetimeState) {
  BrokenEnvironment broken;
  environment() = &broken;
  try {
    mController.setLifetimeState(LIFETIME_START, "m", nullptr);
    ADD_FAILURE() << "nothing was thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "component is NULL!");
  }
  EXPECT_THAT(
      mLog, Logged(PCRealDebug::Error, "LifetimeController::setLifetimeState: component is NULL."));
}

TEST_F(LifetimeControllerTest, NameWithoutComponentEndsThePassWhereItStands) {
  BrokenEnvironment broken;
  environment() = &broken;
  for (char const* name : {"a", "z"}) {
    broken.registerComponent(name, new Component(name, mSent, nullptr));
  }
  try {
    mController.initialize();
    ADD_FAILURE() << "nothing was thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "component pointer is NULL!");
  }
  EXPECT_THAT(mLog, Logged(PCRealDebug::Error,
                           "LifetimeController::setAllLifetimeStates: component pointer is NULL."));
  EXPECT_THAT(sent(), ElementsAre("a 0"));
  EXPECT_TRUE(isFree());
}

TEST_F(LifetimeControllerTest, WithoutEnvironmentSetLifetimeStateThrows) {
  environment() = nullptr;
  try {
    mController.setLifetimeState(LIFETIME_START, "a", nullptr);
    ADD_FAILURE() << "nothing was thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "Failed to obtain ICoreEnvironment interface");
  }
  EXPECT_THAT(
      mLog,
      Logged(PCRealDebug::Error,
             "LifetimeController::setLifetimeState: Failed to obtain ICoreEnvironment interface."));
}

TEST_F(LifetimeControllerTest, WithoutEnvironmentEachPassIsLoggedAndSkipped) {
  environment() = nullptr;
  std::string const text =
      "LifetimeController::setAllLifetimeStates: Failed to obtain ICoreEnvironment interface.";
  mController.initialize();
  EXPECT_EQ(mLog.count(PCRealDebug::Error, text), 2) << mLog.dump();
  mController.terminate();
  EXPECT_EQ(mLog.count(PCRealDebug::Error, text), 3) << mLog.dump();
}

TEST_F(LifetimeControllerTest, SystemThatCannotStartCountsAsNoEnvironment) {
  // Neither directory holds a file.
  TemporaryDirectories directories;
  LifetimeController controller;
  EXPECT_THROW(controller.setLifetimeState(LIFETIME_START, "a", nullptr), std::runtime_error);
  EXPECT_THAT(
      mLog,
      Logged(PCRealDebug::Error,
             "LifetimeController::setLifetimeState: Failed to obtain ICoreEnvironment interface."));
}

TEST_F(LifetimeControllerTest, ExceptionOfAComponentLeavesThePassAndReleasesTheLock) {
  add("a", [](eLifetimeCommand) { throw std::logic_error("a is broken"); });
  add("b");
  try {
    mController.initialize();
    ADD_FAILURE() << "nothing was thrown";
  } catch (std::logic_error const& error) {
    EXPECT_STREQ(error.what(), "a is broken");
  }
  EXPECT_THAT(sent(), ElementsAre("a 0"));
  EXPECT_TRUE(isFree());
}

TEST_F(LifetimeControllerTest, WhateverAComponentThrowsLeavesSetLifetimeState) {
  add("a", [](eLifetimeCommand) { throw 7; });
  EXPECT_THROW(mController.setLifetimeState(LIFETIME_START, "a", nullptr), int);
  EXPECT_TRUE(isFree());
}

TEST_F(LifetimeControllerTest, ComponentMayCallBackFromWithinItsCommand) {
  add("a", [this](eLifetimeCommand aCommand) {
    if (aCommand == LIFETIME_START) {
      mController.setLifetimeState(LIFETIME_STOP, "b", nullptr);
    }
  });
  add("b");
  mController.initialize();
  EXPECT_THAT(sent(), ElementsAre("a 0", "b 0", "a 1", "b 2", "b 1"));
}

TEST_F(LifetimeControllerTest, ComponentRegisteredDuringAPassJoinsTheNextOne) {
  add("a", [this](eLifetimeCommand aCommand) {
    if (aCommand == LIFETIME_INITIALISE) {
      add("b");
    }
  });
  mController.initialize();
  EXPECT_THAT(sent(), ElementsAre("a 0", "a 1", "b 1"));
}

TEST_F(LifetimeControllerTest, ComponentThatUnregistersItselfDoesNotDisturbThePass) {
  class Leaver : public IBaseLifetimeCallback {
   public:
    explicit Leaver(EnvironmentController& aEnvironment) : mEnvironment(aEnvironment) {}
    void onLifetime(eLifetimeCommand, GUID) override { mEnvironment.unregisterComponent("b"); }
    void onStatus(StatusInformation const&, GUID const&) override {}

   private:
    EnvironmentController& mEnvironment;
  };
  add("a");
  mEnvironment.registerComponent("b", new Leaver(mEnvironment));
  add("c");
  mController.initialize();
  EXPECT_THAT(sent(), ElementsAre("a 0", "c 0", "a 1", "c 1"));
}

TEST_F(LifetimeControllerTest, ComponentIsCalledOnTheCallingThread) {
  std::thread::id runner;
  add("a", [&runner](eLifetimeCommand) { runner = std::this_thread::get_id(); });
  mController.terminate();
  EXPECT_EQ(runner, std::this_thread::get_id());
}

TEST_F(LifetimeControllerTest, CommandsOfSeveralThreadsFollowOneAnother) {
  std::atomic<int> inside{0};
  std::atomic<bool> overlapped{false};
  add("a", [&](eLifetimeCommand) {
    if (++inside > 1) {
      overlapped = true;
    }
    std::this_thread::yield();
    --inside;
  });
  auto const send = [this] {
    for (int i = 0; i < 200; ++i) {
      mController.setLifetimeState(LIFETIME_START, "a", nullptr);
    }
  };
  std::thread other(send);
  send();
  other.join();
  EXPECT_FALSE(overlapped);
  EXPECT_EQ(mSent.size(), 400U);
}

}  // namespace
}  // namespace Zelv::Controller
