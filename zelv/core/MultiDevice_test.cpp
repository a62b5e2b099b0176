#include "zelv/core/MultiDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "zelv/core/testing/MultiDeviceTest.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;
using Platform::Fake::Logged;
using ::testing::EndsWith;
using ::testing::SizeIs;
using Testing::Told;

constexpr char const* cAlerts = "Devices/LocalTV/SystemAlerts/text()";
constexpr char const* cNoSetControl =
    "MultiDevice::getData: delegating to TVControl.TOLMAR: TVControl is removed for Quorl, do "
    "nothing";

using MultiDeviceTest = Testing::MultiDeviceTest;

// Reading.

TEST_F(MultiDeviceTest, ReadsFromTheFile) {
  start();
  EXPECT_EQ(read(cNamePath), "Mine");
  EXPECT_EQ(read("/Zelv/Devices/MulticastPort/text()"), "4451");
  EXPECT_EQ(ask(cNamePath), "Mine");
}

TEST_F(MultiDeviceTest, LeavesAPathOutsideItsBranchAsItStands) {
  start();
  EXPECT_EQ(read("Devices/LocalTV/Name/text()"), "Mine");
  EXPECT_EQ(read("/Devices/LocalTV/Name/text()"), "Mine");
  EXPECT_EQ(write("/Devices/LocalTV/Name/text()", "Yours"), 0);
  EXPECT_EQ(read(cNamePath), "Yours");
}

TEST_F(MultiDeviceTest, ThrowsForWhatIsNotThere) {
  start();
  for (std::string const& path :
       {std::string("/Zelv/Devices/LocalTV/Colour"), std::string("/Zelv/DevicesOther/a"),
        std::string("/Zelv/Other/a"), std::string("/Zelv/Devices/LocalTV/@Colour")}) {
    std::string value;
    std::string const failure = failureOf([&] { device->getData(path, value, GUID::nullGUID); });
    EXPECT_EQ(failure, "in MultiDevice::getData: data not found for '" + path + "'.");
    EXPECT_THAT(failure, EndsWith("'."));
  }
}

TEST_F(MultiDeviceTest, AReaderOfTheTreeOfWhatIsNotThereGetsAFailure) {
  start();
  EXPECT_EQ(ask("/Zelv/Devices/LocalTV/Colour"), "failed");
  EXPECT_THAT(set.log, Logged(PCRealDebug::Error,
                              "LocalDataController::getData: Exception: in MultiDevice::getData: "
                              "data not found for '/Zelv/Devices/LocalTV/Colour'."));
}

TEST_F(MultiDeviceTest, ReadsOfTheOldSetControlSucceedWithoutData) {
  start();
  for (char const* path :
       {"/Zelv/Devices/LocalTV/Display", "/Zelv/Devices/LocalTV/Tuners/Tuner[1]/Channel/text()",
        "/Zelv/Devices/LocalTV/Sources/@ID", "/Zelv/Devices/LocalTV/SpeakersAndMore"}) {
    set.log.clear();
    std::string value = "as it was";
    EXPECT_EQ(device->getData(path, value, GUID::nullGUID), 0);
    EXPECT_EQ(value, "as it was") << path;
    EXPECT_EQ(set.log.count(PCRealDebug::Warning, cNoSetControl), 1) << path;
    EXPECT_EQ(ask(path), "") << path;
  }
}

TEST_F(MultiDeviceTest, RemoteListsAreEmptyWithoutDiscovery) {
  start();
  ask(cNamePath);  // behind what the system itself asks at its start
  for (char const* path : {"/Zelv/Devices/RemoteTV/@ID", "/Zelv/Devices/Mobile[@ID='x']/Name",
                           "/Zelv/Devices/Unknown", "/Zelv/Devices/MobileAndMore"}) {
    set.log.clear();
    std::string value = "as it was";
    EXPECT_EQ(device->getData(path, value, GUID::nullGUID), 0);
    EXPECT_EQ(value, "") << path;
    EXPECT_EQ(
        set.log.count(PCRealDebug::Detail, "MultiDevice::getData: delegating to DiscoveryService."),
        1)
        << path;
  }
  EXPECT_EQ(ask("/Zelv/Devices/RemoteTV/@ID"), "");
}

// Writing.

/// Looks around whenever it is told of a value.
class OnTelling : public virtual IBaseDataCallback {
 public:
  explicit OnTelling(std::function<void(std::string const&)> aLook) : mLook(std::move(aLook)) {}
  void onData(std::string const&, std::string const& aValue, ContextInformation const*,
              GUID const&) override {
    mLook(aValue);
  }
  void onStatus(StatusInformation const&, GUID const&) override {}

