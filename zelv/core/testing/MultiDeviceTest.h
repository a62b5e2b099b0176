#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "zelv/core/Core.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/TCTv.h"

namespace Zelv::Testing {

/// A set with a device branch. Nothing runs at first: a test changes the files or the fakes and
/// then starts the set, or makes a device of its own.
class MultiDeviceTest : public ::testing::Test {
 protected:
  static constexpr char const* cIdPath = "/Zelv/Devices/LocalTV/@ID";
  static constexpr char const* cNamePath = "/Zelv/Devices/LocalTV/Name/text()";
  static constexpr char const* cModelPath = "/Zelv/Devices/LocalTV/Model/text()";
  static constexpr char const* cInterface =
      "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']";

  static std::string devices(std::string const& aId, std::string const& aRest = "") {
    return "<Devices><MulticastGroup>127.0.0.1</MulticastGroup><MulticastPort>4451</MulticastPort>"
           "<HeartBeatInterval>0</HeartBeatInterval><Model></Model><LocalTV ID=\"" +
           aId +
           "\"><Name>Mine</Name><Model></Model><Location>Here</Location><Interfaces>"
           "<NetworkInterface ID=\"1\"><MACAddress></MACAddress><IPv4><Address></Address></IPv4>"
           "</NetworkInterface></Interfaces>" +
           aRest + "</LocalTV></Devices>";
  }

  MultiDeviceTest() { set.directories.putReadOnly("Devices.xml", devices("")); }

  // The listener and a device of the test's own outlive the worker.
  void TearDown() override {
    InterfaceFactory::terminate();
    g_AppTV.SetProductCode("");
  }

  /// Starts the set; the device is that of the running system.
  void start() {
    core = SmallSet::start();
    ASSERT_NE(core, nullptr) << set.log.dump();
    device = dynamic_cast<Core::MultiDevice*>(core->getComponent("MultiDevice"));
    ASSERT_NE(device, nullptr);
  }

  /// A device that belongs to the test, in a system that runs without one or does not run.
  void make() {
    if (core != nullptr) {
      core->unregisterDataProvider("/Zelv/Devices");
    }
    own = std::make_unique<Core::MultiDevice>();
    device = own.get();
  }

  std::string read(std::string const& aPath) {
    std::string value;
    EXPECT_EQ(device->getData(aPath, value, GUID::nullGUID), 0);
    return value;
  }

  int write(std::string const& aPath, std::string const& aValue) {
    return device->setData(aPath, aValue, GUID::nullGUID);
  }

  /// From the file.
  std::string saved(std::string const& aPath) const {
    Infrastructure::HierarchicalDB document;
    document.loadFromFile(set.directories.writable() + "Devices.xml");
    std::string value;
    document.getContent(aPath.substr(5), value);
    return value;
  }

  std::string file() const { return set.directories.getWritable("Devices.xml"); }

  /// The text of the exception that aDo throws.
  template <typename Do>
  static std::string failureOf(Do aDo) {
    try {
      aDo();
    } catch (std::runtime_error const& error) {
      return error.what();
    }
    return "nothing thrown";
  }

  /// What a reader of the tree gets, or "failed".
  std::string ask(std::string const& aPath) {
    GUID const id = core->requestData(aPath, nullptr, &listener);
    EXPECT_TRUE(listener.waitFor(id));
    auto const told = listener.of(id);
    return !told.empty() && told[0].kind == Told::Data ? told[0].value : "failed";
  }

  Listener listener;
  SmallSet set;
  std::unique_ptr<Core::MultiDevice> own;
  Core::MultiDevice* device = nullptr;
  Core* core = nullptr;
};

}  // namespace Zelv::Testing
