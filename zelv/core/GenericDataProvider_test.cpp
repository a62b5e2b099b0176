#include "zelv/core/GenericDataProvider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeFiles;
using Platform::Fake::Logged;
using ::testing::HasSubstr;
using Testing::Listener;
using ::testing::SizeIs;
using Testing::SmallSet;
using Testing::Told;

char const cFile[] = "<Things><A>1</A><B ID=\"x\">2</B></Things>";

class GenericDataProviderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    core = SmallSet::start();
    ASSERT_NE(core, nullptr) << set.log.dump();
    set.directories.putWritable("Things.xml", cFile);
    make(true);
  }

  // The provider and the listener must outlive the worker.
  void TearDown() override { InterfaceFactory::terminate(); }

  void make(bool aPersist) {
    provider = std::make_unique<Core::GenericDataProvider>(
        "/Zelv/Things", set.directories.writable() + "Things.xml", aPersist);
  }

  void command(int aCommand) {
    provider->onLifetime(static_cast<eLifetimeCommand>(aCommand), GUID::createGUID());
  }

  std::string read(std::string const& aPath) {
    std::string data;
    EXPECT_EQ(provider->getData(aPath, data, GUID::nullGUID), 0);
    return data;
  }

  int write(std::string const& aPath, std::string const& aValue) {
    return provider->setData(aPath, aValue, GUID::createGUID());
  }

  /// The text of the exception.
  std::string failureOf(std::string const& aPath) {
    std::string data;
    try {
      provider->getData(aPath, data, GUID::nullGUID);
    } catch (std::runtime_error const& error) {
      return error.what();
    }
    return "nothing thrown";
  }

  std::string file() const { return set.directories.getWritable("Things.xml"); }
  bool hasTemporary() const { return set.directories.hasWritable("Things.xml.tmp"); }

  /// Subscribes and waits for the first delivery.
  GUID subscribe(std::string const& aPath) {
    GUID const id = core->subscribeData(aPath, nullptr, &listener);
    EXPECT_TRUE(listener.waitFor(id));
    return id;
  }

  Listener listener;
  SmallSet set;
  std::unique_ptr<Core::GenericDataProvider> provider;
  Core* core = nullptr;
};

// Reading.

TEST_F(GenericDataProviderTest, ReadsFromTheFileOfItsBranch) {
  command(0);
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "1");
  EXPECT_EQ(read("/Zelv/Things/B[@ID='x']/@ID"), "x");
}

TEST_F(GenericDataProviderTest, LeavesAPathOutsideItsBranchAsItStands) {
  command(0);
  EXPECT_EQ(read("/Things/A/text()"), "1");
  EXPECT_EQ(read("Things/A/text()"), "1");
  EXPECT_EQ(failureOf("/Zelv/Other/A"),
            "in GenericDataProvider::getData: data not found for '/Zelv/Other/A'.");
}

TEST_F(GenericDataProviderTest, ThrowsForWhatTheDocumentLacks) {
  command(0);
  EXPECT_EQ(failureOf("/Zelv/Things/C"),
            "in GenericDataProvider::getData: data not found for '/Zelv/Things/C'.");
}

TEST_F(GenericDataProviderTest, AnswersFailuresBeforeItHasLoadedAnything) {
  EXPECT_EQ(failureOf("/Zelv/Things/A"),
            "in GenericDataProvider::getData: data not found for '/Zelv/Things/A'.");
  EXPECT_EQ(write("/Zelv/Things/A/text()", "2"), -1);
}

TEST_F(GenericDataProviderTest, IsReachedThroughTheTree) {
  command(0);
  GUID const found = core->requestData("/Zelv/Things/A/text()", nullptr, &listener);
  GUID const lacking = core->requestData("/Zelv/Things/C", nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(found));
  ASSERT_TRUE(listener.waitFor(lacking));
  EXPECT_EQ(listener.of(found)[0].value, "1");
  EXPECT_EQ(listener.of(lacking)[0].kind, Told::Status);
  EXPECT_EQ(listener.of(lacking)[0].value, "");
  EXPECT_THAT(set.log, Logged(PCRealDebug::Error,
                              "LocalDataController::getData: Exception: in "
                              "GenericDataProvider::getData: data not found for "
                              "'/Zelv/Things/C'."));
}

