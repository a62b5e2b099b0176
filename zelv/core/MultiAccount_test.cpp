#include "zelv/core/MultiAccount.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv {
namespace {

using Controller::Testing::FakeCoreData;
using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

char const cFactory[] = "<Users><User ID=\"factory\"><LoggedInTv/></User></Users>";

std::string userOf(std::string const& aId, std::string const& aTv) {
  return "<User ID=\"" + aId + "\"><LoggedInTv>" + aTv + "</LoggedInTv></User>";
}

/// Notes what it is told.
class Tree : public FakeCoreData {
 public:
  std::vector<std::string> calls;
  IDataProvider* provider = nullptr;

  void registerDataProvider(std::string const& aXPath, IDataProvider* aProvider) override {
    calls.push_back("register " + aXPath);
    provider = aProvider;
  }
  void unregisterDataProvider(std::string const& aXPath) override {
    calls.push_back("unregister " + aXPath);
  }
  void updateSubscriberStatus(GUID aId, std::string const& aStatus) override {
    calls.push_back("status " + aId.toString() + " " + aStatus);
  }
  void notifyDataSubscribers(std::string const& aXPath, std::string const& aValue,
                             GUID const& aId) override {
    calls.push_back("notify " + aXPath + " = " + aValue + " " + aId.toString());
  }
};

IBase* findTree(GUID aInterfaceID) {
  return aInterfaceID == IID_ICoreData ? FakeCoreData::find() : nullptr;
}

class MultiAccountTest : public ::testing::Test {
 protected:
  MultiAccountTest() { directories.putReadOnly("Users.xml", cFactory); }

  /// With this file, not initialised.
  void make(std::string const& aContent) {
    directories.putWritable("Users.xml", "<Users>" + aContent + "</Users>");
    account = std::make_unique<Core::MultiAccount>(findTree);
  }

  /// As it runs, with its start forgotten.
  void run(std::string const& aContent) {
    make(aContent);
    command(LIFETIME_INITIALISE);
    command(LIFETIME_START);
    tree.calls.clear();
    log.clear();
    FakeShell::ClearLines();
  }

  void command(eLifetimeCommand aCommand) { account->onLifetime(aCommand, GUID::createGUID()); }

  std::string read(std::string const& aXPath) {
    std::string data;
    EXPECT_EQ(account->getData(aXPath, data, GUID::nullGUID), 0);
    return data;
  }

  std::string loginOf(std::string const& aId) {
    return read("/Zelv/Users/User[@ID='" + aId + "']/LoggedInTv/text()");
  }

  int write(std::string const& aXPath, std::string const& aData) {
    return account->setData(aXPath, aData, transaction);
  }

  int add(std::string const& aXPath, std::string const& aData) {
    return account->addData(aXPath, aData, transaction);
  }

  std::string lastId() {
    std::string id = "from before";
    account->getLastGenId(id);
    return id;
  }

  /// The text of the exception.
  static std::string failureOf(std::function<void()> const& aOperation) {
    try {
      aOperation();
    } catch (std::runtime_error const& error) {
      return error.what();
    }
    return "nothing thrown";
  }

  std::string file() const { return directories.getWritable("Users.xml"); }
  std::string path() const { return directories.writable() + "Users.xml"; }

  TemporaryDirectories directories;
  LogCapture log;
  Tree tree;
  std::unique_ptr<Core::MultiAccount> account;
  GUID const transaction = GUID::createGUID();
};

// Construction.

TEST_F(MultiAccountTest, LoadsTheUsersOfItsFile) {
  make(userOf("a", "tv"));
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a");
  EXPECT_THAT(
      log, Logged(PCRealDebug::Notable, "MultiDevice::MultiDevice: Users File " + path() + " ok."));
}

TEST_F(MultiAccountTest, RestoresAFileThatIsMissing) {
  account = std::make_unique<Core::MultiAccount>(findTree);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "factory");
}

TEST_F(MultiAccountTest, RestoresAFileThatIsCorrupt) {
  directories.putWritable("Users.xml", "<Users><User");
  account = std::make_unique<Core::MultiAccount>(findTree);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "factory");
}

