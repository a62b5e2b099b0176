// What a program sees that links the library as it ships.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <semaphore>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/Answers.h"
#include "tests/TemporarySet.h"
#include "zelv/Zelv.h"
#include "zelv/core/Core.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

using testing::Contains;
using testing::Pair;
using Zelv::Core;
using Zelv::GUID;
using Zelv::IBase;
using Zelv::InterfaceFactory;

/// Collects the lines of the log while it lives.
class LogLines {
 public:
  LogLines() { PCRealDebug::SetSink(&collect, this); }
  LogLines(LogLines const&) = delete;
  LogLines& operator=(LogLines const&) = delete;
  ~LogLines() { PCRealDebug::SetSink(nullptr, nullptr); }

  std::vector<std::pair<unsigned long, std::string>> lines() {
    std::lock_guard const lock(mLock);
    return mLines;
  }

 private:
  static void collect(unsigned long aLevel, char const* aText, void* aSelf) {
    auto& self = *static_cast<LogLines*>(aSelf);
    std::lock_guard const lock(self.mLock);
    self.mLines.emplace_back(aLevel, aText);
  }

  std::mutex mLock;
  std::vector<std::pair<unsigned long, std::string>> mLines;
};

/// A component of the application. The registry owns it.
class Component : public Zelv::IBaseLifetimeCallback {
 public:
  struct Seen {
    std::vector<Zelv::eLifetimeCommand> commands;
    IBase* instance = nullptr;
    bool deleted = false;
  };

  explicit Component(Seen& aSeen) : mSeen(aSeen) {}
  ~Component() override { mSeen.deleted = true; }

  void onLifetime(Zelv::eLifetimeCommand aCommand, GUID) override {
    mSeen.commands.push_back(aCommand);
    mSeen.instance = InterfaceFactory::getInterface(Zelv::IID_ICoreEnvironment);
  }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

 private:
  Seen& mSeen;
};

class TimerCallback : public Zelv::IBaseTimerCallback {
 public:
  void onTimer(std::string const& aTimerName, GUID aTimerID) override {
    name = aTimerName;
    id = aTimerID;
    wentOff.release();
  }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

  std::string name;
  GUID id;
  std::counting_semaphore<> wentOff{0};
};

class ApiSurface : public testing::Test {
 protected:
  /// The library as it is reached by every program.
  template <typename Interface>
  static Interface* get(GUID const& aIdentifier) {
    return dynamic_cast<Interface*>(InterfaceFactory::getInterface(aIdentifier));
  }

  TemporarySet mSet;
};

TEST_F(ApiSurface, UnknownIdentifierYieldsTheSameObjectAsAKnownOne) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  IBase* const known = InterfaceFactory::getInterface(Zelv::IID_ICoreData);
  ASSERT_NE(known, nullptr);
  EXPECT_EQ(InterfaceFactory::getInterface(GUID::createGUID()), known);
  EXPECT_EQ(InterfaceFactory::getInterface(GUID::nullGUID), known);
  EXPECT_EQ(InterfaceFactory::getInterface(Zelv::RESERVED_IDENTIFIERS[0]), known);
}

TEST_F(ApiSurface, InterfaceBeforeInitializeBringsTheSystemUp) {
  ASSERT_EQ(Core::requestCore(), nullptr);
  IBase* const library = InterfaceFactory::getInterface(Zelv::IID_IAppData);
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(library, static_cast<IBase*>(Core::requestCore()));
  EXPECT_TRUE(std::filesystem::exists(mSet.writable() + "Devices.xml"));
}

TEST_F(ApiSurface, InitializeOfARunningSystemKeepsIt) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  Core* const first = Core::requestCore();
  EXPECT_TRUE(InterfaceFactory::initialize());
  EXPECT_EQ(Core::requestCore(), first);
}

TEST_F(ApiSurface, TerminateWithoutASystemDoesNothing) {
  InterfaceFactory::terminate();
  EXPECT_EQ(Core::requestCore(), nullptr);
}

TEST_F(ApiSurface, SystemCanBeStartedAnewAfterTerminate) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  InterfaceFactory::terminate();
  EXPECT_EQ(Core::requestCore(), nullptr);
  Answers answers;
  get<Zelv::IAppData>(Zelv::IID_IAppData)
      ->requestData("/Zelv/Configuration/UPnP/Ping/Interval/text()", nullptr, &answers);
  auto const answer = answers.next();
  ASSERT_TRUE(answer);
  EXPECT_FALSE(answer->failed);
}