 private:
  std::function<void(std::string const&)> mLook;
};

TEST_F(MultiDeviceTest, AWriteIsOnTheStorageBeforeSubscribersHearOfIt) {
  start();
  std::vector<std::string> seen;
  OnTelling look([&](std::string const& aValue) {
    if (aValue != "Yours") {
      return;
    }
    seen = FakeShell::Lines();
    EXPECT_EQ(saved(cNamePath), "Yours");
    EXPECT_FALSE(set.directories.hasWritable("Devices.xml.tmp"));
    EXPECT_EQ(FakeFiles::Count(FakeFiles::Rename), 1);
    EXPECT_GE(FakeFiles::Count(FakeFiles::Sync), 2) << "the file and its directory";
  });
  core->subscribeData(cNamePath, nullptr, &look);
  ask(cNamePath);  // the first delivery is past
  FakeShell::Reset();
  FakeFiles::Reset();
  EXPECT_EQ(write(cNamePath, "Yours"), 0);
  EXPECT_EQ(seen, std::vector<std::string>(2, "sync")) << "before the replacement and after";
  InterfaceFactory::terminate();
}

TEST_F(MultiDeviceTest, SubscribersHearThePathAndTheValueAsTheyCameIn) {
  start();
  GUID const id = core->subscribeData(cNamePath, nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(id));
  write(cNamePath, "Yours");
  ASSERT_THAT(listener.of(id), SizeIs(2));
  EXPECT_EQ(listener.of(id)[1].what, cNamePath);
  EXPECT_EQ(listener.of(id)[1].value, "Yours");
}

TEST_F(MultiDeviceTest, PassesTheTransactionOn) {
  start();
  // Withheld is what carries the id of the running transaction, and idle that is the null one.
  std::string const withheld =
      "DataController::notifyDataSubscribers: RemoteDataController will not be notified.";
  set.log.clear();
  device->setData(cNamePath, "a", GUID::createGUID());
  EXPECT_EQ(set.log.count(PCRealDebug::Detail, withheld), 0);
  device->setData(cNamePath, "b", GUID::nullGUID);
  EXPECT_EQ(set.log.count(PCRealDebug::Detail, withheld), 1);
}

TEST_F(MultiDeviceTest, AWriteOfTheTreeReachesTheFile) {
  start();
  GUID const id = core->setData(cNamePath, "Yours", &listener, true);
  EXPECT_EQ(ask(cNamePath), "Yours");
  EXPECT_EQ(saved(cNamePath), "Yours");
  EXPECT_THAT(listener.of(id), ::testing::IsEmpty()) << "no failure";
}

TEST_F(MultiDeviceTest, EachWriteReplacesTheFileOnceAndRunsSyncBeforeAndAfter) {
  start();
  FakeShell::Reset();
  FakeFiles::Reset();
  for (int i = 0; i < 3; ++i) {
    write(cNamePath, std::to_string(i));
  }
  EXPECT_EQ(FakeShell::Count("sync"), 6);
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Rename), 3);
}

TEST_F(MultiDeviceTest, RefusesAWriteToWhatIsNotThere) {
  start();
  std::string const before = file();
  FakeShell::Reset();
  for (char const* path : {"/Zelv/Devices/LocalTV/Colour/text()", "/Zelv/Devices/LocalTV/@Colour",
                           "/Zelv/Other/a/text()"}) {
    set.log.clear();
    EXPECT_EQ(write(path, "red"), -1) << path;
    EXPECT_EQ(set.log.count(PCRealDebug::Warning,
                            "MultiDevice::setData: Failed to set data in HierarchicalDB."),
              1)
        << path;
  }
  EXPECT_EQ(file(), before);
  EXPECT_THAT(FakeShell::Lines(), ::testing::IsEmpty());
}

TEST_F(MultiDeviceTest, WritesToTheOldDisplayAndSpeakersSucceedAndGoNowhere) {
  set.directories.putReadOnly("Devices.xml", devices("", "<Display/><Speakers/>"));
  start();
  std::string const before = file();
  for (char const* path :
       {"/Zelv/Devices/LocalTV/Display/text()", "/Zelv/Devices/LocalTV/Speakers/text()"}) {
    set.log.clear();
    EXPECT_EQ(write(path, "loud"), 0);
    EXPECT_EQ(set.log.count(PCRealDebug::Warning, cNoSetControl), 1) << path;
  }
  EXPECT_EQ(file(), before);
}