TEST_F(MultiAccountTest, LivesOnWithoutAFile) {
  directories.putReadOnly("Users.xml", "");
  account = std::make_unique<Core::MultiAccount>(findTree);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "MultiDevice::MultiDevice: Users File not found '" + path() + "'."));
  // Said in every case.
  EXPECT_THAT(
      log, Logged(PCRealDebug::Notable, "MultiDevice::MultiDevice: Users File " + path() + " ok."));
  std::string data;
  EXPECT_THROW(account->getData("/Zelv/Users/User/@ID", data, GUID::nullGUID), std::runtime_error);
  EXPECT_EQ(write("/Zelv/Users/User/LoggedInTv/text()", "x"), -1);
  EXPECT_EQ(add("/Zelv/Users/User", "<User/>"), -1);
  EXPECT_EQ(account->clearLoginTV(), -1);
}

TEST_F(MultiAccountTest, NeedsNoTreeUntilItIsInitialised) {
  make(userOf("a", ""));
  EXPECT_EQ(account->getLifetimeState(), 0);
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_EQ(lastId(), "");
}

// Logins.

TEST_F(MultiAccountTest, EmptiesEveryLoginInMemoryAlone) {
  std::string const content = userOf("a", "tv1") + userOf("b", "tv2");
  make(content);
  EXPECT_EQ(loginOf("a"), "");
  EXPECT_EQ(loginOf("b"), "");
  EXPECT_EQ(file(), "<Users>" + content + "</Users>");
  // At this level, though nothing has failed.
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "MultiAccount::clearLoginTV: userIDs=a&#x13;b."));
  EXPECT_EQ(account->clearLoginTV(), 0);
}

TEST_F(MultiAccountTest, WritesTheEmptyLoginsWithTheNextSave) {
  make(userOf("a", "tv1") + "<User ID=\"b\"><LoggedInTv>tv2</LoggedInTv><Name>x</Name></User>");
  EXPECT_EQ(write("/Zelv/Users/User[@ID='b']/Name/text()", "y"), 0);
  EXPECT_THAT(file(), Not(HasSubstr("tv1")));
  EXPECT_THAT(file(), Not(HasSubstr("tv2")));
}

TEST_F(MultiAccountTest, StopsEmptyingAtAUserWithoutTheElement) {
  make(userOf("a", "tv1") + "<User ID=\"b\"><Name/></User>" + userOf("c", "tv3"));
  EXPECT_EQ(loginOf("a"), "");
  EXPECT_EQ(loginOf("c"), "tv3");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "MultiAccount::clearLoginTV: Failed to set loggedinTV to empty for user "
                          "b."));
  EXPECT_EQ(account->clearLoginTV(), -1);
}

TEST_F(MultiAccountTest, EndsEmptyingAtOnceWithoutUsers) {
  make("");
  EXPECT_THAT(
      log, Logged(PCRealDebug::Error, "MultiAccount::clearLoginTV: Failed to retrieve users' ID."));
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Error, "userIDs="));
  EXPECT_EQ(account->clearLoginTV(), -1);
}

TEST_F(MultiAccountTest, EmptiesTheLoginOfAUserWhoseLoginWasEmptyOrHasNoText) {
  make("<User ID=\"a\"><LoggedInTv/></User>" + userOf("b", "tv"));
  EXPECT_EQ(account->clearLoginTV(), 0);
  EXPECT_EQ(loginOf("a"), "");
  EXPECT_EQ(loginOf("b"), "");
}

class StrangeId : public MultiAccountTest, public ::testing::WithParamInterface<char const*> {};

TEST_P(StrangeId, NeitherStopsTheStartNorKeepsOthersLoggedIn) {
  std::string const id = GetParam();
  ASSERT_NO_THROW(make(userOf(id, "tv1") + userOf("b", "tv2")));
  EXPECT_EQ(loginOf("b"), "");
  EXPECT_EQ(read("/Zelv/Users/*[1]/LoggedInTv/text()"), "tv1");
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Error,
                                "MultiAccount::clearLoginTV: Failed to set loggedinTV to empty for "
                                "user "));
  EXPECT_EQ(account->clearLoginTV(), -1);
}

INSTANTIATE_TEST_SUITE_P(MultiAccount, StrangeId,
                         ::testing::Values("[", "a[b", "x' or '1'='1", "']/Name[@ID='", "]", "&lt;",
                                           "a&quot;b"));

// Reading.

TEST_F(MultiAccountTest, ReadsBelowItsBranchAndPathsOfTheDocument) {
  run(userOf("a", ""));
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a");
  EXPECT_EQ(read("Users/User/@ID"), "a");
  EXPECT_EQ(read("/Users/User/@ID"), "a");
}

