#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "zelv/core/Core.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Directories;
using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;
using Platform::Fake::Logged;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::Listener;
using ::testing::Not;
using Testing::SmallSet;
using Testing::Told;

constexpr char const* cNoConfiguration =
    "in EnvironmentController::initialize: Failed to load Configuration file and could not "
    "restore!";

/// What a set finds when it starts.
class CoreStart : public ::testing::Test {
 protected:
  std::string const& writable() const { return mSet.directories.writable(); }
  std::string seedLine() const { return "cp " + mSet.directories.readOnly() + "* " + writable(); }

  void putAll() const {
    mSet.directories.putWritable("Assets.xml", SmallSet::cAssets);
    mSet.directories.putWritable("Configuration.xml", SmallSet::cConfiguration);
    mSet.directories.putWritable("Applications.xml", SmallSet::cApplications);
    mSet.directories.putWritable("Devices.xml", Testing::cSmallDevices);
  }

  /// Nothing can be made, changed or removed in the writable directory any more.
  static void makeReadOnly() {
    for (char const* command : {"mkdir", "cp ", "chmod"}) {
      FakeShell::FailLinesWith(command);
    }
    FakeFiles::FailFrom(FakeFiles::Write);
    FakeFiles::FailFrom(FakeFiles::Rename);
    FakeFiles::FailFrom(FakeFiles::Remove);
  }

  /// Nothing more fits into the writable directory.
  static void fillDisk() {
    FakeShell::FailLinesWith("cp ");
    FakeFiles::DiskFullAfter(0);
  }

  static Told read(std::string const& aXPath) {
    Listener listener;
    GUID const id = Core::requestCore()->requestData(aXPath, nullptr, &listener);
    return listener.waitFor(id) ? listener.of(id)[0] : Told{Told::Status, "", "", nullptr, id};
  }

  /// Writes. @return how often the writer heard of a failure; a read behind it shows that the
  /// worker is past it.
  static std::size_t failuresOfWrite(std::string const& aXPath, std::string const& aValue) {
    Listener listener;
    GUID const id = Core::requestCore()->setData(aXPath, aValue, &listener, true);
    GUID const after = Core::requestCore()->requestData(aXPath, nullptr, &listener);
    EXPECT_TRUE(listener.waitFor(after));
    return listener.of(id).size();
  }

  SmallSet mSet;
};

TEST_F(CoreStart, AbsentDirectoryIsMadeAndFilledForEverybodyToWrite) {
  mSet.directories.removeWritableDirectory();
  mSet.directories.putReadOnly("Users.xml", "<Users/>");
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_THAT(mSet.directories.listWritable(),
              ElementsAre("Applications.xml", "Assets.xml", "Configuration.xml", "Devices.xml",
                          "Users.xml"));
  namespace fs = std::filesystem;
  EXPECT_EQ(fs::status(writable()).permissions(), fs::perms::all);
  // The devices file has been saved anew since, with the addresses of the set.
  for (char const* file : {"Applications.xml", "Configuration.xml", "Users.xml"}) {
    EXPECT_EQ(fs::status(writable() + file).permissions(), fs::perms::all) << file;
  }
  EXPECT_THAT(mSet.log,
              Logged(PCRealDebug::Detail,
                     "Core::copyDataDirectoryFiles: Copying Data Folder from RO to RW area..."));
}

TEST_F(CoreStart, SeedingRunsItsLinesInOrderEachFollowedBySync) {
  mSet.directories.removeWritableDirectory();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  std::vector<std::string> lines = FakeShell::Lines();
  ASSERT_GE(lines.size(), 6U);
  // What follows are the syncs of the device's own data.
  lines.resize(6);
  EXPECT_THAT(lines, ElementsAre("mkdir -m 777 -p " + writable(), "sync", seedLine(), "sync",
                                 "cd " + writable() + "; chmod 777 *", "sync"));
}