// Writing.

TEST_F(GenericDataProviderTest, HasEveryChangeInTheFileAndLeavesNoTemporaryOne) {
  command(0);
  EXPECT_EQ(write("/Zelv/Things/A/text()", "new"), 0);
  EXPECT_THAT(file(), HasSubstr("<A>new</A>"));
  EXPECT_FALSE(hasTemporary());
}

TEST_F(GenericDataProviderTest, TellsSubscribersWithThePathAndTransactionThatCameIn) {
  command(0);
  GUID const id = subscribe("/Zelv/Things/A/text()");
  write("/Zelv/Things/A/text()", "new");
  ASSERT_THAT(listener.of(id), SizeIs(2));
  EXPECT_EQ(listener.of(id)[1].what, "/Zelv/Things/A/text()");
  EXPECT_EQ(listener.of(id)[1].value, "new");
  // Withheld is what carries the id of the running transaction, and idle that is the null one.
  set.log.clear();
  provider->setData("/Zelv/Things/A/text()", "newer", GUID::nullGUID);
  EXPECT_THAT(set.log, Logged(PCRealDebug::Detail,
                              "DataController::notifyDataSubscribers: "
                              "RemoteDataController will not be notified."));
}

TEST_F(GenericDataProviderTest, LeavesTheFileAndTheSubscribersAloneWhenTheDocumentRefuses) {
  command(0);
  GUID const id = subscribe("/Zelv/Things");
  EXPECT_EQ(write("/Zelv/Things/B/@none", "new"), -1);
  EXPECT_EQ(write("/Zelv/Things/C/text()", "new"), -1);
  EXPECT_EQ(file(), cFile);
  EXPECT_FALSE(hasTemporary());
  GUID const last = core->requestData("/Zelv/Things/A", nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(last));
  EXPECT_THAT(listener.of(id), SizeIs(1));
}

TEST_F(GenericDataProviderTest, AddsNoAttribute) {
  command(0);
  EXPECT_EQ(write("/Zelv/Things/B/@ID", "y"), 0);
  EXPECT_EQ(write("/Zelv/Things/A/@ID", "y"), -1);
  EXPECT_EQ(read("/Zelv/Things/B/@ID"), "y");
}

TEST_F(GenericDataProviderTest, WithoutPersistenceChangesMemoryAndTellsSubscribers) {
  make(false);
  command(0);
  GUID const id = subscribe("/Zelv/Things/A/text()");
  EXPECT_EQ(write("/Zelv/Things/A/text()", "new"), 0);
  EXPECT_EQ(file(), cFile);
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "new");
  EXPECT_THAT(listener.of(id), SizeIs(2));
}

TEST_F(GenericDataProviderTest, AcceptsAnAddAndDoesNothing) {
  command(0);
  EXPECT_EQ(provider->addData("/Zelv/Things/A/text()", "new", GUID::createGUID()), 0);
  EXPECT_EQ(provider->onSubscribe("/Zelv/Things/A", GUID::createGUID()), 0);
  EXPECT_EQ(provider->onUnsubscribe("/Zelv/Things/A", GUID::createGUID()), 0);
  provider->onStatus(StatusInformation("text"), GUID::createGUID());
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "1");
  EXPECT_EQ(file(), cFile);
}

TEST_F(GenericDataProviderTest, LetsTheExceptionOfABadPredicatePass) {
  command(0);
  EXPECT_THROW(write("/Zelv/Things/B[1]/text()", "new"), std::out_of_range);
  EXPECT_EQ(file(), cFile);
}

// Saving that fails.

struct Fault {
  FakeFiles::Call call;
  int nth;
};

class FailedSave : public GenericDataProviderTest, public ::testing::WithParamInterface<Fault> {
 protected:
  void TearDown() override {
    FakeFiles::Reset();
    GenericDataProviderTest::TearDown();
  }
};