TEST_F(MultiDeviceTest, WritesToTheOldTunersAndSourcesGoToTheFileThatNobodyReads) {
  set.directories.putReadOnly("Devices.xml", devices("", "<Tuners/><Sources/>"));
  start();
  for (char const* path :
       {"/Zelv/Devices/LocalTV/Tuners/text()", "/Zelv/Devices/LocalTV/Sources/text()"}) {
    EXPECT_EQ(write(path, "7"), 0);
    EXPECT_EQ(saved(path), "7");
    EXPECT_EQ(read(path), "");
  }
}

TEST_F(MultiDeviceTest, AWriteBelowARemoteListGoesToTheFileAndIsNeverSeenAgain) {
  start();
  EXPECT_EQ(write("/Zelv/Devices/RemoteTV[@ID='x']", "<RemoteTV ID='x'><Name>a</Name></RemoteTV>"),
            0);
  EXPECT_EQ(saved("/Zelv/Devices/RemoteTV[@ID='x']/Name/text()"), "a");
  EXPECT_EQ(read("/Zelv/Devices/RemoteTV[@ID='x']/Name/text()"), "");
}

// The alerts leaf.

TEST_F(MultiDeviceTest, AlertsAreWrittenByTheShortPathAloneAndReadByBoth) {
  set.directories.putReadOnly("Devices.xml", devices("", "<SystemAlerts>old</SystemAlerts>"));
  start();
  std::string const longPath = std::string("/Zelv/") + cAlerts;
  EXPECT_EQ(read(longPath), "") << "not from the file";
  EXPECT_EQ(write(cAlerts, "fire"), 0);
  EXPECT_EQ(read(longPath), "fire");
  EXPECT_EQ(read(cAlerts), "fire");
  EXPECT_EQ(write(longPath, "flood"), 0);
  EXPECT_EQ(read(longPath), "fire");
  EXPECT_EQ(saved(longPath), "flood");
}

TEST_F(MultiDeviceTest, AlertsHaveNoElementInAFileThatLacksIt) {
  start();
  EXPECT_EQ(write(std::string("/Zelv/") + cAlerts, "flood"), -1);
  EXPECT_EQ(write(std::string("/") + cAlerts, "flood"), -1);
  EXPECT_EQ(read(std::string("/Zelv/") + cAlerts), "");
}

TEST_F(MultiDeviceTest, AlertsLastAsLongAsTheSetRuns) {
  start();
  std::string const before = file();
  FakeShell::Reset();
  EXPECT_EQ(write(cAlerts, "fire"), 0);
  EXPECT_EQ(file(), before);
  EXPECT_THAT(FakeShell::Lines(), ::testing::IsEmpty());
  InterfaceFactory::terminate();
  start();
  EXPECT_EQ(read(cAlerts), "");
}

TEST_F(MultiDeviceTest, SubscribersHearOfAlertsOnThisDeviceAlone) {
  start();
  set.log.clear();
  EXPECT_EQ(device->setData(cAlerts, "fire", GUID::createGUID()), 0);
  // Not the id that came in, but the null one; idle that is the one that is withheld.
  EXPECT_EQ(set.log.count(PCRealDebug::Trace, "DataController::notifyDataSubscribers: Entry."), 1);
  EXPECT_THAT(set.log, Logged(PCRealDebug::Detail,
                              "DataController::notifyDataSubscribers: RemoteDataController will "
                              "not be notified."));
}

TEST_F(MultiDeviceTest, AlertsWithoutATreeAreKeptAndRefused) {
  make();
  EXPECT_EQ(write(cAlerts, "fire"), -1);
  EXPECT_EQ(read(cAlerts), "fire");
  EXPECT_THAT(set.log, Logged(PCRealDebug::Warning,
                              "MultiDevice::setData: Failed to get mCoreData interface."));
}

TEST_F(MultiDeviceTest, WithoutATreeAWriteIsSavedAndNobodyIsTold) {
  make();
  EXPECT_EQ(write(cNamePath, "Yours"), 0);
  EXPECT_EQ(saved(cNamePath), "Yours");
  EXPECT_EQ(set.log.count(PCRealDebug::Trace, "DataController::notifyDataSubscribers: Entry."), 0);
}

// Saving that fails.

