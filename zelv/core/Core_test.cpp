#include "zelv/core/Core.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "zelv/core/AssetProvider.h"
#include "zelv/core/GenericDataProvider.h"
#include "zelv/core/MultiAccount.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/core/testing/Component.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeAlarm;
using Platform::Fake::FakeClock;
using Platform::Fake::FakeThreads;
using Platform::Fake::Logged;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::Listener;
using Testing::SmallSet;
using Testing::Told;

class CoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mCore = SmallSet::start();
    ASSERT_NE(mCore, nullptr) << mSet.log.dump();
  }

  // The listener must outlive the worker.
  void TearDown() override { InterfaceFactory::terminate(); }

  void add(std::string const& aName, Testing::Component::Reaction const& aReaction = nullptr) {
    mCore->registerComponent(aName, new Testing::Component(aName, mCommands, aReaction));
  }

  /// What components were sent, as "component command".
  std::vector<std::string> sent() const {
    std::vector<std::string> texts;
    for (Testing::Command const& command : mCommands) {
      texts.push_back(command.component + " " + std::to_string(command.number));
    }
    return texts;
  }

  /// The branches of devices and users refuse to be registered a second time.
  void startAgain() {
    mCore->unregisterDataProvider("/Zelv/Users");
    mCore->unregisterDataProvider("/Zelv/Devices");
    mCore->initialize();
  }

  /// From here on every line of the log is of the test's own thread.
  void restWorker() { mCore->terminate(); }

  /// Reads; the value, or a text that says that none came.
  std::string read(std::string const& aXPath) {
    GUID const id = mCore->requestData(aXPath, nullptr, &mListener);
    if (!mListener.waitFor(id)) {
      return "nothing came";
    }
    Told const told = mListener.of(id).front();
    return told.kind == Told::Data ? told.value : "failed";
  }

  SmallSet mSet;
  Listener mListener;
  std::vector<Testing::Command> mCommands;
  std::vector<IBase*> mAnswers;
  Core* mCore = nullptr;
};

TEST_F(CoreTest, InterfacesAreVirtualBasesInTheirOrder) {
  std::vector<void const*> const places = {
      static_cast<ICoreData*>(mCore),        static_cast<IAppData*>(mCore),
      static_cast<ICoreEnvironment*>(mCore), static_cast<IAppEnvironment*>(mCore),
      static_cast<ICoreLifetime*>(mCore),    static_cast<IAppLifetime*>(mCore),
      static_cast<ICoreTimer*>(mCore),       static_cast<IAppTimer*>(mCore),
      static_cast<ICoreDataCallback*>(mCore)};
  EXPECT_TRUE(std::is_sorted(places.begin(), places.end(), std::less<>()));
}

TEST_F(CoreTest, HasOneNameThroughAllInterfaces) {
  static_cast<ICoreData*>(mCore)->setName("set");
  EXPECT_EQ(static_cast<IAppTimer*>(mCore)->getName(), "set");
}

TEST_F(CoreTest, GetCoreGivesTheRunningInstance) {
  EXPECT_EQ(Core::getCore(), mCore);
  EXPECT_EQ(mSet.log.count(PCRealDebug::Trace, "Core::initialize: Entry."), 1);
}

TEST_F(CoreTest, StartMakesTheStandardComponents) {
  auto const components = mCore->getRegisteredComponents();
  ASSERT_EQ(components.size(), 5U);
  ASSERT_EQ(components.count("AssetProvider"), 1U);
  EXPECT_NE(dynamic_cast<Core::AssetProvider*>(components.at("AssetProvider")), nullptr);
  ASSERT_EQ(components.count("MultiAccount"), 1U);
  EXPECT_NE(dynamic_cast<Core::MultiAccount*>(components.at("MultiAccount")), nullptr);
  ASSERT_EQ(components.count("MultiDevice"), 1U);
  EXPECT_NE(dynamic_cast<Core::MultiDevice*>(components.at("MultiDevice")), nullptr);
  for (char const* name : {"ApplicationsManager", "ConfigurationManager"}) {
    ASSERT_EQ(components.count(name), 1U) << name;
    EXPECT_NE(dynamic_cast<Core::GenericDataProvider*>(components.at(name)), nullptr) << name;
    EXPECT_EQ(mCore->getComponent(name), components.at(name));
  }
}

