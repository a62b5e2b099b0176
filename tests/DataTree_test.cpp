// The whole road, on the platform that ships: real files, the real shell, real threads and time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/TemporarySet.h"
#include "zelv/Zelv.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Zelv::GUID;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Testing::Listener;
using Zelv::Testing::Told;

constexpr char const* cApplication = "/Zelv/Applications/ActiveApplication";
constexpr char const* cName = "/Zelv/Applications/ActiveApplication/Name/text()";
constexpr char const* cInterval = "/Zelv/Configuration/UPnP/Ping/Interval/text()";

class DataTree : public ::testing::Test {
 protected:
  ~DataTree() override { Zelv::InterfaceFactory::terminate(); }

  void start() {
    ASSERT_TRUE(Zelv::InterfaceFactory::initialize()) << mLog.dump();
    auto* const library = Zelv::InterfaceFactory::getInterface(Zelv::IID_IAppData);
    mTree = dynamic_cast<Zelv::IAppData*>(library);
    mTimers = dynamic_cast<Zelv::IAppTimer*>(library);
    ASSERT_NE(mTree, nullptr);
    ASSERT_NE(mTimers, nullptr);
  }

  std::string file(std::string const& aName) const {
    std::ifstream stream(mSet.writable() + aName, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
  }

  /// Replaces a file as a power cut would have left it.
  void putFile(std::string const& aName, std::string const& aContent) const {
    std::ofstream(mSet.writable() + aName, std::ios::binary | std::ios::trunc) << aContent;
  }

  /// Reads. @return all that was told of it.
  std::vector<Told> read(std::string const& aXPath, std::size_t aAnswers = 1) {
    GUID const id = mTree->requestData(aXPath, nullptr, &mListener);
    mListener.waitFor(id, aAnswers);
    // The worker is past the question once it has answered a later one.
    GUID const later = mTree->requestData(cInterval, nullptr, &mListener);
    mListener.waitFor(later);
    return mListener.of(id);
  }

  std::string value(std::string const& aXPath) {
    auto const told = read(aXPath);
    return told.size() == 1 && told[0].kind == Told::Data ? told[0].value : "no single value";
  }

  TemporarySet mSet;
  LogCapture mLog;
  Listener mListener;
  Zelv::IAppData* mTree = nullptr;
  Zelv::IAppTimer* mTimers = nullptr;
};

TEST_F(DataTree, FirstStartMakesTheWritableDirectoryFromTheFactoryFiles) {
  start();
  for (char const* name : {"Applications.xml", "Assets.xml", "Configuration.xml", "Devices.xml",
                           "Mime.xml", "Users.xml", "tv.png"}) {
    EXPECT_TRUE(std::filesystem::exists(mSet.writable() + name)) << name;
  }
  namespace fs = std::filesystem;
  EXPECT_EQ(fs::status(mSet.writable()).permissions(), fs::perms::all);
  EXPECT_EQ(fs::status(mSet.writable() + "Users.xml").permissions(), fs::perms::all);
}

TEST_F(DataTree, AnswersForTheAssetsOfTheBuiltInPackageAndOfOneThatIsLoaded) {
  start();
  std::string const all = "/Zelv/Storage/Assets/AssetPackage/*/@src";
  EXPECT_EQ(value(all), "tv.png");
  mTree->setData("/Zelv/Storage/Assets/AssetPackage[@name='more']",
                 "<AssetPackage ID='' name='more' path='more/'><Logo src='logo.svg' ID='1'/>"
                 "</AssetPackage>",
                 &mListener, true);
  EXPECT_EQ(value(all), "logo.svg&#x13;tv.png");
  mTree->setData("/Zelv/Storage/Assets/AssetPackage[@name='test']", "", &mListener, true);
  EXPECT_EQ(value(all), "logo.svg");
}

TEST_F(DataTree, ReadsComeBackWithPathContextAndId) {
  start();
  struct Context : Zelv::ContextInformation {
  } context;
  GUID const id = mTree->requestData(cInterval, &context, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  Told const told = mListener.of(id)[0];
  EXPECT_EQ(told.kind, Told::Data);
  EXPECT_EQ(told.what, cInterval);
  EXPECT_EQ(told.value, "30");
  EXPECT_EQ(told.context, &context);
}

TEST_F(DataTree, SeveralNodesComeAsOneTextWithSeparators) {
  start();
  EXPECT_EQ(value("/Zelv/Configuration/Services/Service/Port/text()"),
            "4446&#x13;4447&#x13;4448&#x13;4449&#x13;4450&#x13;4452");
  EXPECT_EQ(value("/Zelv/Configuration/Services/Service[Name='AssetManagement']/Port/text()"),
            "4450");
}

TEST_F(DataTree, WriteIsOnTheDiskAfterwards) {
  start();
  mTree->setData(cName, "Game & Co", &mListener, true);
  EXPECT_EQ(value(cName), "Game & Co");
  EXPECT_THAT(file("Applications.xml"), HasSubstr("<Name>Game &amp; Co</Name>"));
  EXPECT_FALSE(std::filesystem::exists(mSet.writable() + "Applications.xml.tmp"));
}

TEST_F(DataTree, WholeElementIsReplaced) {
  start();
  mTree->setData(cApplication,
                 "<ActiveApplication><Name>Film</Name><Type>video</Type></ActiveApplication>",
                 &mListener, true);
  EXPECT_EQ(value("/Zelv/Applications/ActiveApplication/Type/text()"), "video");
}

TEST_F(DataTree, SubscriberGetsTheCurrentValueThenTheChange) {
  start();
  GUID const id = mTree->subscribeData(cName, nullptr, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  mTree->setData(cName, "Game", &mListener, true);
  ASSERT_TRUE(mListener.waitFor(id, 2));
  auto const told = mListener.of(id);
  EXPECT_EQ(told[0].value, "");
  EXPECT_EQ(told[1].value, "Game");
  EXPECT_EQ(told[1].what, cName);
}

TEST_F(DataTree, SubscriberAboveTheChangeGetsItsOwnPathReadAgain) {
  start();
  GUID const id = mTree->subscribeData(cApplication, nullptr, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  mTree->setData(cName, "Game", &mListener, true);
  ASSERT_TRUE(mListener.waitFor(id, 2));
  Told const told = mListener.of(id)[1];
  EXPECT_EQ(told.what, cApplication);
  EXPECT_THAT(told.value, HasSubstr("<Name>Game</Name>"));
}

TEST_F(DataTree, SubscriberOfAnotherBranchHearsNothing) {
  start();
  GUID const id = mTree->subscribeData(cInterval, nullptr, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  mTree->setData(cName, "Game", &mListener, true);
  EXPECT_EQ(value(cName), "Game");
  EXPECT_EQ(mListener.of(id).size(), 1U);
}

TEST_F(DataTree, UnsubscribedOneHearsNothingMore) {
  start();
  GUID const id = mTree->subscribeData(cName, nullptr, &mListener);
  ASSERT_TRUE(mListener.waitFor(id));
  mTree->unsubscribeData(id);
  mTree->setData(cName, "Game", &mListener, true);
  EXPECT_EQ(value(cName), "Game");
  EXPECT_EQ(mListener.of(id).size(), 1U);
}

TEST_F(DataTree, ReadOfWhatABranchDoesNotHoldFailsOnceWithAnEmptyText) {
  start();
  auto const told = read("/Zelv/Configuration/Nothing");
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told[0].kind, Told::Status);
  EXPECT_EQ(told[0].value, "");
}

TEST_F(DataTree, ReadUnderNoProviderFailsTwice) {
  start();
  for (char const* path : {"/Zelv/Other/x", "/Zelv/Storage"}) {
    auto const told = read(path, 2);
    ASSERT_EQ(told.size(), 2U) << path;
    EXPECT_EQ(told[0].kind, Told::Status);
    EXPECT_EQ(told[1].kind, Told::Status);
  }
}

TEST_F(DataTree, WriteUnderNoProviderFailsOnce) {
  start();
  GUID const id = mTree->setData("/Zelv/Other/x", "y", &mListener, true);
  EXPECT_EQ(value(cInterval), "30");
  EXPECT_EQ(mListener.of(id).size(), 1U);
}

TEST_F(DataTree, WriteToAnotherDeviceIsRefused) {
  start();
  EXPECT_THROW(mTree->setData("/Zelv[@DeviceId='other']/Devices/x", "y", &mListener, true),
               std::runtime_error);
}

TEST_F(DataTree, AddToAFileBackedBranchIsAcceptedAndDoesNothing) {
  start();
  std::string const before = file("Applications.xml");
  GUID const id = mTree->addData(cApplication, "<x/>", &mListener, true);
  EXPECT_EQ(value(cName), "");
  EXPECT_TRUE(mListener.of(id).empty());
  EXPECT_EQ(file("Applications.xml"), before);
}

TEST_F(DataTree, RestartKeepsWhatWasWritten) {
  start();
  mTree->setData(cName, "Game", &mListener, true);
  EXPECT_EQ(value(cName), "Game");
  Zelv::InterfaceFactory::terminate();
  start();
  EXPECT_EQ(value(cName), "Game");
}

TEST_F(DataTree, CorruptFileIsRepairedAtStart) {
  start();
  mTree->setData(cInterval, "99", &mListener, true);
  EXPECT_EQ(value(cInterval), "99");
  Zelv::InterfaceFactory::terminate();
  std::string const whole = file("Configuration.xml");
  putFile("Configuration.xml", whole.substr(0, whole.size() / 2));
  start();
  // What was saved in the file is lost with it.
  EXPECT_EQ(value(cInterval), "30");
  EXPECT_TRUE(mLog.has(PCRealDebug::Notable,
                       "ZelvFileUtil::checkIsFileAvailable: File successfully restored!"))
      << mLog.dump();
}

TEST_F(DataTree, LeftoverOfAnInterruptedSaveDoesNotMatter) {
  start();
  Zelv::InterfaceFactory::terminate();
  putFile("Applications.xml.tmp", "<Applications><Acti");
  start();
  mTree->setData(cName, "Game", &mListener, true);
  EXPECT_EQ(value(cName), "Game");
  EXPECT_FALSE(std::filesystem::exists(mSet.writable() + "Applications.xml.tmp"));
}

TEST_F(DataTree, TimersGoOffAndStop) {
  start();
  GUID const id = mTimers->createTimer(1, -1, "tick", &mListener);
  EXPECT_TRUE(mListener.waitFor(id, 3));
  mTimers->destroyTimer(id, &mListener);
  std::size_t const heard = mListener.of(id).size();
  GUID const once = mTimers->createTimer(5, 1, "once", &mListener);
  ASSERT_TRUE(mListener.waitFor(once));
  EXPECT_EQ(mListener.of(once)[0].what, "once");
  EXPECT_EQ(mListener.of(id).size(), heard);
  mTimers->destroyTimer(once, &mListener);
}

TEST_F(DataTree, CallbackMayAskAndWrite) {
  start();
  class Asker : public Listener {
   public:
    explicit Asker(Zelv::IAppData& aTree) : mAsked(aTree) {}
    void onData(std::string const& aXPath, std::string const& aValue,
                Zelv::ContextInformation const* aContext, GUID const& aId) override {
      if (aValue.size() < 3) {
        mAsked.setData(cName, aValue + "x", this, true);
      }
      Listener::onData(aXPath, aValue, aContext, aId);
    }

   private:
    Zelv::IAppData& mAsked;
  } asker(*mTree);
  GUID const id = mTree->subscribeData(cName, nullptr, &asker);
  ASSERT_TRUE(asker.waitFor(id, 4));
  std::vector<std::string> values;
  for (Told const& told : asker.of(id)) {
    values.push_back(told.value);
  }
  EXPECT_THAT(values, ElementsAre("", "x", "xx", "xxx"));
  Zelv::InterfaceFactory::terminate();
}

}  // namespace
