#include "zelv/controller/EnvironmentController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::FakeShell;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

/// Does something when it is deleted.
class Component : public IBaseLifetimeCallback {
 public:
  explicit Component(std::function<void()> aAtEnd = nullptr) : mAtEnd(std::move(aAtEnd)) {}
  ~Component() override {
    if (mAtEnd) {
      mAtEnd();
    }
  }
  void onLifetime(eLifetimeCommand, GUID) override { ADD_FAILURE() << "a command was sent"; }
  void onStatus(StatusInformation const&, GUID const&) override {}

 private:
  std::function<void()> mAtEnd;
};

/// Whether it ends within a time that no healthy call needs.
bool endsInTime(std::future<void> const& aCall) {
  return aCall.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
}

bool isFree(EnvironmentController& aController) {
  auto const call =
      std::async(std::launch::async, [&aController] { aController.getNumComponents(); });
  return endsInTime(call);
}

TEST(EnvironmentController, StartsEmpty) {
  EnvironmentController controller;
  EXPECT_EQ(controller.getNumComponents(), 0U);
  EXPECT_THAT(controller.getRegisteredComponents(), IsEmpty());
}

TEST(EnvironmentController, RegisteredComponentIsFoundByItsName) {
  EnvironmentController controller;
  auto* const component = new Component;
  EXPECT_NE(controller.registerComponent("a", component), GUID::nullGUID);
  EXPECT_EQ(controller.getComponent("a"), component);
  EXPECT_EQ(controller.getNumComponents(), 1U);
}

TEST(EnvironmentController, SecondRegistrationOfANameKeepsTheFirstObjectAndReturnsAnotherId) {
  Component second;
  EnvironmentController controller;
  auto* const first = new Component;
  GUID const firstId = controller.registerComponent("a", first);
  GUID const secondId = controller.registerComponent("a", &second);
  EXPECT_EQ(controller.getComponent("a"), first);
  EXPECT_EQ(controller.getNumComponents(), 1U);
  EXPECT_NE(firstId, secondId);
  EXPECT_NE(secondId, GUID::nullGUID);
}

TEST(EnvironmentController, RegistrationOfANullPointerThrows) {
  LogCapture log;
  EnvironmentController controller;
  try {
    controller.registerComponent("a", nullptr);
    ADD_FAILURE() << "nothing was thrown";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "aCallback is NULL!");
  }
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error,
                  "EnvironmentController::registerComponent: Component callback pointer is NULL."));
  EXPECT_EQ(controller.getNumComponents(), 0U);
  EXPECT_TRUE(isFree(controller));
}

TEST(EnvironmentController, NamesAreAnyBytes) {
  EnvironmentController controller;
  std::string const names[] = {"", std::string("a\0b", 3), std::string(1 << 20, 'x'), "\xff[']"};
  for (std::string const& name : names) {
    auto* const component = new Component;
    controller.registerComponent(name, component);
    EXPECT_EQ(controller.getComponent(name), component);
  }
  EXPECT_EQ(controller.getNumComponents(), 4U);
}

TEST(EnvironmentController, UnregisterDeletesTheComponentAndItsEntry) {
  LogCapture log;
  bool deleted = false;
  EnvironmentController controller;
  controller.registerComponent("a", new Component([&deleted] { deleted = true; }));
  controller.unregisterComponent("a");
  EXPECT_TRUE(deleted);
  EXPECT_EQ(controller.getNumComponents(), 0U);
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0) << log.dump();
}

TEST(EnvironmentController, UnregisterOfAnUnknownNameOnlyWarns) {
  LogCapture log;
  EnvironmentController controller;
  controller.registerComponent("a", new Component);
  controller.unregisterComponent("b");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "EnvironmentController::unregisterComponent: Component not found!"));
  EXPECT_EQ(controller.getNumComponents(), 1U);
}

TEST(EnvironmentController, ComponentThatUnregistersItselfAtItsEndIsDeletedOnce) {
  LogCapture log;
  EnvironmentController controller;
  controller.registerComponent(
      "a", new Component([&controller] { controller.unregisterComponent("a"); }));
  controller.unregisterComponent("a");
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "EnvironmentController::unregisterComponent: Component not found!"));
}

TEST(EnvironmentController, ComponentMayWaitAtItsEndForAThreadThatAsksForComponents) {
  EnvironmentController controller;
  bool free = false;
  controller.registerComponent("a", new Component([&] { free = isFree(controller); }));
  controller.unregisterComponent("a");
  EXPECT_TRUE(free);
}

TEST(EnvironmentController, RegisteredComponentsAreACopy) {
  EnvironmentController controller;
  auto* const component = new Component;
  controller.registerComponent("a", component);
  auto copy = controller.getRegisteredComponents();
  EXPECT_THAT(copy, ElementsAre(Pair("a", component)));
  copy.clear();
  EXPECT_EQ(controller.getNumComponents(), 1U);
}