TEST_F(CoreTest, StartGoesThroughItsStepsInOrder) {
  std::vector<std::string> steps;
  for (std::string const& text : mSet.log.texts(PCRealDebug::Trace)) {
    for (char const* step : {"Core::copyDataDirectoryFiles", "TimerController::initialize",
                             "EnvironmentController::createEnvironment",
                             "LifetimeController::initialize", "DataController::initialize",
                             "CommandController::initialize", "UserController::initialize"}) {
      if (text == std::string(step) + ": Entry.") {
        steps.push_back(step);
      }
    }
  }
  EXPECT_THAT(steps, ElementsAre("Core::copyDataDirectoryFiles", "TimerController::initialize",
                                 "EnvironmentController::createEnvironment",
                                 "LifetimeController::initialize", "DataController::initialize",
                                 "CommandController::initialize", "UserController::initialize"));
}

TEST_F(CoreTest, StopGoesThroughItsStepsInOrder) {
  mSet.log.clear();
  InterfaceFactory::terminate();
  std::vector<std::string> steps;
  for (std::string const& text : mSet.log.texts(PCRealDebug::Trace)) {
    for (char const* step : {"LifetimeController::terminate", "UserController::terminate",
                             "CommandController::terminate", "DataController::terminate",
                             "TimerController::terminate", "NetworkAdapter::terminate"}) {
      if (text == std::string(step) + ": Entry.") {
        steps.push_back(step);
      }
    }
    for (char const* component : {"ApplicationsManager", "AssetProvider", "ConfigurationManager",
                                  "MultiAccount", "MultiDevice"}) {
      if (text.find("Removing component '" + std::string(component)) != std::string::npos) {
        steps.push_back(component);
      }
    }
  }
  EXPECT_THAT(steps, ElementsAre("LifetimeController::terminate", "UserController::terminate",
                                 "CommandController::terminate", "DataController::terminate",
                                 "TimerController::terminate", "NetworkAdapter::terminate",
                                 "ApplicationsManager", "AssetProvider", "ConfigurationManager",
                                 "MultiAccount", "MultiDevice"));
}

TEST_F(CoreTest, StopTwiceIsHarmless) {
  mCore->terminate();
  InterfaceFactory::terminate();
  EXPECT_EQ(Core::requestCore(), nullptr);
}

// A second start of a running system is of no use to anybody else; it shows what components see
// that an application registered before.

TEST_F(CoreTest, ComponentsSeeCommandsZeroAndOneByNameWithDifferentIds) {
  add("b");
  add("c");
  add("Z");
  startAgain();
  EXPECT_THAT(sent(), ElementsAre("Z 0", "b 0", "c 0", "Z 1", "b 1", "c 1"));
  std::set<std::string> ids;
  for (Testing::Command const& command : mCommands) {
    ids.insert(command.transaction.toString());
  }
  EXPECT_EQ(ids.size(), 6U);
}

TEST_F(CoreTest, ComponentThatAsksForAnInterfaceDuringStartGetsTheInstanceWithoutRecursion) {
  add("a", [this](eLifetimeCommand) {
    mAnswers.push_back(InterfaceFactory::getInterface(IID_ICoreData));
  });
  mSet.log.clear();
  startAgain();
  EXPECT_THAT(mAnswers, ElementsAre(mCore, mCore));
  EXPECT_EQ(mSet.log.count(PCRealDebug::Trace, "Core::initialize: Entry."), 1);
}

TEST_F(CoreTest, ComponentThatAsksForAnInterfaceDuringStopGetsTheInstance) {
  add("a", [this](eLifetimeCommand) {
    mAnswers.push_back(InterfaceFactory::getInterface(IID_ICoreTimer));
  });
  mCore->terminate();
  EXPECT_THAT(mAnswers, ElementsAre(mCore));
}

TEST_F(CoreTest, ExceptionOfAComponentLeavesTheStart) {
  add("a", [](eLifetimeCommand aCommand) {
    if (aCommand == LIFETIME_INITIALISE) {
      throw std::logic_error("a is broken");
    }
  });
  add("b");
  EXPECT_THROW(startAgain(), std::logic_error);
  EXPECT_THAT(sent(), ElementsAre("a 0"));
}

TEST_F(CoreTest, WorkersAreAtRestEvenWhenAComponentThrowsAtTheEnd) {
  add("A", [this](eLifetimeCommand) {
    if (mCommands.size() == 1) {
      throw std::logic_error("A is broken");
    }
  });
  EXPECT_THROW(mCore->terminate(), std::logic_error);
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Trace, "DataController::terminate: Exit."));
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Trace, "TimerController::terminate: Exit."));
}