TEST_F(MultiAccountTest, ThrowsForWhatIsNotThere) {
  run(userOf("a", ""));
  std::string data;
  for (std::string const path : {"/Zelv/Users/User/Name", "/Zelv/Other", "/Zelv/UsersAndMore"}) {
    EXPECT_EQ(failureOf([&] { account->getData(path, data, transaction); }),
              "in MultiAccount::getData: data not found for '" + path + "'.");
  }
}

// Writing.

TEST_F(MultiAccountTest, SavesAWriteAndTellsWithThePathAsGiven) {
  run("<User ID=\"a\"><Name>x</Name></User>");
  EXPECT_EQ(write("/Zelv/Users/User[@ID='a']/Name/text()", "Anna"), 0);
  EXPECT_THAT(file(), HasSubstr("<Name>Anna</Name>"));
  EXPECT_THAT(tree.calls, ElementsAre("notify /Zelv/Users/User[@ID='a']/Name/text() = Anna " +
                                      transaction.toString()));
  EXPECT_THAT(directories.listWritable(), ElementsAre("Users.xml"));
}

TEST_F(MultiAccountTest, RunsNoSyncBehindTheRename) {
  run("<User ID=\"a\"><Name>x</Name></User>");
  FakeFiles::Reset();
  write("/Zelv/Users/User[@ID='a']/Name/text()", "Anna");
  // The one that belongs to the writing of the document.
  EXPECT_THAT(FakeShell::Lines(), ElementsAre("sync"));
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Rename), 1);
}

TEST_F(MultiAccountTest, GivesTheResultOfAWriteThatFindsNothingInSilence) {
  run(userOf("a", ""));
  EXPECT_EQ(write("/Zelv/Users/User[@ID='b']/LoggedInTv/text()", "tv"), -1);
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0) << log.dump();
}

TEST_F(MultiAccountTest, WritesNoAttributeThatIsNotThere) {
  run(userOf("a", ""));
  EXPECT_EQ(write("/Zelv/Users/User/@Colour", "red"), -1);
  EXPECT_EQ(write("/Zelv/Users/User/@ID", "b"), 0);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "b");
}

TEST_F(MultiAccountTest, WritesWithoutATreeToo) {
  make("<User ID=\"a\"><Name>x</Name></User>");
  EXPECT_EQ(write("/Zelv/Users/User/Name/text()", "Anna"), 0);
  EXPECT_EQ(add("/Zelv/Users/User", "<User/>"), 0);
  EXPECT_THAT(file(), HasSubstr("<Name>Anna</Name>"));
  EXPECT_THAT(tree.calls, IsEmpty());
}

// Adding.

TEST_F(MultiAccountTest, AddsAUserWithANewIdInFirstPlace) {
  run(userOf("a", ""));
  EXPECT_EQ(add("/Zelv/Users/User", "<User Colour=\"red\"><Name>Anna</Name></User>"), 0);
  std::string const id = lastId();
  EXPECT_EQ(GUID(id).toString(), id);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a&#x13;" + id);
  EXPECT_EQ(read("/Zelv/Users/User[@ID='" + id + "']"),
            "<User ID='" + id + "' Colour='red'><Name>Anna</Name></User>");
  EXPECT_THAT(file(), HasSubstr("<User ID=\"" + id + "\" Colour=\"red\">"));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Detail, "MultiAccount::addData: newXPath = 'Users/User[ID='" + id +
                                           "']' data='<User ID='" + id +
                                           "' Colour=\"red\"><Name>Anna</Name></User>'"));
}

TEST_F(MultiAccountTest, KeepsAddedUsersOverARestart) {
  run(userOf("a", ""));
  add("/Zelv/Users/User", "<User><LoggedInTv>tv</LoggedInTv></User>");
  std::string const id = lastId();
  account = std::make_unique<Core::MultiAccount>(findTree);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a&#x13;" + id);
  EXPECT_EQ(loginOf(id), "");
  EXPECT_THAT(file(), HasSubstr("<LoggedInTv>tv</LoggedInTv>"));
  EXPECT_EQ(lastId(), "");
}

TEST_F(MultiAccountTest, OffersTheNewIdAndThenTellsWhatWasGiven) {
  run("");
  add("/Zelv/Users/User", "<User/>");
  EXPECT_THAT(tree.calls,
              ElementsAre("status " + transaction.toString() + " " + lastId(),
                          "notify /Zelv/Users/User = <User/> " + transaction.toString()));
}