template <typename Interface>
void expectReached(IBase* aBase, char const* aName) {
  auto* const reached = dynamic_cast<Interface*>(aBase);
  ASSERT_NE(reached, nullptr) << aName;
  EXPECT_EQ(static_cast<IBase*>(reached), aBase) << aName;
}

TEST_F(ApiSurface, EveryInterfaceThatIsServedIsReachedByDynamicCast) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  IBase* const base = InterfaceFactory::getInterface(Zelv::IID_IBase);
  expectReached<Zelv::IBaseData>(base, "IBaseData");
  expectReached<Zelv::IAppData>(base, "IAppData");
  expectReached<Zelv::ICoreData>(base, "ICoreData");
  expectReached<Zelv::IBaseTimer>(base, "IBaseTimer");
  expectReached<Zelv::IAppTimer>(base, "IAppTimer");
  expectReached<Zelv::ICoreTimer>(base, "ICoreTimer");
  expectReached<Zelv::IBaseEnvironment>(base, "IBaseEnvironment");
  expectReached<Zelv::IAppEnvironment>(base, "IAppEnvironment");
  expectReached<Zelv::ICoreEnvironment>(base, "ICoreEnvironment");
  expectReached<Zelv::IBaseLifetime>(base, "IBaseLifetime");
  expectReached<Zelv::IAppLifetime>(base, "IAppLifetime");
  expectReached<Zelv::ICoreLifetime>(base, "ICoreLifetime");
  expectReached<Zelv::ICoreDataCallback>(base, "ICoreDataCallback");
  expectReached<Core>(base, "Core");
}

TEST_F(ApiSurface, InterfaceThatTheLibraryDoesNotServeIsNull) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  EXPECT_EQ(get<Zelv::IDataProvider>(Zelv::IID_IDataProvider), nullptr);
  EXPECT_EQ(get<Zelv::IBaseTimerCallback>(Zelv::IID_IBaseTimerCallback), nullptr);
}

TEST_F(ApiSurface, NameIsOneForAllInterfaces) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  EXPECT_EQ(get<Zelv::IAppTimer>(Zelv::IID_IAppTimer)->getName(), "");
  get<Zelv::IAppTimer>(Zelv::IID_IAppTimer)->setName("set");
  EXPECT_EQ(get<Zelv::ICoreData>(Zelv::IID_ICoreData)->getName(), "set");
}

TEST_F(ApiSurface, ReadBringsValuePathContextAndId) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  struct Context : Zelv::ContextInformation {
  } const context;
  std::string const path = "/Zelv/Configuration/UPnP/Ping/Interval/text()";
  Answers answers;
  GUID const id = get<Zelv::IAppData>(Zelv::IID_IAppData)->requestData(path, &context, &answers);
  auto const answer = answers.next();
  ASSERT_TRUE(answer);
  EXPECT_FALSE(answer->failed);
  EXPECT_EQ(answer->path, path);
  EXPECT_EQ(answer->value, "30");
  EXPECT_EQ(answer->context, &context);
  EXPECT_EQ(answer->id, id);
}

TEST_F(ApiSurface, ReadUnderNoProviderFailsTwiceWithEmptyText) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  Answers answers;
  GUID const id = get<Zelv::IAppData>(Zelv::IID_IAppData)
                      ->requestData("/Zelv/Nothing/text()", nullptr, &answers);
  for (int i = 0; i < 2; ++i) {
    auto const answer = answers.next();
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->failed);
    EXPECT_EQ(answer->value, "");
    EXPECT_EQ(answer->id, id);
  }
}

TEST_F(ApiSurface, SubscriberHearsTheValueAndThenTheChange) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  auto* const data = get<Zelv::IAppData>(Zelv::IID_IAppData);
  std::string const path = "/Zelv/Configuration/UPnP/Ping/Interval/text()";
  Answers answers;
  GUID const id = data->subscribeData(path, nullptr, &answers);
  auto const first = answers.next();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->value, "30");
  data->setData(path, "45", nullptr, true);
  auto const change = answers.next();
  ASSERT_TRUE(change);
  EXPECT_EQ(change->value, "45");
  EXPECT_EQ(change->id, id);
  data->unsubscribeData(id);
}