TEST(CoreWithoutWorker, RequestsFromBeforeItsStartRunAfterwardsInOrder) {
  SmallSet set;
  Listener listener;
  FakeThreads::FailNext(1);
  Core* const core = SmallSet::start();
  ASSERT_NE(core, nullptr);
  GUID const first = core->requestData(SmallSet::cDiscoveryPath, nullptr, &listener);
  core->setData(SmallSet::cNamePath, "late", &listener, true);
  GUID const second = core->requestData(SmallSet::cNamePath, nullptr, &listener);
  EXPECT_THAT(listener.all(), IsEmpty());
  core->unregisterDataProvider("/Zelv/Users");
  core->unregisterDataProvider("/Zelv/Devices");
  core->initialize();
  ASSERT_TRUE(listener.waitFor(second));
  auto const told = listener.all();
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[0].id, first);
  EXPECT_EQ(told[0].value, "false");
  EXPECT_EQ(told[1].id, second);
  EXPECT_EQ(told[1].value, "late");
  InterfaceFactory::terminate();
}

TEST_F(CoreTest, ReadsWritesAndTellsSubscribers) {
  GUID const exact = mCore->subscribeData(SmallSet::cNamePath, nullptr, &mListener);
  GUID const above =
      mCore->subscribeData("/Zelv/Applications/ActiveApplication", nullptr, &mListener);
  ASSERT_TRUE(mListener.waitFor(above));
  mCore->setData(SmallSet::cNamePath, "game", &mListener, true);
  ASSERT_TRUE(mListener.waitFor(above, 2));
  auto const told = mListener.of(exact);
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[0].value, "none");
  EXPECT_EQ(told[1].value, "game");
  EXPECT_EQ(mListener.of(above)[1].value,
            "<ActiveApplication><Name>game</Name><Type/></ActiveApplication>");
  EXPECT_EQ(read(SmallSet::cNamePath), "game");
  mCore->unsubscribeData(exact);
  mCore->setData(SmallSet::cNamePath, "film", &mListener, true);
  EXPECT_EQ(read(SmallSet::cNamePath), "film");
  EXPECT_EQ(mListener.of(exact).size(), 2U);
}

TEST_F(CoreTest, AddReachesTheProvider) {
  mCore->addData(SmallSet::cNamePath, "game", &mListener, true);
  EXPECT_EQ(read(SmallSet::cNamePath), "none");
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Trace, "GenericDataProvider::addData: Entry."));
}

TEST_F(CoreTest, PassesContextsOnUnchanged) {
  struct Context : ContextInformation {
  } context;
  GUID const id = mCore->requestData(SmallSet::cNamePath, &context, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  EXPECT_EQ(mListener.of(id)[0].context, &context);
  EXPECT_EQ(mListener.of(id)[0].what, SmallSet::cNamePath);
}

/// Answers every read with the path.
class EchoProvider : public IDataProvider {
 public:
  int getData(std::string const& aXPath, std::string& aData, GUID) override {
    aData = "echo of " + aXPath;
    return 0;
  }
  int setData(std::string const&, std::string const&, GUID) override { return 0; }
  int addData(std::string const&, std::string const&, GUID) override { return 0; }
  int onSubscribe(std::string const&, GUID) override { return 0; }
  int onUnsubscribe(std::string const&, GUID) override { return 0; }
};

TEST_F(CoreTest, ProvidersComeAndGo) {
  EchoProvider provider;
  mCore->registerDataProvider("/Zelv/Echo", &provider);
  EXPECT_EQ(read("/Zelv/Echo/x"), "echo of /Zelv/Echo/x");
  mCore->unregisterDataProvider("/Zelv/Echo");
  EXPECT_EQ(read("/Zelv/Echo/x"), "failed");
}

TEST_F(CoreTest, StopTakesTheBranchesBack) {
  EchoProvider provider;
  EXPECT_THROW(mCore->registerDataProvider("/Zelv/Applications", &provider), std::logic_error);
  mCore->terminate();
  mCore->registerDataProvider("/Zelv/Applications", &provider);
  mCore->unregisterDataProvider("/Zelv/Applications");
}

TEST_F(CoreTest, ReportsOfProvidersReachTheSubscribers) {
  EchoProvider provider;
  mCore->registerDataProvider("/Zelv/Echo", &provider);
  GUID const id = mCore->subscribeData("/Zelv/Echo/x", nullptr, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  mCore->notifyDataSubscribers("/Zelv/Echo/x", "changed", GUID::createGUID());
  mCore->notifyDataSubscriber(id, "for you");
  auto const told = mListener.of(id);
  ASSERT_EQ(told.size(), 3U);
  EXPECT_EQ(told[1].value, "changed");
  EXPECT_EQ(told[2].value, "for you");
  mCore->unregisterDataProvider("/Zelv/Echo");
}

TEST_F(CoreTest, TimersGoOff) {
  GUID const id = mCore->createTimer(1000, -1, "tick", &mListener);
  FakeClock::Advance(2000);
  EXPECT_EQ(mListener.of(id).size(), 2U);
  mCore->resetTimer(id, 5000, -1);
  FakeClock::Advance(4999);
  EXPECT_EQ(mListener.of(id).size(), 2U);
  FakeClock::Advance(1);
  EXPECT_EQ(mListener.of(id).size(), 3U);
  mCore->destroyTimer(id, &mListener);
  FakeClock::Advance(10000);
  EXPECT_EQ(mListener.of(id).size(), 3U);
}

TEST_F(CoreTest, StopEndsTheTimers) {
  mCore->createTimer(1000, -1, "tick", &mListener);
  InterfaceFactory::terminate();
  EXPECT_EQ(FakeAlarm::Created(), 0);
  FakeClock::Advance(10000);
  EXPECT_THAT(mListener.all(), IsEmpty());
}

TEST_F(CoreTest, StopWithTasksUnderWayWaitsForOneAndDropsTheRest) {
  for (int i = 0; i < 500; ++i) {
    mCore->setData(SmallSet::cNamePath, std::to_string(i), &mListener, true);
    mCore->requestData(SmallSet::cNamePath, nullptr, &mListener);
    mCore->subscribeData("/Zelv/Applications", nullptr, &mListener);
  }
  InterfaceFactory::terminate();
  std::size_t const told = mListener.all().size();
  ASSERT_NE(SmallSet::start(), nullptr);
  mCore = Core::requestCore();
  EXPECT_EQ(read(SmallSet::cDiscoveryPath), "false");
  EXPECT_EQ(mListener.all().size(), told + 1);
}

TEST_F(CoreTest, LifetimeCommandsReachOneComponent) {
  add("a");
  add("b");
  GUID const id = mCore->setLifetimeState(LIFETIME_STOP, "b", nullptr);
  ASSERT_THAT(sent(), ElementsAre("b 2"));
  EXPECT_EQ(mCommands[0].transaction, id);
}

TEST_F(CoreTest, RegisteredComponentsAreTheRegistrysFromThenOn) {
  add("mine");
  EXPECT_NE(mCore->getComponent("mine"), nullptr);
  EXPECT_EQ(mCore->getRegisteredComponents().count("mine"), 1U);
  EXPECT_THROW(mCore->registerComponent("null", nullptr), std::runtime_error);
}

TEST_F(CoreTest, UnregisterLeavesTheComponentRegistered) {
  add("mine");
  mCore->unregisterComponent("mine");
  EXPECT_NE(mCore->getComponent("mine"), nullptr);
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Warning,
                               "DataController::unregisterComponent: not implemented!"));
}