TEST_F(MultiDeviceTest, AFailedSaveThrowsAndNobodyIsTold) {
  start();
  GUID const id = core->subscribeData(cNamePath, nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(id));
  std::string const before = file();
  FakeFiles::Reset();
  FakeFiles::FailFrom(FakeFiles::Write);
  EXPECT_EQ(failureOf([this] { write(cNamePath, "Yours"); }), "Fil save failed!");
  EXPECT_EQ(set.log.count(PCRealDebug::Error,
                          "MultiDevice::setData: File save failed, data not comitted."),
            1);
  EXPECT_EQ(read(cNamePath), "Yours") << "memory and file differ";
  EXPECT_EQ(file(), before);
  EXPECT_FALSE(set.directories.hasWritable("Devices.xml.tmp"));
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Rename), 0);
  EXPECT_THAT(listener.of(id), SizeIs(1));
}

TEST_F(MultiDeviceTest, AFailedSaveIsHeardByTheWriterOnceAndTheNextOneBringsBoth) {
  start();
  FakeFiles::DiskFullAfter(0);
  GUID const id = core->setData(cNamePath, "Yours", &listener, true);
  EXPECT_EQ(ask(cNamePath), "Yours");
  EXPECT_THAT(listener.of(id), SizeIs(1));
  EXPECT_EQ(listener.of(id)[0].kind, Told::Status);
  FakeFiles::Reset();
  EXPECT_EQ(write("/Zelv/Devices/LocalTV/Location/text()", "There"), 0);
  EXPECT_EQ(saved(cNamePath), "Yours");
  EXPECT_EQ(saved("/Zelv/Devices/LocalTV/Location/text()"), "There");
}

TEST_F(MultiDeviceTest, ADocumentThatHasGrownTooLargeIsNotSaved) {
  start();
  std::string const before = file();
  EXPECT_EQ(failureOf([this] { write(cNamePath, std::string(5 << 20, 'x')); }), "Fil save failed!");
  EXPECT_EQ(file(), before);
  EXPECT_EQ(write(cNamePath, "Yours"), 0) << "and when it has shrunk, it is";
  EXPECT_EQ(saved(cNamePath), "Yours");
}

TEST_F(MultiDeviceTest, AFileThatCannotBeReplacedStopsNothing) {
  start();
  GUID const id = core->subscribeData(cNamePath, nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(id));
  FakeShell::Reset();
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_EQ(write(cNamePath, "Yours"), 0);
  EXPECT_EQ(saved(cNamePath), "Mine");
  EXPECT_EQ(FakeShell::Count("sync"), 2);
  EXPECT_THAT(listener.of(id), SizeIs(2));
}

// The rest.

TEST_F(MultiDeviceTest, TakesWhatItHasNoUseForAndOnlyLogsIt) {
  make();
  std::string const before = file();
  EXPECT_EQ(device->addData("/Zelv/Devices/LocalTV/Name", "<Name>a</Name>", GUID::nullGUID), 0);
  EXPECT_EQ(device->onSubscribe(cNamePath, GUID::nullGUID), 0);
  EXPECT_EQ(device->onUnsubscribe(cNamePath, GUID::nullGUID), 0);
  device->onStatus(StatusInformation("text"), GUID::nullGUID);
  for (char const* name : {"addData", "onSubscribe", "onUnsubscribe", "onStatus"}) {
    EXPECT_THAT(set.log,
                Logged(PCRealDebug::Trace, std::string("MultiDevice::") + name + ": Entry."));
  }
  EXPECT_EQ(file(), before);
}

TEST_F(MultiDeviceTest, GivesItsDocumentAway) {
  start();
  std::string name;
  ASSERT_NE(device->getDeviceData(), nullptr);
  EXPECT_EQ(device->getDeviceData()->getContent("/Devices/LocalTV/Name/text()", name), 0);
  EXPECT_EQ(name, "Mine");
}

TEST_F(MultiDeviceTest, MayBeReadByManyThreadsWhileItIsWritten) {
  start();
  std::atomic<bool> done{false};
  std::atomic<int> torn{0};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while (!done) {
        std::string name;
        device->getData(cNamePath, name, GUID::nullGUID);
        torn += name != "Mine" && name != std::string(500, 'a') ? 1 : 0;
      }
    });
  }
  for (int i = 0; i < 50; ++i) {
    write(cNamePath, i % 2 == 0 ? std::string(500, 'a') : "Mine");
  }
  done = true;
  for (std::thread& reader : readers) {
    reader.join();
  }
  EXPECT_EQ(torn, 0);
}

}  // namespace
}  // namespace Zelv