TEST(EnvironmentController, AskingForAnAbsentNameGivesNullAndInsertsNothing) {
  EnvironmentController controller;
  EXPECT_EQ(controller.getComponent("a"), nullptr);
  EXPECT_EQ(controller.getNumComponents(), 0U);
}

TEST(EnvironmentController, AskingForAComponentDoesNotWaitForOneThatIsBeingMade) {
  static EnvironmentController* current = nullptr;
  static bool free = false;
  TemporaryDirectories directories;
  directories.putReadOnly("Configuration.xml", "<Configuration/>");
  directories.putReadOnly("Applications.xml", "<Applications/>");
  EnvironmentController controller(
      {[](std::string const&, std::string const&) {
         auto const call = std::async(std::launch::async, [] { current->getComponent("a"); });
         free = endsInTime(call);
         return static_cast<IBaseLifetimeCallback*>(new Component);
       },
       [] { return static_cast<IBaseLifetimeCallback*>(new Component); },
       [] { return static_cast<IBaseLifetimeCallback*>(new Component); },
       [] { return static_cast<IBaseLifetimeCallback*>(new Component); }});
  current = &controller;
  controller.initialize();
  EXPECT_TRUE(free);
}

TEST(EnvironmentController, MayBeAskedWhileOthersRegister) {
  EnvironmentController controller;
  auto const asking = std::async(std::launch::async, [&controller] {
    while (controller.getComponent("99") == nullptr) {
      controller.getRegisteredComponents();
    }
  });
  for (int i = 0; i < 100; ++i) {
    controller.registerComponent(std::to_string(i), new Component);
  }
  EXPECT_TRUE(endsInTime(asking));
  EXPECT_EQ(controller.getNumComponents(), 100U);
}

TEST(EnvironmentController, ClearForgetsTheComponentsWithoutDeletingThem) {
  Component component;
  EnvironmentController controller;
  controller.registerComponent("a", &component);
  controller.clearEnvironment();
  EXPECT_EQ(controller.getNumComponents(), 0U);
}

TEST(EnvironmentController, EndDeletesTheComponentsInTheOrderOfTheirNames) {
  std::vector<std::string> deleted;
  LogCapture log;
  {
    EnvironmentController controller;
    for (char const* name : {"b", "c", "a"}) {
      controller.registerComponent(name,
                                   new Component([&deleted, name] { deleted.push_back(name); }));
    }
  }
  EXPECT_THAT(deleted, ElementsAre("a", "b", "c"));
  std::vector<std::string> removals;
  for (std::string const& text : log.texts(PCRealDebug::Trace)) {
    if (text.find("Removing") != std::string::npos) {
      removals.push_back(text);
    }
  }
  std::string const start = "EnvironmentController::~EnvironmentController: Removing component '";
  EXPECT_THAT(removals,
              ElementsAre(start + "a' from Environment List", start + "b' from Environment List",
                          start + "c' from Environment List"));
}

TEST(EnvironmentController, ObjectOfTwoNamesIsDeletedOnceWithTheLastOfThem) {
  int deleted = 0;
  {
    EnvironmentController controller;
    auto* const component = new Component([&deleted] { ++deleted; });
    controller.registerComponent("a", component);
    controller.registerComponent("b", component);
    controller.registerComponent("c", component);
    controller.unregisterComponent("b");
    EXPECT_EQ(deleted, 0);
    EXPECT_EQ(controller.getComponent("a"), component);
  }
  EXPECT_EQ(deleted, 1);
}

/// What the environment asked to be made.
struct Made {
  std::string baseXPath;
  std::string dataFileName;
  bool operator==(Made const&) const = default;
};

std::ostream& operator<<(std::ostream& aStream, Made const& aMade) {
  return aStream << aMade.baseXPath << " from " << aMade.dataFileName;
}

class EnvironmentStart : public ::testing::Test {
 protected:
  EnvironmentStart() {
    made().clear();
    nullAt() = 0;
  }

  static std::vector<Made>& made() {
    static std::vector<Made> calls;
    return calls;
  }

  /// Which call of the maker fails, from 1 on; 0 for none.
  static std::size_t& nullAt() {
    static std::size_t call = 0;
    return call;
  }

  static IBaseLifetimeCallback* make(std::string const& aBaseXPath,
                                     std::string const& aDataFileName) {
    made().push_back({aBaseXPath, aDataFileName});
    return made().size() == nullAt() ? nullptr : new Component;
  }

  static IBaseLifetimeCallback* makeMultiAccount() { return make("MultiAccount", ""); }
  static IBaseLifetimeCallback* makeMultiDevice() { return make("MultiDevice", ""); }
  static IBaseLifetimeCallback* makeAssetProvider() { return make("AssetProvider", ""); }

  void putFactoryFiles() const {
    mDirectories.putReadOnly("Configuration.xml", "<Configuration/>");
    mDirectories.putReadOnly("Applications.xml", "<Applications/>");
  }

  /// The text of what initialize() throws.
  std::string failure() {
    try {
      mController.initialize();
    } catch (std::runtime_error const& error) {
      return error.what();
    }
    return "nothing was thrown";
  }

