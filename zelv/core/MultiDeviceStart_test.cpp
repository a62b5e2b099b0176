// How the device branch comes up: identity, model, addresses, and storage that fails.

#include "zelv/core/testing/MultiDeviceStart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "zelv/platform/fake/FakeShell.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeFiles;
using Platform::Fake::FakeInterfaces;
using Platform::Fake::FakeShell;
using Platform::Fake::Logged;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MultiDeviceStart;

constexpr char const* cNotSaved = "' is not saved: Fil save failed! Going on.";

// Identity.

TEST_F(MultiDeviceStart, FirstStartGivesAnIdentityThatLasts) {
  start();
  std::string const id = read(cIdPath);
  EXPECT_EQ(GUID(id).toString(), id);
  EXPECT_EQ(saved(cIdPath), id);
  EXPECT_EQ(ask(cIdPath), id);
  EXPECT_THAT(set.log,
              Logged(PCRealDebug::Notable, "MultiDevice::initialize: Setting device id to " + id));
  for (int i = 0; i < 3; ++i) {
    set.log.clear();
    restart();
    EXPECT_EQ(read(cIdPath), id);
    EXPECT_FALSE(set.log.hasContaining(PCRealDebug::Notable, "Setting device id"));
  }
}

TEST_F(MultiDeviceStart, TwoSetsGetTwoIdentities) {
  start();
  std::string const id = read(cIdPath);
  InterfaceFactory::terminate();
  set.directories.removeWritableDirectory();
  start();
  EXPECT_NE(read(cIdPath), id);
}

TEST_F(MultiDeviceStart, AGoodIdentityStaysAsItIsWritten) {
  for (char const* id : {cIdentity, "{A1897A99-3255-4AD5-852F-B2CEDCE72768}"}) {
    put(id);
    start();
    EXPECT_EQ(read(cIdPath), id);
    InterfaceFactory::terminate();
    EXPECT_EQ(saved(cIdPath), id);
  }
}

TEST_F(MultiDeviceStart, AnIdentityThatIsNoneIsReplacedForGood) {
  for (char const* id :
       {"", "x", "the living room", "00000000-0000-0000-0000-000000000000",
        "AAAAAAAAAAAAAAAAAAAAAA", "a1897a99-3255-4ad5-852f-b2cedce72768' or '1'='1"}) {
    put(id);
    start();
    std::string const given = read(cIdPath);
    EXPECT_EQ(GUID(given).toString(), given) << id;
    restart();
    EXPECT_EQ(read(cIdPath), given) << id;
    InterfaceFactory::terminate();
  }
}

// Model.

TEST_F(MultiDeviceStart, TheModelIsTheProductCodeAtEachStart) {
  for (char const* code : {"UE40", "UE55"}) {
    g_AppTV.SetProductCode(code);
    start();
    EXPECT_EQ(read(cModelPath), code);
    EXPECT_EQ(saved(cModelPath), code);
    EXPECT_EQ(saved("/Zelv/Devices/Model/text()"), "");
    EXPECT_THAT(set.log, Logged(PCRealDebug::Detail,
                                std::string("MultiDevice::getModelName: Model=") + code + "."));
    InterfaceFactory::terminate();
  }
}

TEST_F(MultiDeviceStart, AProductCodeMayFillItsBuffer) {
  std::string const code(127, 'a');
  g_AppTV.SetProductCode(code.c_str());
  start();
  EXPECT_EQ(read(cModelPath), code);
  std::string model = "what was there";
  device->getModelName(model);
  EXPECT_EQ(model, code);
}

TEST_F(MultiDeviceStart, WithoutAProductCodeTheModelIsEmptyAlsoInTheOtherElement) {
  put(cIdentity);
  g_AppTV.SetProductCode("UE40");
  start();
  g_AppTV.SetProductCode("");
  write("/Zelv/Devices/Model/text()", "old");
  set.log.clear();
  restart();
  EXPECT_EQ(saved(cModelPath), "");
  EXPECT_EQ(saved("/Zelv/Devices/Model/text()"), "");
  EXPECT_EQ(
      set.log.count(PCRealDebug::Warning, "MultiDevice::getModelName: Failed to get model name."),
      2);
  std::string model = "what was there";
  device->getModelName(model);
  EXPECT_EQ(model, "");
}

