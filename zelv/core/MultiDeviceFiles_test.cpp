// What the device branch makes of the files that it finds, and which discovery it chooses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>

#include "zelv/core/testing/MultiDeviceStart.h"

namespace Zelv {
namespace {

using ::testing::HasSubstr;
using Testing::MultiDeviceStart;

// Files.

struct NoFile {
  char const* file;
  char const* text;
};

void PrintTo(NoFile const& aFile, std::ostream* aStream) {
  *aStream << aFile.file;
}

class MultiDeviceNoFile : public MultiDeviceStart, public ::testing::WithParamInterface<NoFile> {};

TEST_P(MultiDeviceNoFile, ThatCanBeHadFromNowhereMakesNoDevice) {
  std::filesystem::remove(set.directories.readOnly() + GetParam().file);
  EXPECT_EQ(failureOf([this] { make(); }), GetParam().text);
}

TEST_P(MultiDeviceNoFile, ThatIsCorruptInBothPlacesMakesNoDevice) {
  set.directories.putReadOnly(GetParam().file, "<Device");
  set.directories.putWritable(GetParam().file, "");
  EXPECT_EQ(failureOf([this] { make(); }), GetParam().text);
}

TEST_P(MultiDeviceNoFile, ThatIsMissingOrCorruptIsRestored) {
  for (char const* content : {"<Device", "", "\x01"}) {
    set.directories.putWritable(GetParam().file, content);
    make();
    EXPECT_EQ(read(cNamePath), "Mine");
  }
}

TEST_P(MultiDeviceNoFile, StopsTheStartOfTheSet) {
  std::filesystem::remove(set.directories.readOnly() + GetParam().file);
  EXPECT_EQ(Testing::SmallSet::start(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Files, MultiDeviceNoFile,
    ::testing::Values(
        NoFile{"Devices.xml",
               "in MultiDevice::MultiDevice: Failed to load Devices file and could not restore!"},
        NoFile{"Configuration.xml",
               "in MultiDevice::MultiDevice: Failed to load Configuration file and could not "
               "restore!"}),
    [](auto const& aInfo) {
      std::string const name = aInfo.param.file;
      return name.substr(0, name.find('.'));
    });

TEST_F(MultiDeviceStart, LooksAtDevicesBeforeConfiguration) {
  std::filesystem::remove(set.directories.readOnly() + "Devices.xml");
  std::filesystem::remove(set.directories.readOnly() + "Configuration.xml");
  EXPECT_THAT(failureOf([this] { make(); }), HasSubstr("Failed to load Devices file"));
}

TEST_F(MultiDeviceStart, NeverWritesTheConfiguration) {
  put("");
  start();
  EXPECT_EQ(set.directories.getWritable("Configuration.xml"), Testing::SmallSet::cConfiguration);
}

// Which discovery.

struct Switches {
  char const* name;
  char const* xml;
  int zelv;
  int upnp;
};

void PrintTo(Switches const& aSwitches, std::ostream* aStream) {
  *aStream << aSwitches.name;
}

class MultiDeviceSwitches : public MultiDeviceStart,
                            public ::testing::WithParamInterface<Switches> {};

TEST_P(MultiDeviceSwitches, ChooseTheDiscovery) {
  configure(GetParam().xml);
  make();
  EXPECT_EQ(set.log.count(PCRealDebug::Notable, "MultiDevice::MultiDevice: Using Zelv Discovery!"),
            GetParam().zelv);
  EXPECT_EQ(set.log.count(PCRealDebug::Notable, "MultiDevice::MultiDevice: Using UPnP Discovery!"),
            GetParam().upnp);
  // Nobody shall think that it runs.
  EXPECT_EQ(set.log.count(PCRealDebug::Warning,
                          "MultiDevice::MultiDevice: This library is built without UPnP "
                          "Discovery, going on."),
            GetParam().upnp);
  own.reset();
  EXPECT_EQ(set.log.count(PCRealDebug::Trace, "DiscoveryService::~DiscoveryService: Entry."),
            GetParam().zelv);
}

INSTANTIATE_TEST_SUITE_P(
    Keys, MultiDeviceSwitches,
    ::testing::Values(
        Switches{"Neither", "<ZelvDiscovery>false</ZelvDiscovery>", 0, 0},
        Switches{"Missing", "", 0, 0}, Switches{"Empty", "<ZelvDiscovery/><UPnPDiscovery/>", 0, 0},
        Switches{"Capitals", "<ZelvDiscovery>True</ZelvDiscovery>", 0, 0},
        Switches{"Number", "<ZelvDiscovery>1</ZelvDiscovery><UPnPDiscovery>1</UPnPDiscovery>", 0,
                 0},
        Switches{"Longer", "<ZelvDiscovery>true!</ZelvDiscovery>", 0, 0},
        Switches{"Zelv", "<ZelvDiscovery>true</ZelvDiscovery>", 1, 0},
        Switches{"UPnP", "<UPnPDiscovery>true</UPnPDiscovery>", 0, 1},
        Switches{"Both", "<UPnPDiscovery>true</UPnPDiscovery><ZelvDiscovery>true</ZelvDiscovery>",
                 1, 1}),
    [](auto const& aInfo) { return std::string(aInfo.param.name); });

TEST_F(MultiDeviceStart, DiscoveryRunsBeforeTheBranchIsRegisteredAndEndsBeforeItGoes) {
  configureDiscovery();
  start();
  EXPECT_EQ(ask("/Zelv/Devices/Mobile/@ID"), "");
  EXPECT_LT(placeOf("MultiDevice::initialize: Entry."),
            placeOf("DiscoveryService::initialize: Entry."));
  EXPECT_LT(placeOf("DiscoveryService::initialize: Exit."),
            placeOf("MultiDevice::initialize: Exit."));
  // The tree asks for the identity when the branch is registered.
  EXPECT_LT(
      placeOf("MultiDevice::initialize: Exit."),
      placeOf("DataController::registerDataProvider: mLocalDeviceId='" + read(cIdPath) + "'"));
  set.log.clear();
  InterfaceFactory::terminate();
  EXPECT_LT(placeOf("MultiDevice::terminate: Entry."),
            placeOf("DiscoveryService::terminate: Entry."));
  EXPECT_LT(placeOf("DiscoveryService::terminate: Exit."),
            placeOf("MultiDevice::terminate: Exit."));
}

// What a peer can remove from the file.

TEST_F(MultiDeviceStart, AnElementThatWasRemovedOrDoubledThroughTheTreeDoesNotStopTheNextStart) {
  start();
  std::string const id = read(cIdPath);
  for (char const* path : {"/Zelv/Devices/MulticastGroup", "/Zelv/Devices/MulticastPort",
                           "/Zelv/Devices/HeartBeatInterval", "/Zelv/Devices/LocalTV/Name",
                           "/Zelv/Devices/LocalTV/Model", "/Zelv/Devices/LocalTV/Location",
                           "/Zelv/Devices/LocalTV/Interfaces"}) {
    std::string const name = std::string(path).substr(std::string(path).rfind('/') + 1);
    std::string const twice = "<" + name + "/><" + name + "/>";
    for (std::string const& value : {std::string(), twice}) {
      write(path, value);
      restart();
      EXPECT_EQ(read(cIdPath), id) << path << " " << value;
      EXPECT_EQ(read("/Zelv/Devices/LocalTV/Location/text()"), "Here") << path << " " << value;
      EXPECT_EQ(read("/Zelv/Devices/MulticastPort/text()"), "4451") << path << " " << value;
    }
  }
}

TEST_F(MultiDeviceStart, ASetThatWasRemovedThroughTheTreeStartsAsANewOne) {
  start();
  EXPECT_EQ(write("/Zelv/Devices/LocalTV", "gone"), 0);
  restart();
  EXPECT_TRUE(GUID(read(cIdPath)) != GUID::nullGUID);
  EXPECT_EQ(read(cNamePath), "Mine");
}

TEST_F(MultiDeviceStart, AnElementThatIsMissingIsRestoredBeforeDiscoveryReadsIt) {
  configureDiscovery();
  start();
  std::string const id = read(cIdPath);
  for (char const* path : {"/Zelv/Devices/MulticastGroup", "/Zelv/Devices/MulticastPort",
                           "/Zelv/Devices/LocalTV/Location", "/Zelv/Devices/HeartBeatInterval"}) {
    write(path, "");
    restart();
    EXPECT_EQ(read(cIdPath), id) << path;
  }
}

}  // namespace
}  // namespace Zelv
