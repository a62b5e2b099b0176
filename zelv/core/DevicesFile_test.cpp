#include "zelv/core/DevicesFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/fake/FakeFiles.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv {
namespace {

using Infrastructure::HierarchicalDB;
using Platform::Fake::FakeFiles;
using Platform::Fake::FakeShell;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Platform::Fake::TemporaryDirectories;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr char const* cIdentity = "a1897a99-3255-4ad5-852f-b2cedce72768";
constexpr char const* cIncomplete =
    "MultiDevice::MultiDevice: Devices file lacks a required element or holds it twice, restoring "
    "it.";

std::string const cFactory =
    "<Devices><MulticastGroup>239.255.44.46</MulticastGroup><MulticastPort>4451</MulticastPort>"
    "<HeartBeatInterval>10</HeartBeatInterval>"
    "<LocalTV ID=\"\"><Name>Television</Name><Model></Model><Location>Here</Location>"
    "<Interfaces><NetworkInterface ID=\"1\"><MACAddress></MACAddress>"
    "<IPv4><Address></Address></IPv4></NetworkInterface></Interfaces></LocalTV></Devices>";

std::string replaced(std::string const& aText, std::string const& aWhat, std::string const& aBy) {
  std::size_t const at = aText.find(aWhat);
  EXPECT_NE(at, std::string::npos) << aWhat;
  return std::string(aText).replace(at, aWhat.size(), aBy);
}

/// The factory file in use: with an identity and a name of its own.
std::string used() {
  return replaced(replaced(cFactory, "ID=\"\"", std::string("ID=\"") + cIdentity + "\""),
                  "Television", "Mine");
}

class DevicesFileTest : public ::testing::Test {
 protected:
  DevicesFileTest() { mDirectories.putReadOnly("Devices.xml", cFactory); }

  /// The document after a repair.
  HierarchicalDB& repair(std::string const& aContent) {
    mDirectories.putWritable("Devices.xml", aContent);
    mDocument.loadFromString(aContent);
    DevicesFile::repairIfIncomplete(mDocument);
    return mDocument;
  }

  static std::string read(HierarchicalDB& aDocument, std::string const& aPath) {
    std::string value;
    aDocument.getContent(aPath, value);
    return value;
  }

  /// From the file.
  std::string saved(std::string const& aPath) const {
    HierarchicalDB document;
    document.loadFromFile(mDirectories.writable() + "Devices.xml");
    return read(document, aPath);
  }

  TemporaryDirectories mDirectories;
  LogCapture mLog;
  HierarchicalDB mDocument;
};

TEST_F(DevicesFileTest, OfAGoodSetIsNotTouched) {
  repair(used());
  EXPECT_EQ(read(mDocument, "/Devices/LocalTV/Name/text()"), "Mine");
  EXPECT_EQ(mDirectories.getWritable("Devices.xml"), used());
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Write), 0);
  EXPECT_EQ(mLog.count(PCRealDebug::Error), 0) << mLog.dump();
}

TEST_F(DevicesFileTest, MayHoldMoreThanIsRequiredAndInAnotherOrder) {
  mDocument.loadFromString(
      "<Devices a='b'><LocalTV ID='x' Since='2026'><Interfaces><NetworkInterface ID='2'><MACAddress"
      "/></NetworkInterface><NetworkInterface ID='1'><IPv4><Address>1</Address><Mask/></IPv4>"
      "<MACAddress/></NetworkInterface></Interfaces><Location/><Model/><Name/><Colour/></LocalTV>"
      "<HeartBeatInterval/><MulticastPort/><MulticastGroup/><RemoteTV ID='y'/></Devices>");
  EXPECT_TRUE(DevicesFile::isComplete(mDocument));
}

TEST_F(DevicesFileTest, IsCompleteWhateverItsValuesAre) {
  for (char const* value : {"", "MulticastGroup", "&#x13;", "&amp;#x13;", "&lt;a/&gt;"}) {
    mDocument.loadFromString(replaced(used(), "239.255.44.46", value));
    EXPECT_TRUE(DevicesFile::isComplete(mDocument)) << value;
  }
}

struct Damage {
  char const* name;
  char const* element;
};

void PrintTo(Damage const& aDamage, std::ostream* aStream) {
  *aStream << aDamage.name;
}

class DevicesFileDamage : public DevicesFileTest, public ::testing::WithParamInterface<Damage> {
 protected:
  void expectRepaired() {
    EXPECT_TRUE(DevicesFile::isComplete(mDocument));
    EXPECT_EQ(read(mDocument, "/Devices/LocalTV/@ID"), saved("/Devices/LocalTV/@ID"));
    EXPECT_EQ(saved("/Devices/MulticastGroup/text()"), "239.255.44.46");
    EXPECT_EQ(saved("/Devices/LocalTV/Name/text()"), "Television");
    EXPECT_THAT(mDirectories.listWritable(), ElementsAre("Devices.xml"));
    EXPECT_EQ(mLog.texts(PCRealDebug::Error), std::vector<std::string>{cIncomplete});
  }
};