TEST_F(MultiDeviceStart, WithoutTheOtherElementOfTheModelTheWriteIsRefusedAndTheStartGoesOn) {
  std::string file = devices(cIdentity);
  file.erase(file.find("<Model></Model>"), 15);
  put(cIdentity);
  set.directories.putWritable("Devices.xml", file);
  start();
  EXPECT_EQ(
      linesOf(PCRealDebug::Warning, "MultiDevice::setData"),
      std::vector<std::string>{"MultiDevice::setData: Failed to set data in HierarchicalDB."});
  EXPECT_EQ(read(cNamePath), "Mine");
}

// Addresses.

TEST_F(MultiDeviceStart, AddressesAreReadAtEachStart) {
  for (char const* address : {"192.0.2.7", "192.0.2.8"}) {
    FakeInterfaces::Set({{"eth0", {2, 0, 0, 0, 0xab, 7}, {address}}});
    start();
    EXPECT_EQ(saved(std::string(cInterface) + "/MACAddress/text()"), "02:00:00:00:AB:07");
    EXPECT_EQ(saved(std::string(cInterface) + "/IPv4/Address/text()"), address);
    InterfaceFactory::terminate();
  }
}

TEST_F(MultiDeviceStart, OfSeveralInterfacesAndAddressesTheLastWinsAndTheLoopIsSkipped) {
  FakeInterfaces::Set({{"lo", {}, {"127.0.0.1"}},
                       {"eth0", {2, 0, 0, 0, 0, 1}, {"192.0.2.1", "192.0.2.2"}},
                       {"wlan0", {2, 0, 0, 0, 0, 2}, {"198.51.100.1", "198.51.100.2"}},
                       {"lo", {}, {"127.0.0.1"}}});
  start();
  std::string const begin = "MultiDevice::updateNetworkInterfaces: Network interface ";
  EXPECT_THAT(linesOf(PCRealDebug::Notable, "MultiDevice::updateNetworkInterfaces"),
              ElementsAre(begin + "'eth0' MAC address 02:00:00:00:00:01.",
                          begin + "'eth0' IPv4 address 192.0.2.1.",
                          begin + "'eth0' IPv4 address 192.0.2.2.",
                          begin + "'wlan0' MAC address 02:00:00:00:00:02.",
                          begin + "'wlan0' IPv4 address 198.51.100.1.",
                          begin + "'wlan0' IPv4 address 198.51.100.2."));
  EXPECT_EQ(read(std::string(cInterface) + "/MACAddress/text()"), "02:00:00:00:00:02");
  EXPECT_EQ(read(std::string(cInterface) + "/IPv4/Address/text()"), "198.51.100.2");
}

TEST_F(MultiDeviceStart, WithoutACableTheOldAddressStays) {
  FakeInterfaces::Set({{"eth0", {2, 0, 0, 0, 0, 1}, {"192.0.2.7"}}});
  start();
  FakeInterfaces::Set({{"lo", {}, {"127.0.0.1"}}, {"eth0", {2, 0, 0, 0, 0, 1}, {}}});
  restart();
  EXPECT_EQ(read(std::string(cInterface) + "/IPv4/Address/text()"), "192.0.2.7");
}

// The order of it all.