TEST_P(FailedSave, ThrowsKeepsTheOldFileAndTellsNobody) {
  command(0);
  GUID const id = subscribe("/Zelv/Things/A/text()");
  FakeFiles::FailNth(GetParam().call, GetParam().nth);
  try {
    write("/Zelv/Things/A/text()", "new");
    ADD_FAILURE() << "saved";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "File save failed!");
  }
  EXPECT_THAT(set.log,
              Logged(PCRealDebug::Error,
                     "GenericDataProvider::setData: File save failed, data not comitted."));
  EXPECT_EQ(file(), cFile);
  EXPECT_FALSE(hasTemporary());
  EXPECT_THAT(listener.of(id), SizeIs(1));
  // The change stands in memory, and the next one takes it to the file.
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "new");
  FakeFiles::Reset();
  EXPECT_EQ(write("/Zelv/Things/B/text()", "newer"), 0);
  EXPECT_THAT(file(), HasSubstr("<A>new</A>"));
}

INSTANTIATE_TEST_SUITE_P(AtEachCall, FailedSave,
                         ::testing::Values(Fault{FakeFiles::Open, 1}, Fault{FakeFiles::Write, 1},
                                           Fault{FakeFiles::Sync, 1}, Fault{FakeFiles::Close, 1}));

TEST_F(GenericDataProviderTest, KeepsTheOldFileOnAFullDisk) {
  command(0);
  FakeFiles::DiskFullAfter(5);
  EXPECT_THROW(write("/Zelv/Things/A/text()", "new"), std::runtime_error);
  FakeFiles::Reset();
  EXPECT_EQ(file(), cFile);
  EXPECT_FALSE(hasTemporary());
}

TEST_F(GenericDataProviderTest, GoesOnWhenTheFileCannotBeReplaced) {
  command(0);
  GUID const id = subscribe("/Zelv/Things/A/text()");
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_EQ(write("/Zelv/Things/A/text()", "new"), 0);
  FakeFiles::Reset();
  EXPECT_EQ(file(), cFile);
  EXPECT_FALSE(hasTemporary());
  EXPECT_THAT(listener.of(id), SizeIs(2));
  EXPECT_THAT(set.log, Logged(PCRealDebug::Error, "GenericDataProvider::setData: File '" +
                                                      set.directories.writable() +
                                                      "Things.xml' could not be replaced."));
}

TEST_F(GenericDataProviderTest, ReportsAFailedSaveToTheCallerOfTheSet) {
  command(0);
  FakeFiles::FailNth(FakeFiles::Write);
  GUID const id = core->setData("/Zelv/Things/A/text()", "new", &listener, true);
  ASSERT_TRUE(listener.waitFor(id));
  FakeFiles::Reset();
  EXPECT_EQ(listener.of(id)[0].kind, Told::Status);
  EXPECT_THAT(set.log, Logged(PCRealDebug::Error,
                              "LocalDataController::executeSetData: Exception in "
                              "IDataProvider::setData: File save failed!"));
}

TEST_F(GenericDataProviderTest, ServesNothingFromAFileThatDoesNotLoad) {
  set.directories.putWritable("Things.xml", "<Things><A>");
  command(0);
  EXPECT_THAT(failureOf("/Zelv/Things/A"), HasSubstr("data not found"));
  EXPECT_EQ(write("/Zelv/Things/A", "<A/>"), -1);
  EXPECT_EQ(file(), "<Things><A>");
}

// Lifetime.

TEST_F(GenericDataProviderTest, LoadsNothingAgainAtASecondCommand0) {
  command(0);
  set.directories.putWritable("Things.xml", "<Things><A>other</A></Things>");
  command(0);
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "1");
  command(1);
  command(0);
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "1");
}

/// The states show in what command 0 and a second registration do; in between they change nothing.
TEST_F(GenericDataProviderTest, AnswersInEveryStateOnceItHasLoaded) {
  command(0);
  for (int const next : {1, 1, 2, 2, 1, 7, -1, 3, 1, 2}) {
    command(next);
    EXPECT_EQ(read("/Zelv/Things/A/text()"), "1") << next;
  }
}