TEST_P(DevicesFileDamage, ByARemovedElementBringsTheFactoryFileAndKeepsTheIdentity) {
  repair(replaced(used(), GetParam().element, ""));
  expectRepaired();
  bool const keptIt = GetParam().name != std::string("LocalTV");
  EXPECT_EQ(saved("/Devices/LocalTV/@ID"), keptIt ? cIdentity : "");
}

TEST_P(DevicesFileDamage, ByADoubledElementBringsTheFactoryFileAndKeepsTheIdentity) {
  repair(
      replaced(used(), GetParam().element, std::string(GetParam().element) + GetParam().element));
  expectRepaired();
  // Of two sets in one file nobody knows which one it was.
  bool const keptIt = GetParam().name != std::string("LocalTV");
  EXPECT_EQ(saved("/Devices/LocalTV/@ID"), keptIt ? cIdentity : "");
}

constexpr char const* cLocal =
    "<LocalTV ID=\"a1897a99-3255-4ad5-852f-b2cedce72768\"><Name>Mine</Name><Model></Model>"
    "<Location>Here</Location>"
    "<Interfaces><NetworkInterface ID=\"1\"><MACAddress></MACAddress>"
    "<IPv4><Address></Address></IPv4></NetworkInterface></Interfaces></LocalTV>";

INSTANTIATE_TEST_SUITE_P(
    Elements, DevicesFileDamage,
    ::testing::Values(Damage{"MulticastGroup", "<MulticastGroup>239.255.44.46</MulticastGroup>"},
                      Damage{"MulticastPort", "<MulticastPort>4451</MulticastPort>"},
                      Damage{"HeartBeatInterval", "<HeartBeatInterval>10</HeartBeatInterval>"},
                      Damage{"LocalTV", cLocal}, Damage{"Name", "<Name>Mine</Name>"},
                      Damage{"Model", "<Model></Model>"},
                      Damage{"Location", "<Location>Here</Location>"},
                      Damage{"MACAddress", "<MACAddress></MACAddress>"},
                      Damage{"Address", "<Address></Address>"}),
    [](auto const& aInfo) { return std::string(aInfo.param.name); });

TEST_F(DevicesFileTest, WithoutTheAttributeOfTheIdentityGetsOneToWriteTo) {
  repair(replaced(used(), std::string(" ID=\"") + cIdentity + "\"", ""));
  EXPECT_EQ(mDocument.setContent("/Devices/LocalTV/@ID", "x", false), 0);
  EXPECT_THAT(mDirectories.getWritable("Devices.xml"), HasSubstr("<LocalTV ID=\"\">"));
}

TEST_F(DevicesFileTest, WithoutTheNumberOfTheInterfaceIsRepaired) {
  repair(replaced(used(), "NetworkInterface ID=\"1\"", "NetworkInterface ID=\"2\""));
  EXPECT_TRUE(DevicesFile::isComplete(mDocument));
  EXPECT_EQ(saved("/Devices/LocalTV/@ID"), cIdentity);
}

TEST_F(DevicesFileTest, OfAnotherRootIsRepaired) {
  for (char const* content : {"<Device/>", "<Devices/>", "<a><Devices/></a>"}) {
    repair(content);
    EXPECT_TRUE(DevicesFile::isComplete(mDocument)) << content;
    EXPECT_EQ(saved("/Devices/LocalTV/Name/text()"), "Television") << content;
  }
}

TEST_F(DevicesFileTest, TakesNoIdentityOverThatIsNone) {
  repair(replaced(replaced(used(), cIdentity, "x' or '1'='1"), "<Location>Here</Location>", ""));
  EXPECT_EQ(saved("/Devices/LocalTV/@ID"), "");
}

TEST_F(DevicesFileTest, StaysAsItIsWhereTheFactoryFileIsNoBetter) {
  std::string const damaged = replaced(used(), "<Location>Here</Location>", "");
  for (std::string const& factory :
       {replaced(cFactory, "<Location>Here</Location>", ""), std::string("<Devices/>"),
        std::string("no document"), std::string()}) {
    mLog.clear();
    mDirectories.putReadOnly("Devices.xml", factory);
    repair(damaged);
    EXPECT_EQ(mDirectories.getWritable("Devices.xml"), damaged) << factory;
    EXPECT_EQ(read(mDocument, "/Devices/LocalTV/Name/text()"), "Mine") << factory;
    EXPECT_THAT(mLog.texts(PCRealDebug::Error), ::testing::Contains(cIncomplete));
    EXPECT_THAT(mLog, Logged(PCRealDebug::Error,
                             "MultiDevice::MultiDevice: So does the factory file, going on as it "
                             "is."));
  }
}