TEST_F(CoreTest, IsTheApplicationOfThePlatform) {
  EXPECT_NE(mCore->getZelvApp(), nullptr);
  EXPECT_EQ(mCore->getZelvApp(), g_TaskManager.GetApplication(static_cast<DTV_APPLICATION>(67)));
}

TEST_F(CoreTest, AnswersInItsOwnNameAreDroppedWithoutALine) {
  restWorker();
  mSet.log.clear();
  mCore->onData("/Zelv/x", "value", nullptr, GUID::nullGUID);
  mCore->onStatus(StatusInformation(std::string("text")), GUID::nullGUID);
  EXPECT_THAT(mSet.log.lines(), IsEmpty()) << mSet.log.dump();
}

struct IdleOperation {
  char const* text;
  void (*call)(Core&);
};

void PrintTo(IdleOperation const& aOperation, std::ostream* aStream) {
  *aStream << aOperation.text;
}

class CoreIdleOperation : public CoreTest, public ::testing::WithParamInterface<IdleOperation> {};

TEST_P(CoreIdleOperation, OnlyWarns) {
  restWorker();
  mSet.log.clear();
  GetParam().call(*mCore);
  EXPECT_EQ(mSet.log.lines(),
            (std::vector<Platform::Fake::LogLine>{{PCRealDebug::Warning, GetParam().text}}));
}

INSTANTIATE_TEST_SUITE_P(
    Core, CoreIdleOperation,
    ::testing::Values(
        IdleOperation{"Core::raiseEvent: TVControl or remote control event. TOLMAR: not used by "
                      "Quorl and removed, do nothing",
                      [](Core& aCore) { aCore.raiseEvent(nullptr); }},
        IdleOperation{"DataController::unregisterComponent: not implemented!",
                      [](Core& aCore) { aCore.unregisterComponent("ConfigurationManager"); }},
        IdleOperation{"DataController::updateSubscriberStatus: not implemented!",
                      [](Core& aCore) { aCore.updateSubscriberStatus(GUID::nullGUID, "x"); }},
        IdleOperation{"DataController::unsubscribeForAllData: not implemented!",
                      [](Core& aCore) { aCore.unsubscribeForAllData("x"); }}));

}  // namespace
}  // namespace Zelv