TEST_F(GenericDataProviderTest, DoesNothingBeforeCommand0ButTakeItsBranchBack) {
  command(1);
  command(2);
  EXPECT_THAT(failureOf("/Zelv/Things/A"), HasSubstr("data not found"));
  set.log.clear();
  command(3);
  EXPECT_THAT(set.log, Logged(PCRealDebug::Warning,
                              "LocalDataController::unregisterDataProvider: No data provider "
                              "registered for XPath /Zelv/Things."));
  // Still in its first state: it can be brought up.
  command(0);
  EXPECT_EQ(read("/Zelv/Things/A/text()"), "1");
}

TEST_F(GenericDataProviderTest, TakesItsBranchBackAtCommand3FromEitherState) {
  for (bool const started : {false, true}) {
    make(true);
    command(0);
    if (started) {
      command(1);
    }
    command(3);
    GUID const id = core->requestData("/Zelv/Things/A/text()", nullptr, &listener);
    ASSERT_TRUE(listener.waitFor(id, 2));
    EXPECT_EQ(listener.of(id)[0].kind, Told::Status);
    // Over is over.
    command(0);
    GUID const again = core->requestData("/Zelv/Things/A/text()", nullptr, &listener);
    ASSERT_TRUE(listener.waitFor(again, 2));
    EXPECT_EQ(listener.of(again)[0].kind, Told::Status);
  }
}

TEST_F(GenericDataProviderTest, LeavesABranchThatIsTakenToItsProvider) {
  command(0);
  Core::GenericDataProvider other("/Zelv/Things", set.directories.writable() + "None.xml", true);
  EXPECT_THROW(other.onLifetime(LIFETIME_INITIALISE, GUID::createGUID()), std::logic_error);
  GUID const id = core->requestData("/Zelv/Things/A/text()", nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(id));
  EXPECT_EQ(listener.of(id)[0].value, "1");
}

TEST(GenericDataProvider, StaysInItsStateWhenThereIsNoTree) {
  // Nothing to start the library from.
  Platform::Fake::TemporaryDirectories directories;
  Platform::Fake::LogCapture log;
  directories.putWritable("Things.xml", cFile);
  Core::GenericDataProvider provider("/Zelv/Things", directories.writable() + "Things.xml", true);
  std::string const text = "GenericDataProvider::initialize: Failed to obtain ICoreData interface.";
  provider.onLifetime(LIFETIME_INITIALISE, GUID::createGUID());
  EXPECT_EQ(log.count(PCRealDebug::Error, text), 1) << log.dump();
  // Still in its first state: the command is carried out again.
  provider.onLifetime(LIFETIME_INITIALISE, GUID::createGUID());
  EXPECT_EQ(log.count(PCRealDebug::Error, text), 2) << log.dump();
  provider.onLifetime(LIFETIME_TERMINATE, GUID::createGUID());
  EXPECT_EQ(log.count(PCRealDebug::Error, text), 3) << log.dump();
  // It has its document, and nobody to tell.
  std::string data;
  EXPECT_EQ(provider.setData("/Zelv/Things/A/text()", "new", GUID::createGUID()), 0);
  EXPECT_EQ(provider.getData("/Zelv/Things/A/text()", data, GUID::createGUID()), 0);
  EXPECT_EQ(data, "new");
}

TEST_F(GenericDataProviderTest, LogsEntryAndExitOfWhatDoesNothing) {
  provider->addData("", "", GUID::nullGUID);
  provider->onSubscribe("", GUID::nullGUID);
  provider->onUnsubscribe("", GUID::nullGUID);
  provider->onStatus(StatusInformation("text"), GUID::nullGUID);
  for (std::string const operation : {"addData", "onSubscribe", "onUnsubscribe", "onStatus"}) {
    EXPECT_THAT(set.log,
                Logged(PCRealDebug::Trace, "GenericDataProvider::" + operation + ": Entry."));
    EXPECT_THAT(set.log,
                Logged(PCRealDebug::Trace, "GenericDataProvider::" + operation + ": Exit."));
  }
}

}  // namespace
}  // namespace Zelv