TEST_F(DevicesFileTest, ThatCannotBeRestoredOnTheStorageIsRestoredInMemory) {
  std::string const damaged = replaced(used(), "<Location>Here</Location>", "");
  FakeFiles::FailFrom(FakeFiles::Write);
  repair(damaged);
  EXPECT_TRUE(DevicesFile::isComplete(mDocument));
  EXPECT_EQ(read(mDocument, "/Devices/LocalTV/@ID"), cIdentity);
  EXPECT_EQ(mDirectories.getWritable("Devices.xml"), damaged);
  EXPECT_THAT(mLog, Logged(PCRealDebug::Error,
                           "MultiDevice::MultiDevice: The restored Devices file is not saved, "
                           "going on."));
}

TEST_F(DevicesFileTest, NeverStandsThereWithoutTheIdentityDuringARepair) {
  std::string const damaged = replaced(used(), "<Location>Here</Location>", "");
  for (auto const call :
       {FakeFiles::Open, FakeFiles::Write, FakeFiles::Sync, FakeFiles::Close, FakeFiles::Rename}) {
    for (int nth = 1; nth <= 4; ++nth) {
      FakeFiles::FailFrom(call, nth);
      repair(damaged);
      FakeFiles::Reset();
      EXPECT_EQ(saved("/Devices/LocalTV/@ID"), cIdentity) << call << " " << nth;
    }
  }
}

// Identities.

TEST(DevicesFileIdentity, IsWhatReadsAsAGuidAndPeersTake) {
  for (std::string const& good :
       {std::string(cIdentity), std::string("A1897A99-3255-4AD5-852F-B2CEDCE72768"),
        std::string("{a1897a99-3255-4ad5-852f-b2cedce72768}")}) {
    EXPECT_TRUE(DevicesFile::isIdentity(good)) << good;
  }
}

TEST(DevicesFileIdentity, IsNothingElse) {
  std::string const guid = cIdentity;
  for (std::string const& bad :
       {std::string(), std::string(" "), std::string("x"), std::string("the living room"),
        std::string("00000000-0000-0000-0000-000000000000"), std::string(22, 'A'),
        std::string(1 << 20, 'a'), guid + "' or '1'='1", guid + "]", guid + "<", guid + "&#x13;",
        guid + "\n", guid + std::string(1, '\0'), guid + std::string(100, '0')}) {
    EXPECT_FALSE(DevicesFile::isIdentity(bad)) << bad.substr(0, 80);
  }
}

// Saving.

class DevicesFileSave : public DevicesFileTest {
 protected:
  DevicesFileSave() {
    mDirectories.putWritable("Devices.xml", cFactory);
    mDocument.loadFromString(used());
  }
};

TEST_F(DevicesFileSave, PutsTheDocumentInThePlaceOfTheFileAndRunsSync) {
  EXPECT_TRUE(DevicesFile::save(mDocument));
  EXPECT_EQ(saved("/Devices/LocalTV/Name/text()"), "Mine");
  EXPECT_THAT(mDirectories.listWritable(), ElementsAre("Devices.xml"));
  EXPECT_THAT(FakeShell::Lines(), ElementsAre("sync", "sync"))
      << "before the replacement and after";
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Rename), 1);
}

TEST_F(DevicesFileSave, ThatCannotWriteLeavesTheOldFileAndNothingBesideIt) {
  for (auto const call : {FakeFiles::Open, FakeFiles::Write, FakeFiles::Sync, FakeFiles::Close}) {
    FakeFiles::FailNth(call);
    EXPECT_FALSE(DevicesFile::save(mDocument)) << call;
    FakeFiles::Reset();
    EXPECT_EQ(mDirectories.getWritable("Devices.xml"), cFactory) << call;
    EXPECT_THAT(mDirectories.listWritable(), ElementsAre("Devices.xml")) << call;
  }
}

TEST_F(DevicesFileSave, ThatCannotReplaceGoesOnWithTheOldFileAndIsLogged) {
  FakeFiles::FailNth(FakeFiles::Rename);
  EXPECT_TRUE(DevicesFile::save(mDocument));
  EXPECT_EQ(mDirectories.getWritable("Devices.xml"), cFactory);
  EXPECT_THAT(mDirectories.listWritable(), ElementsAre("Devices.xml"));
  EXPECT_THAT(FakeShell::Lines(), ElementsAre("sync", "sync"));
  EXPECT_THAT(mLog,
              Logged(PCRealDebug::Error, "MultiDevice::setData: File '" + mDirectories.writable() +
                                             "Devices.xml' could not be replaced."));
}

TEST_F(DevicesFileSave, OnADiskThatFillsUpAnywhereLeavesTheOldFileOrTheNew) {
  std::string before = cFactory;
  for (std::size_t room = 0; room < used().size() + 200; room += 7) {
    FakeFiles::DiskFullAfter(room);
    bool const done = DevicesFile::save(mDocument);
    FakeFiles::Reset();
    std::string const after = mDirectories.getWritable("Devices.xml");
    if (done) {
      EXPECT_EQ(saved("/Devices/LocalTV/@ID"), cIdentity) << room;
    } else {
      EXPECT_EQ(after, before) << room;
    }
    before = after;
  }
  EXPECT_NE(before, cFactory) << "in the end it fits";
}

}  // namespace
}  // namespace Zelv