TEST_F(MultiDeviceStart, AStartRefreshesAddressesThenModelThenIdentityAtOneReplacementEach) {
  put("");
  set.directories.putWritable("Assets.xml", "<Assets/>");
  set.directories.putWritable("Users.xml", "<Users/>");
  g_AppTV.SetProductCode("UE40");
  FakeFiles::Reset();
  start();
  EXPECT_EQ(FakeFiles::Count(FakeFiles::Rename), 4);
  EXPECT_EQ(FakeShell::Lines(), std::vector<std::string>(8, "sync"));
  std::string const begin = "MultiDevice::updateNetworkInterfaces: Network interface 'eth0' ";
  EXPECT_LT(placeOf(begin + "MAC address 02:00:5E:00:53:01."),
            placeOf(begin + "IPv4 address 192.0.2.1."));
  EXPECT_LT(placeOf(begin + "IPv4 address 192.0.2.1."),
            placeOf("MultiDevice::getModelName: Model=UE40."));
  EXPECT_LT(placeOf("MultiDevice::getModelName: Model=UE40."),
            placeOf("MultiDevice::initialize: Setting device id to " + read(cIdPath)));
}

TEST_F(MultiDeviceStart, WithoutATreeNothingIsReadWrittenOrStarted) {
  configure("<ZelvDiscovery>true</ZelvDiscovery>");
  make();
  std::string const before = file();
  std::filesystem::remove(set.directories.readOnly() + "Applications.xml");
  device->initialize();
  EXPECT_THAT(set.log, Logged(PCRealDebug::Error,
                              "MultiDevice::initialize: Failed to obtain ICoreData interface."));
  EXPECT_EQ(set.log.count(PCRealDebug::Trace, "DiscoveryService::initialize: Entry."), 0);
  EXPECT_THAT(linesOf(PCRealDebug::Notable, "MultiDevice::updateNetworkInterfaces"), IsEmpty());
  EXPECT_EQ(file(), before);
  device->onLifetime(LIFETIME_START, GUID::nullGUID);
  EXPECT_EQ(set.log.count(PCRealDebug::Trace, "DataController::registerDataProvider: Entry."), 0)
      << "there is nothing to register with";
}

// A start that cannot save.

TEST_F(MultiDeviceStart, OnAReadOnlyStorageGoesOnWithMemory) {
  put("");
  makeReadOnly();
  g_AppTV.SetProductCode("UE40");
  start();
  EXPECT_EQ(read(std::string(cInterface) + "/IPv4/Address/text()"), "192.0.2.1");
  EXPECT_EQ(read(cModelPath), "UE40");
  EXPECT_TRUE(GUID(ask(cIdPath)) != GUID::nullGUID);
  EXPECT_EQ(file(), devices(""));
  std::string const begin = "MultiDevice::initialize: '";
  EXPECT_THAT(linesOf(PCRealDebug::Error, begin),
              ElementsAre(begin + cInterface + "/MACAddress/text()" + cNotSaved,
                          begin + cInterface + "/IPv4/Address/text()" + cNotSaved,
                          begin + cModelPath + cNotSaved, begin + cIdPath + cNotSaved));
}

TEST_F(MultiDeviceStart, OnAFullStorageGoesOnAndKeepsItsIdentity) {
  put(cIdentity);
  FakeFiles::DiskFullAfter(0);
  start();
  EXPECT_EQ(ask(cIdPath), cIdentity);
  EXPECT_EQ(linesOf(PCRealDebug::Error, "MultiDevice::initialize").size(), 4U);
  // When there is room again, the next write brings what the start could not save.
  FakeFiles::Reset();
  EXPECT_EQ(write(cNamePath, "Yours"), 0);
  EXPECT_EQ(saved(std::string(cInterface) + "/IPv4/Address/text()"), "192.0.2.1");
}

TEST_F(MultiDeviceStart, WhereAnyOneSaveFailsGoesOnAndSavesTheRest) {
  for (int nth = 1; nth <= 5; ++nth) {
    put("");
    FakeFiles::FailNth(FakeFiles::Write, nth);
    start();
    FakeFiles::Reset();
    EXPECT_EQ(linesOf(PCRealDebug::Error, "MultiDevice::initialize").size(), 1U) << nth;
    // The last of them is written after the identity.
    EXPECT_EQ(saved(cIdPath), read(cIdPath)) << nth;
    set.log.clear();
    InterfaceFactory::terminate();
  }
}

}  // namespace
}  // namespace Zelv