TEST_F(CoreStart, WithDevicesPresentNothingIsCopiedEvenIfOtherFilesAreMissing) {
  std::string const mine = std::string(Testing::cSmallDevices).replace(1, 7, "Devices Mine='1'");
  mSet.directories.putWritable("Devices.xml", mine);
  mSet.directories.putReadOnly("Mime.xml", "<mimetypes/>");
  Core* const core = SmallSet::start();
  ASSERT_NE(core, nullptr) << mSet.log.dump();
  EXPECT_THAT(FakeShell::Lines(), Not(Contains(seedLine())));
  // Those that components load were restored one by one.
  EXPECT_THAT(mSet.directories.listWritable(),
              ElementsAre("Applications.xml", "Assets.xml", "Configuration.xml", "Devices.xml",
                          "Users.xml"));
  EXPECT_THAT(mSet.directories.getWritable("Devices.xml"), HasSubstr("Mine=\"1\""));
  EXPECT_THAT(mSet.log,
              Logged(PCRealDebug::Detail,
                     "Core::copyDataDirectoryFiles: Data Folder and files are present in the RW "
                     "Area..."));
  EXPECT_EQ(core->copyDataDirectoryFiles(), 1);
}

TEST_F(CoreStart, WithoutDevicesAllFilesAreOverwritten) {
  mSet.directories.putWritable("Configuration.xml", "<Configuration>mine</Configuration>");
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(mSet.directories.getWritable("Configuration.xml"), SmallSet::cConfiguration);
}

TEST_F(CoreStart, SeedingSucceedsWhateverItsLinesDo) {
  putAll();
  Core* const core = SmallSet::start();
  ASSERT_NE(core, nullptr) << mSet.log.dump();
  for (char const* part : {"sync", "chmod", "cp ", "mkdir"}) {
    mSet.directories.removeWritable("Devices.xml");
    FakeShell::Reset();
    FakeShell::FailLinesWith(part);
    EXPECT_EQ(core->copyDataDirectoryFiles(), 1) << part;
    EXPECT_EQ(FakeShell::Lines().size(), 6U) << part;
  }
}

TEST_F(CoreStart, DirectoryThatCannotBeMadeIsNotEntered) {
  mSet.directories.removeWritableDirectory();
  FakeShell::FailLinesWith("mkdir");
  EXPECT_EQ(SmallSet::start(), nullptr);
  EXPECT_EQ(FakeShell::Count("cd " + writable() + "; chmod 777 *"), 0);
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error,
                               "Core::copyDataDirectoryFiles: no directory '" + writable() + "'."));
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error, HasSubstr(cNoConfiguration)));
}

TEST_F(CoreStart, DirectoryWhoseNameIsNotPlainReachesNoShell) {
  std::string const odd = mSet.directories.root() + "a; b/";
  std::filesystem::create_directory(odd);
  Directories::Set(mSet.directories.readOnly(), odd);
  EXPECT_EQ(SmallSet::start(), nullptr);
  EXPECT_THAT(FakeShell::Lines(), IsEmpty());
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error, "Core::copyDataDirectoryFiles: '" +
                                                       mSet.directories.readOnly() + "' or '" +
                                                       odd + "' is no plain name."));
}

TEST_F(CoreStart, DirectoryWhoseNameIsNotPlainServesTheFilesThatItHas) {
  putAll();
  std::string const odd = mSet.directories.root() + "a; b/";
  std::filesystem::rename(writable(), odd);
  Directories::Set(mSet.directories.readOnly(), odd);
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(read(SmallSet::cNamePath).value, "none");
}

TEST_F(CoreStart, MissingAssetsWithoutFactoryCopyStopTheStart) {
  std::filesystem::remove(mSet.directories.readOnly() + "Assets.xml");
  EXPECT_EQ(SmallSet::start(), nullptr);
  EXPECT_THAT(mSet.log,
              Logged(PCRealDebug::Error,
                     HasSubstr("in AssetProvider::m_initialize: Failed to load Assets file and "
                               "could not restore!")));
}