TEST_F(MultiAccountTest, RemovesNobodyWhenItAdds) {
  run(userOf("a", "") + userOf("b", ""));
  add("/Zelv/Users/User", "<User/>");
  std::string const first = lastId();
  add("/Zelv/Users/User", "<User/>");
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a&#x13;b&#x13;" + first + "&#x13;" + lastId());
}

TEST_F(MultiAccountTest, AddsNothingElseAndSaysNothing) {
  struct Case {
    char const* path;
    char const* data;
  };
  for (Case const one :
       {Case{"/Zelv/Users", "<User/>"}, Case{"/Zelv/Users/Group", "<User/>"},
        Case{"/Users/User", "<User/>"}, Case{"/Zelv/Devices/User", "<User/>"}, Case{"", "<User/>"},
        Case{"/Zelv/Users/User", "<Group/>"}, Case{"/Zelv/Users/User", " <User/>"},
        Case{"/Zelv/Users/User", ""}, Case{"/Zelv/Users/User", "<Use"}}) {
    run(userOf("a", ""));
    std::string const before = file();
    EXPECT_EQ(add(one.path, one.data), 0) << one.path << one.data;
    EXPECT_EQ(read("/Zelv/Users/*/@ID"), "a");
    EXPECT_EQ(file(), before);
    EXPECT_THAT(tree.calls, IsEmpty());
    EXPECT_EQ(lastId(), "");
    EXPECT_EQ(log.count(PCRealDebug::Detail), 0) << log.dump();
  }
}

TEST_F(MultiAccountTest, AddsByAPathOfTheDocumentAndByOneThatGoesDeeper) {
  run(userOf("a", ""));
  EXPECT_EQ(add("Users/User", "<User/>"), 0);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a&#x13;" + lastId());
  EXPECT_EQ(add("/Zelv/Users/User[@ID='a']/User", "<User/>"), 0);
  EXPECT_EQ(read("/Zelv/Users/User[@ID='a']/User/@ID"), lastId());
}

// The parser stops at a second attribute of one name.
TEST_F(MultiAccountTest, KeepsOnlyTheNewIdOfAUserWhoBringsOne) {
  run(userOf("a", ""));
  EXPECT_EQ(add("/Zelv/Users/User", "<User ID='own'><Name>Anna</Name></User>"), 0);
  std::string const id = lastId();
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a&#x13;" + id);
  EXPECT_EQ(read("/Zelv/Users/User[@ID='" + id + "']"), "<User ID='" + id + "'/>");
}

TEST_F(MultiAccountTest, GivesTheResultOfAnAdditionThatFindsNoParentAndKeepsItsId) {
  run(userOf("a", ""));
  EXPECT_EQ(add("/Zelv/Users/User[@ID='b']/User", "<User/>"), -1);
  EXPECT_EQ(lastId().size(), 36U);
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_EQ(log.count(PCRealDebug::Error), 0) << log.dump();
}

// Saving that fails.

class FailedSaveOfAccounts : public MultiAccountTest,
                             public ::testing::WithParamInterface<FakeFiles::Call> {};

TEST_P(FailedSaveOfAccounts, OfAWriteThrowsKeepsTheFileAndTellsNobody) {
  run("<User ID=\"a\"><Name>x</Name></User>");
  std::string const before = file();
  FakeFiles::FailNth(GetParam());
  EXPECT_EQ(failureOf([&] { write("/Zelv/Users/User/Name/text()", "Anna"); }), "Fil save failed!");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "MultiAccount::setData: File save failed, data not comitted."));
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_EQ(file(), before);
  EXPECT_THAT(directories.listWritable(), ElementsAre("Users.xml"));
  // Memory and file now differ.
  EXPECT_EQ(read("/Zelv/Users/User/Name/text()"), "Anna");
  FakeFiles::Reset();
  EXPECT_EQ(write("/Zelv/Users/User/@ID", "b"), 0);
  EXPECT_THAT(file(), HasSubstr("<Name>Anna</Name>"));
}

TEST_P(FailedSaveOfAccounts, OfAnAdditionThrowsKeepsTheFileAndTellsNobody) {
  run(userOf("a", ""));
  std::string const before = file();
  FakeFiles::FailNth(GetParam());
  EXPECT_EQ(failureOf([&] { add("/Zelv/Users/User", "<User/>"); }), "File save failed!");
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "MultiAccount::addData: File save failed, data not comitted."));
  EXPECT_THAT(tree.calls, IsEmpty());
  EXPECT_EQ(file(), before);
  EXPECT_EQ(read("/Zelv/Users/User/@ID"), "a&#x13;" + lastId());
}

