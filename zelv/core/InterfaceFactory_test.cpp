#include "zelv/interfaces/InterfaceFactory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "zelv/core/Core.h"
#include "zelv/core/testing/Component.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::Logged;
using ::testing::ElementsAre;

class InterfaceFactoryTest : public ::testing::Test {
 protected:
  /// The lines at error level from the header of a failed start on.
  std::vector<std::string> failureLines(std::string const& aHeader) const {
    auto const texts = mSet.log.texts(PCRealDebug::Error);
    return {std::find(texts.begin(), texts.end(), aHeader), texts.end()};
  }

  int starts() const { return mSet.log.count(PCRealDebug::Trace, "Core::initialize: Entry."); }

  Testing::SmallSet mSet;
};

TEST_F(InterfaceFactoryTest, InitializeStartsTheSystem) {
  EXPECT_EQ(Core::requestCore(), nullptr);
  EXPECT_TRUE(InterfaceFactory::initialize());
  EXPECT_NE(Core::requestCore(), nullptr);
  EXPECT_EQ(starts(), 1);
}

TEST_F(InterfaceFactoryTest, SecondInitializeChangesNothing) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  Core* const core = Core::requestCore();
  EXPECT_TRUE(InterfaceFactory::initialize());
  EXPECT_EQ(Core::requestCore(), core);
  EXPECT_EQ(starts(), 1);
}

TEST_F(InterfaceFactoryTest, GetInterfaceBeforeInitializeStartsTheSystem) {
  IBase* const object = InterfaceFactory::getInterface(IID_ICoreData);
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object, Core::requestCore());
  EXPECT_EQ(starts(), 1);
}

TEST_F(InterfaceFactoryTest, EveryIdentifierYieldsTheSameObject) {
  IBase* const object = InterfaceFactory::getInterface(IID_ICoreData);
  ASSERT_NE(object, nullptr);
  for (GUID const& id : {IID_ICoreTimer, IID_IDataProvider, GUID::nullGUID, GUID::createGUID()}) {
    EXPECT_EQ(InterfaceFactory::getInterface(id), object) << id.toString();
  }
}

TEST_F(InterfaceFactoryTest, InterfacesAreReachedByCast) {
  IBase* const object = InterfaceFactory::getInterface(GUID::nullGUID);
  EXPECT_NE(dynamic_cast<ICoreData*>(object), nullptr);
  EXPECT_NE(dynamic_cast<IAppData*>(object), nullptr);
  EXPECT_NE(dynamic_cast<ICoreEnvironment*>(object), nullptr);
  EXPECT_NE(dynamic_cast<IAppEnvironment*>(object), nullptr);
  EXPECT_NE(dynamic_cast<ICoreLifetime*>(object), nullptr);
  EXPECT_NE(dynamic_cast<IAppLifetime*>(object), nullptr);
  EXPECT_NE(dynamic_cast<ICoreTimer*>(object), nullptr);
  EXPECT_NE(dynamic_cast<IAppTimer*>(object), nullptr);
  EXPECT_NE(dynamic_cast<ICoreDataCallback*>(object), nullptr);
}

TEST_F(InterfaceFactoryTest, CastToAnInterfaceThatIsNotThereGivesNull) {
  EXPECT_EQ(dynamic_cast<IDataProvider*>(InterfaceFactory::getInterface(IID_IDataProvider)),
            nullptr);
}

TEST_F(InterfaceFactoryTest, TerminateWithoutInstanceDoesNothing) {
  InterfaceFactory::terminate();
  EXPECT_EQ(Core::requestCore(), nullptr);
  EXPECT_TRUE(mSet.log.lines().empty()) << mSet.log.dump();
}

TEST_F(InterfaceFactoryTest, TerminateMayBeCalledTwice) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  InterfaceFactory::terminate();
  EXPECT_EQ(Core::requestCore(), nullptr);
  InterfaceFactory::terminate();
  EXPECT_EQ(mSet.log.count(PCRealDebug::Trace, "Core::terminate: Entry."), 1);
}

TEST_F(InterfaceFactoryTest, StartAfterTerminateMakesANewInstance) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  Core::requestCore()->setName("first");
  InterfaceFactory::terminate();
  ASSERT_NE(Core::getCore(), nullptr);
  EXPECT_EQ(Core::requestCore()->getName(), "");
  EXPECT_EQ(starts(), 2);
}

TEST_F(InterfaceFactoryTest, FailedInitializeIsLoggedAndCleanedUp) {
  mSet.directories.removeWritableDirectory();
  mSet.directories.putReadOnly("Configuration.xml", "");
  EXPECT_FALSE(InterfaceFactory::initialize());
  EXPECT_THAT(failureLines("InterfaceFactory::initialize() An error ocurred in initialization:"),
              ElementsAre("InterfaceFactory::initialize() An error ocurred in initialization:",
                          std::string("Error: ") + typeid(std::runtime_error).name() +
                              ": in EnvironmentController::initialize: Failed to load "
                              "Configuration file and could not restore!"));
  EXPECT_EQ(Core::requestCore(), nullptr);
}

TEST_F(InterfaceFactoryTest, FailedGetInterfaceIsLoggedUnderItsOwnNameAndGivesNull) {
  // The second component fails, so the cleaning up sends a command to the first.
  mSet.directories.putReadOnly("Applications.xml", "");
  EXPECT_EQ(InterfaceFactory::getInterface(IID_ICoreData), nullptr);
  EXPECT_THAT(mSet.log,
              Logged(PCRealDebug::Error,
                     "InterfaceFactory::getInterface() An error ocurred in getInterface:"));
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error,
                               std::string("Error: ") + typeid(std::runtime_error).name() +
                                   ": in EnvironmentController::initialize: Failed to load "
                                   "Applications file and could not restore!"));
  EXPECT_EQ(Core::requestCore(), nullptr);
}

TEST_F(InterfaceFactoryTest, StartWorksOnceTheReasonOfAFailureIsGone) {
  mSet.directories.putReadOnly("Configuration.xml", "");
  EXPECT_FALSE(InterfaceFactory::initialize());
  mSet.directories.putReadOnly("Configuration.xml", Testing::SmallSet::cConfiguration);
  EXPECT_TRUE(InterfaceFactory::initialize());
}

TEST_F(InterfaceFactoryTest, ComponentThatThrowsAtTheEndIsHeardAfterEverythingIsGone) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  std::vector<Testing::Command> commands;
  Core::requestCore()->registerComponent(
      "A", new Testing::Component("A", commands, [](eLifetimeCommand) { throw 7; }));
  EXPECT_THROW(InterfaceFactory::terminate(), int);
  EXPECT_EQ(commands.size(), 1U);
  EXPECT_EQ(Core::requestCore(), nullptr);
  EXPECT_TRUE(InterfaceFactory::initialize());
}

}  // namespace
}  // namespace Zelv