  std::vector<std::string> names() {
    std::vector<std::string> found;
    for (auto const& entry : mController.getRegisteredComponents()) {
      found.push_back(entry.first);
    }
    return found;
  }

  TemporaryDirectories mDirectories;
  LogCapture mLog;
  EnvironmentController mController{{&EnvironmentStart::make, &EnvironmentStart::makeMultiAccount,
                                     &EnvironmentStart::makeMultiDevice,
                                     &EnvironmentStart::makeAssetProvider}};
};

TEST_F(EnvironmentStart, MakesTheStandardComponents) {
  putFactoryFiles();
  mController.initialize();
  EXPECT_THAT(names(), ElementsAre("ApplicationsManager", "AssetProvider", "ConfigurationManager",
                                   "MultiAccount", "MultiDevice"));
  EXPECT_THAT(
      made(),
      ElementsAre(Made{"/Zelv/Configuration", mDirectories.writable() + "Configuration.xml"},
                  Made{"/Zelv/Applications", mDirectories.writable() + "Applications.xml"},
                  Made{"MultiAccount", ""}, Made{"MultiDevice", ""}, Made{"AssetProvider", ""}));
}

TEST_F(EnvironmentStart, RestoresTheFilesThatTheProvidersWillLoad) {
  putFactoryFiles();
  mDirectories.putWritable("Applications.xml", "<Applications>");
  mController.initialize();
  EXPECT_EQ(mDirectories.getWritable("Configuration.xml"), "<Configuration/>");
  EXPECT_EQ(mDirectories.getWritable("Applications.xml"), "<Applications/>");
}

TEST_F(EnvironmentStart, LeavesGoodFilesAlone) {
  mDirectories.putWritable("Configuration.xml", "<Configuration>mine</Configuration>");
  mDirectories.putWritable("Applications.xml", "<Applications>mine</Applications>");
  mController.initialize();
  EXPECT_EQ(mController.getNumComponents(), 5U);
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
}

TEST_F(EnvironmentStart, ChecksTheSecondFileOnlyAfterTheFirstComponentIsThere) {
  mDirectories.putReadOnly("Configuration.xml", "<Configuration/>");
  EXPECT_EQ(failure(),
            "in EnvironmentController::initialize: Failed to load Applications file and could not "
            "restore!");
  EXPECT_THAT(names(), ElementsAre("ConfigurationManager"));
  EXPECT_TRUE(isFree(mController));
}

TEST_F(EnvironmentStart, MissingConfigurationWithoutFactoryCopyStopsIt) {
  mDirectories.putReadOnly("Applications.xml", "<Applications/>");
  EXPECT_EQ(failure(),
            "in EnvironmentController::initialize: Failed to load Configuration file and could "
            "not restore!");
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_TRUE(isFree(mController));
}

TEST_F(EnvironmentStart, CorruptConfigurationWithCorruptFactoryCopyStopsIt) {
  mDirectories.putReadOnly("Configuration.xml", "<Configuration");
  EXPECT_EQ(failure(),
            "in EnvironmentController::initialize: Failed to load Configuration file and could "
            "not restore!");
}

struct MakerFailure {
  std::size_t call;
  char const* text;
};

class EnvironmentWithoutMemory : public EnvironmentStart,
                                 public ::testing::WithParamInterface<MakerFailure> {};

TEST_P(EnvironmentWithoutMemory, LogsWhatCouldNotBeMadeAndThrows) {
  putFactoryFiles();
  nullAt() = GetParam().call;
  EXPECT_EQ(failure(), "component is NULL!");
  EXPECT_THAT(mLog, Logged(PCRealDebug::Error, GetParam().text));
  EXPECT_EQ(mController.getNumComponents(), GetParam().call - 1);
  EXPECT_TRUE(isFree(mController));
}

INSTANTIATE_TEST_SUITE_P(
    Components, EnvironmentWithoutMemory,
    ::testing::Values(MakerFailure{1,
                                   "EnvironmentController::createEnvironment: failed to create "
                                   "GenericDataProvider for /Zelv/Configuration"},
                      MakerFailure{2,
                                   "EnvironmentController::createEnvironment: failed to create "
                                   "GenericDataProvider for /Zelv/Applications"},
                      MakerFailure{3,
                                   "EnvironmentController::createEnvironment: failed to create "
                                   "MultiAccount."},
                      MakerFailure{4,
                                   "EnvironmentController::createEnvironment: failed to create "
                                   "MultiDevice."},
                      MakerFailure{5,
                                   "EnvironmentController::createEnvironment: failed to create "
                                   "AssetProvider."}));

TEST_F(EnvironmentStart, SecondStartKeepsTheComponentsOfTheFirst) {
  putFactoryFiles();
  mController.initialize();
  auto const first = mController.getRegisteredComponents();
  mController.initialize();
  EXPECT_EQ(mController.getRegisteredComponents(), first);
}

}  // namespace
}  // namespace Zelv::Controller