TEST_F(ApiSurface, WhatIsThrownIsCaughtOutsideByItsType) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  auto* const data = get<Zelv::ICoreData>(Zelv::IID_ICoreData);
  try {
    data->setData("/Other", "", nullptr, true);
    FAIL() << "nothing thrown";
  } catch (std::runtime_error const& exception) {
    EXPECT_STREQ(exception.what(), "Cannot set data on remote XPath.");
  }
  try {
    data->registerDataProvider("/Other", nullptr);
    FAIL() << "nothing thrown";
  } catch (std::logic_error const& exception) {
    EXPECT_STREQ(exception.what(), "Cannot register data provider for remote XPath.");
  }
}

TEST_F(ApiSurface, TimerGoesOffWithItsNameAndId) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  auto* const timers = get<Zelv::IAppTimer>(Zelv::IID_IAppTimer);
  TimerCallback callback;
  GUID const id = timers->createTimer(1, -1, "tick", &callback);
  EXPECT_TRUE(callback.wentOff.try_acquire_for(std::chrono::seconds(20)));
  timers->destroyTimer(id, &callback);
  EXPECT_EQ(callback.name, "tick");
  EXPECT_EQ(callback.id, id);
}

TEST_F(ApiSurface, ComponentOfAnApplicationIsSentCommandsByNameAndFindsTheLibrary) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  Component::Seen seen;
  get<Zelv::IAppEnvironment>(Zelv::IID_IAppEnvironment)
      ->registerComponent("Screen", new Component(seen));
  GUID const id = get<Zelv::IAppLifetime>(Zelv::IID_IAppLifetime)
                      ->setLifetimeState(Zelv::LIFETIME_STOP, "Screen", nullptr);
  EXPECT_FALSE(id == GUID::nullGUID);
  EXPECT_THAT(seen.commands, testing::ElementsAre(Zelv::LIFETIME_STOP));
  EXPECT_EQ(seen.instance, InterfaceFactory::getInterface(Zelv::IID_IBase));
  InterfaceFactory::terminate();
  EXPECT_THAT(seen.commands, testing::ElementsAre(Zelv::LIFETIME_STOP, Zelv::LIFETIME_TERMINATE));
  EXPECT_TRUE(seen.deleted);
}

TEST_F(ApiSurface, ComponentCannotBeUnregisteredByAnApplication) {
  ASSERT_TRUE(InterfaceFactory::initialize());
  auto* const environment = get<Zelv::IAppEnvironment>(Zelv::IID_IAppEnvironment);
  LogLines log;
  environment->unregisterComponent("ConfigurationManager");
  EXPECT_THAT(log.lines(), Contains(Pair(PCRealDebug::Warning,
                                         "DataController::unregisterComponent: not implemented!")));
  EXPECT_THAT(environment->getRegisteredComponents(),
              Contains(Pair("ConfigurationManager", testing::NotNull())));
}

/// The file that a symbol of the running process comes from; empty when there is no such symbol.
std::string homeOf(char const* aSymbol) {
  void* const address = ::dlsym(RTLD_DEFAULT, aSymbol);
  Dl_info info{};
  if (address == nullptr || ::dladdr(address, &info) == 0) {
    return "";
  }
  return std::filesystem::path(info.dli_fname).filename().string();
}

TEST(ApiSymbols, InterfacesAndTheEntryAreExported) {
  for (char const* symbol :
       {"_ZN4Zelv16InterfaceFactory10initializeEv", "_ZTVN4Zelv5IBaseE", "_ZTIN4Zelv5IBaseE",
        "_ZTVN4Zelv9IBaseDataE", "_ZTVN4Zelv9ICoreDataE", "_ZTVN4Zelv10IBaseTimerE",
        "_ZTVN4Zelv12IBaseCommandE", "_ZTVN4Zelv9IBaseUserE", "_ZTVN4Zelv17IBaseDataCallbackE",
        "_ZTVN4Zelv17StatusInformationE", "_ZTIN4Zelv4CoreE"}) {
    EXPECT_NE(homeOf(symbol), "") << symbol;
  }
  EXPECT_EQ(homeOf("_ZN4Zelv16InterfaceFactory10initializeEv").rfind("libZelv.so", 0), 0U);
}

TEST(ApiSymbols, ControllersStayHidden) {
  for (char const* symbol :
       {"_ZTVN4Zelv10Controller15TimerControllerE", "_ZTVN4Zelv10Controller14DataControllerE",
        "_ZTVN4Zelv10Controller21EnvironmentControllerE",
        "_ZTVN4Zelv10Controller18LifetimeControllerE", "_ZTVN4Zelv10Controller5TimerE"}) {
    EXPECT_EQ(homeOf(symbol), "") << symbol;
  }
}

}  // namespace