TEST_F(CoreStart, MissingConfigurationWithoutFactoryCopyStopsTheStart) {
  std::filesystem::remove(mSet.directories.readOnly() + "Configuration.xml");
  EXPECT_FALSE(InterfaceFactory::initialize());
  EXPECT_EQ(Core::requestCore(), nullptr);
  auto const errors = mSet.log.texts(PCRealDebug::Error);
  EXPECT_THAT(errors,
              Contains("ZelvFileUtil::restoreFile: File doesn't exist in static folder!!!."));
  EXPECT_THAT(errors, Contains("ZelvFileUtil::checkIsFileAvailable: error!! file "
                               "Configuration.xml not found in r/o area!!!"));
  EXPECT_THAT(errors,
              Contains("InterfaceFactory::initialize() An error ocurred in initialization:"));
  EXPECT_THAT(errors, Contains(HasSubstr(cNoConfiguration)));
}

TEST_F(CoreStart, MissingApplicationsWithoutFactoryCopyStopsTheStart) {
  std::filesystem::remove(mSet.directories.readOnly() + "Applications.xml");
  EXPECT_FALSE(InterfaceFactory::initialize());
  EXPECT_EQ(Core::requestCore(), nullptr);
  EXPECT_THAT(mSet.log,
              Logged(PCRealDebug::Error,
                     HasSubstr("in EnvironmentController::initialize: Failed to load Applications "
                               "file and could not restore!")));
}

TEST_F(CoreStart, FilesAreKeptOverARestart) {
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(failuresOfWrite(SmallSet::cNamePath, "game"), 0U);
  InterfaceFactory::terminate();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(read(SmallSet::cNamePath).value, "game");
}

struct BadContent {
  char const* name;
  std::string content;
};

void PrintTo(BadContent const& aContent, std::ostream* aStream) {
  *aStream << aContent.name;
}

std::vector<BadContent> badContents() {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) {
    everyByte += static_cast<char>(byte);
  }
  std::string deep;
  std::string deepEnd;
  for (int level = 0; level < 100000; ++level) {
    deep += "<a>";
    deepEnd += "</a>";
  }
  std::string manyAttributes = "<Configuration";
  for (int attribute = 0; attribute < 1000; ++attribute) {
    manyAttributes += " a" + std::to_string(attribute) + "=''";
  }
  return {{"Empty", ""},
          {"Blank", " \n"},
          {"Truncated", "<Configuration><ZelvDiscovery>tr"},
          {"TruncatedInATag", "<Configuration><ZelvDisc"},
          {"CutOffBeforeItsLastTag", "<Configuration><ZelvDiscovery>true</ZelvDiscovery>"},
          {"WithoutElement", "<?xml version=\"1.0\"?>"},
          {"Binary", everyByte},
          {"Zeros", std::string(4096, '\0')},
          {"Ones", std::string(4096, '\xff')},
          {"Deep", deep + deepEnd},
          {"ManyAttributes", manyAttributes + "/>"},
          {"Large", "<Configuration>" + std::string(5 << 20, 'x') + "</Configuration>"}};
}

class CoreStartOnBadContent : public CoreStart, public ::testing::WithParamInterface<BadContent> {};

TEST_P(CoreStartOnBadContent, FileIsReplacedByItsFactoryCopy) {
  putAll();
  mSet.directories.putWritable("Configuration.xml", GetParam().content);
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(mSet.directories.getWritable("Configuration.xml"), SmallSet::cConfiguration);
  EXPECT_EQ(read(SmallSet::cDiscoveryPath).value, "false");
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Notable,
                               "ZelvFileUtil::checkIsFileAvailable: File successfully restored!"));
}

TEST_P(CoreStartOnBadContent, FileThatCannotBeReplacedStopsTheStartAndStays) {
  putAll();
  mSet.directories.putWritable("Configuration.xml", GetParam().content);
  makeReadOnly();
  EXPECT_EQ(SmallSet::start(), nullptr);
  EXPECT_EQ(mSet.directories.getWritable("Configuration.xml"), GetParam().content);
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error,
                               "ZelvFileUtil::checkIsFileAvailable: error!! file "
                               "Configuration.xml is corrupted!!! (xml check)"));
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error, HasSubstr(cNoConfiguration)));
}