INSTANTIATE_TEST_SUITE_P(MultiAccount, FailedSaveOfAccounts,
                         ::testing::Values(FakeFiles::Open, FakeFiles::Write, FakeFiles::Sync,
                                           FakeFiles::Close));

TEST_F(MultiAccountTest, GoesOnWhenTheFileCannotBeReplaced) {
  run("<User ID=\"a\"><Name>x</Name></User>");
  std::string const before = file();
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_EQ(write("/Zelv/Users/User/Name/text()", "Anna"), 0);
  EXPECT_EQ(file(), before);
  EXPECT_THAT(tree.calls, ElementsAre(StartsWith("notify ")));
  EXPECT_THAT(directories.listWritable(), ElementsAre("Users.xml"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "MultiAccount::save: File '" + path() + "' could not be replaced."));
}

// Lifetime.

TEST_F(MultiAccountTest, RegistersAtStartAndUnregistersAtTheEnd) {
  make("");
  command(LIFETIME_INITIALISE);
  EXPECT_EQ(account->getLifetimeState(), 1);
  EXPECT_THAT(tree.calls, IsEmpty());
  command(LIFETIME_START);
  EXPECT_EQ(account->getLifetimeState(), 2);
  EXPECT_THAT(tree.calls, ElementsAre("register /Zelv/Users"));
  EXPECT_EQ(tree.provider, account.get());
  command(LIFETIME_STOP);
  EXPECT_EQ(account->getLifetimeState(), 1);
  EXPECT_THAT(tree.calls, ElementsAre("register /Zelv/Users"));
  command(LIFETIME_TERMINATE);
  EXPECT_EQ(account->getLifetimeState(), 3);
  EXPECT_THAT(tree.calls, ElementsAre("register /Zelv/Users", "unregister /Zelv/Users"));
}

TEST_F(MultiAccountTest, ActsInEveryStateAndChangesItFromTheRightOneAlone) {
  make("");
  command(LIFETIME_STOP);
  command(LIFETIME_START);
  command(LIFETIME_TERMINATE);
  EXPECT_EQ(account->getLifetimeState(), 0);
  // There is no tree yet.
  EXPECT_THAT(tree.calls, IsEmpty());
  command(LIFETIME_INITIALISE);
  command(LIFETIME_INITIALISE);
  EXPECT_EQ(account->getLifetimeState(), 1);
  command(LIFETIME_START);
  command(LIFETIME_START);
  command(LIFETIME_TERMINATE);
  command(LIFETIME_STOP);
  command(LIFETIME_START);
  command(LIFETIME_INITIALISE);
  EXPECT_EQ(account->getLifetimeState(), 3);
  EXPECT_THAT(tree.calls, ElementsAre("register /Zelv/Users", "register /Zelv/Users",
                                      "unregister /Zelv/Users", "register /Zelv/Users"));
}

TEST_F(MultiAccountTest, SaysSoWithoutATree) {
  directories.putWritable("Users.xml", cFactory);
  account = std::make_unique<Core::MultiAccount>([](GUID) -> IBase* { return nullptr; });
  command(LIFETIME_INITIALISE);
  EXPECT_THAT(log, Logged(PCRealDebug::Error,
                          "MultiAccount::initialize: Failed to obtain ICoreData interface."));
  command(LIFETIME_START);
  command(LIFETIME_TERMINATE);
  EXPECT_THAT(tree.calls, IsEmpty());
}

TEST_F(MultiAccountTest, LogsEntryAndExitOfWhatDoesNothing) {
  make("");
  EXPECT_EQ(account->onSubscribe("", GUID::nullGUID), 0);
  EXPECT_EQ(account->onUnsubscribe("", GUID::nullGUID), 0);
  account->onStatus(StatusInformation("text"), GUID::nullGUID);
  for (std::string const operation : {"onSubscribe", "onUnsubscribe", "onStatus"}) {
    EXPECT_THAT(log, Logged(PCRealDebug::Trace, "MultiAccount::" + operation + ": Entry."));
    EXPECT_THAT(log, Logged(PCRealDebug::Trace, "MultiAccount::" + operation + ": Exit."));
  }
}

}  // namespace
}  // namespace Zelv