INSTANTIATE_TEST_SUITE_P(Files, CoreStartOnBadContent, ::testing::ValuesIn(badContents()),
                         [](auto const& aInfo) { return std::string(aInfo.param.name); });

struct BadDirectory {
  char const* name;
  void (*bring)();
};

void PrintTo(BadDirectory const& aDirectory, std::ostream* aStream) {
  *aStream << aDirectory.name;
}

class CoreStartInBadDirectory : public CoreStart,
                                public ::testing::WithParamInterface<BadDirectory> {
 public:
  using CoreStart::fillDisk;
  using CoreStart::makeReadOnly;
};

TEST_P(CoreStartInBadDirectory, EmptyOneStopsTheStart) {
  GetParam().bring();
  EXPECT_FALSE(InterfaceFactory::initialize());
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error, HasSubstr(cNoConfiguration)));
  EXPECT_EQ(Core::requestCore(), nullptr);
}

TEST_P(CoreStartInBadDirectory, FilesThatAreThereAreServed) {
  putAll();
  GetParam().bring();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(read(SmallSet::cDiscoveryPath).value, "false");
}

TEST_P(CoreStartInBadDirectory, FailedSaveKeepsTheOldFileAndIsReportedOnce) {
  putAll();
  GetParam().bring();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(failuresOfWrite(SmallSet::cNamePath, "game"), 1U);
  EXPECT_EQ(mSet.directories.getWritable("Applications.xml"), SmallSet::cApplications);
  EXPECT_THAT(mSet.log, Logged(PCRealDebug::Error,
                               "GenericDataProvider::setData: File save "
                               "failed, data not comitted."));
  // The change stands in memory, and is on the disk with the next one that succeeds.
  EXPECT_EQ(read(SmallSet::cNamePath).value, "game");
  FakeFiles::Reset();
  EXPECT_EQ(failuresOfWrite("/Zelv/Applications/ActiveApplication/Type/text()", "new"), 0U);
  EXPECT_THAT(mSet.directories.getWritable("Applications.xml"), HasSubstr("game"));
}

TEST_P(CoreStartInBadDirectory, RestartAfterAFailedSaveServesTheOldContent) {
  putAll();
  GetParam().bring();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(failuresOfWrite(SmallSet::cNamePath, "game"), 1U);
  InterfaceFactory::terminate();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  EXPECT_EQ(read(SmallSet::cNamePath).value, "none");
}

INSTANTIATE_TEST_SUITE_P(
    Directories, CoreStartInBadDirectory,
    ::testing::Values(BadDirectory{"ReadOnly", &CoreStartInBadDirectory::makeReadOnly},
                      BadDirectory{"Full", &CoreStartInBadDirectory::fillDisk}),
    [](auto const& aInfo) { return std::string(aInfo.param.name); });

TEST_F(CoreStart, SaveThatEndsAnywhereLeavesTheOldContentOrTheNew) {
  putAll();
  ASSERT_NE(SmallSet::start(), nullptr) << mSet.log.dump();
  std::size_t const size = std::string(SmallSet::cApplications).size() + 40;
  std::string before = SmallSet::cApplications;
  for (std::size_t room = 0; room < size; ++room) {
    FakeFiles::DiskFullAfter(room);
    std::string const value = "game " + std::to_string(room);
    std::size_t const failures = failuresOfWrite(SmallSet::cNamePath, value);
    FakeFiles::Reset();
    std::string const after = mSet.directories.getWritable("Applications.xml");
    if (failures != 0) {
      EXPECT_EQ(after, before) << room;
    } else {
      EXPECT_THAT(after, HasSubstr(value)) << room;
    }
    before = after;
  }
}

}  // namespace
}  // namespace Zelv
