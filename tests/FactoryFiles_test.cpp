#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "zelv/infrastructure/HierarchicalDB.h"

namespace {

using Zelv::Infrastructure::HierarchicalDB;

/// One factory file, read as the library reads it.
class FactoryFile {
 public:
  explicit FactoryFile(std::string const& aName) {
    EXPECT_EQ(mDocument.loadFromFile(ZELV_TEST_FACTORY_FILES + aName), 0) << aName;
  }

  /// The value at a path, which must be there.
  std::string operator()(std::string const& aXPath) {
    std::string value;
    EXPECT_EQ(mDocument.getContent(aXPath, value), 0) << aXPath;
    return value;
  }

  /// A whole number above 0.
  long Number(std::string const& aXPath) {
    std::string const text = (*this)(aXPath);
    char* end = nullptr;
    long const value = std::strtol(text.c_str(), &end, 10);
    EXPECT_TRUE(!text.empty() && *end == '\0' && value > 0) << aXPath << ": '" << text << "'";
    return value;
  }

  long Port(std::string const& aXPath) {
    long const port = Number(aXPath);
    EXPECT_LT(port, 65536) << aXPath;
    return port;
  }

  bool Holds(std::string const& aXPath) {
    std::string value;
    return mDocument.getContent(aXPath, value) == 0;
  }

 private:
  HierarchicalDB mDocument;
};

TEST(FactoryFiles, AreTheSixThatTheSystemExpects) {
  std::set<std::string> names;
  for (auto const& entry : std::filesystem::directory_iterator(ZELV_TEST_FACTORY_FILES)) {
    names.insert(entry.path().filename().string());
  }
  for (char const* name : {"Applications.xml", "Assets.xml", "Configuration.xml", "Devices.xml",
                           "Mime.xml", "Users.xml"}) {
    EXPECT_TRUE(names.contains(name)) << name;
  }
}

TEST(FactoryFiles, DevicesHoldTheSettingsOfDiscovery) {
  FactoryFile devices("Devices.xml");
  // The range that is administratively scoped, RFC 2365.
  EXPECT_EQ(devices("/Devices/MulticastGroup/text()").rfind("239.255.", 0), 0U);
  devices.Port("/Devices/MulticastPort/text()");
  EXPECT_EQ(devices.Number("/Devices/HeartBeatInterval/text()"), 10);
  devices("/Devices/Model/text()");
}

TEST(FactoryFiles, DevicesDescribeTheLocalTelevision) {
  FactoryFile devices("Devices.xml");
  EXPECT_EQ(devices("/Devices/LocalTV/@ID"), "") << "each set gives itself its own at first start";
  EXPECT_NE(devices("/Devices/LocalTV/Name/text()"), "");
  devices("/Devices/LocalTV/Model/text()");
  devices("/Devices/LocalTV/Location/text()");
  devices("/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']/MACAddress/text()");
  devices("/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']/IPv4/Address/text()");
}

TEST(FactoryFiles, DevicesLeaveOutWhatIsNeverKeptInTheFile) {
  FactoryFile devices("Devices.xml");
  for (char const* path : {"/Devices/RemoteTV", "/Devices/Mobile", "/Devices/Unknown",
                           "/Devices/LocalTV/SystemAlerts"}) {
    EXPECT_FALSE(devices.Holds(path)) << path;
  }
}

TEST(FactoryFiles, EveryLeafThatIsWrittenLaterCanBeWritten) {
  HierarchicalDB devices;
  ASSERT_EQ(devices.loadFromFile(ZELV_TEST_FACTORY_FILES "Devices.xml"), 0);
  std::string const interface = "/Devices/LocalTV/Interfaces/NetworkInterface[@ID='1']";
  for (std::string const& path :
       {std::string("/Devices/Model/text()"), std::string("/Devices/LocalTV/@ID"),
        std::string("/Devices/LocalTV/Name/text()"), std::string("/Devices/LocalTV/Model/text()"),
        interface + "/MACAddress/text()", interface + "/IPv4/Address/text()"}) {
    std::string value;
    EXPECT_EQ(devices.setContent(path, "new", false), 0) << path;
    EXPECT_EQ(devices.getContent(path, value), 0) << path;
    EXPECT_EQ(value, "new") << path;
  }
}

TEST(FactoryFiles, ConfigurationTurnsTheOwnDiscoveryOnAndTheOtherOff) {
  FactoryFile configuration("Configuration.xml");
  EXPECT_EQ(configuration("/Configuration/UPnPDiscovery/text()"), "false");
  EXPECT_EQ(configuration("/Configuration/ZelvDiscovery/text()"), "true");
}

TEST(FactoryFiles, ConfigurationNamesAPortForEveryService) {
  FactoryFile configuration("Configuration.xml");
  auto const port = [&configuration](std::string const& aService) {
    return configuration.Port("/Configuration/Services/Service[Name='" + aService +
                              "']/Port/text()");
  };
  EXPECT_EQ(port("DataControl"), 4446);
  EXPECT_EQ(port("TVControl"), 4447);
  EXPECT_EQ(port("CommandControl"), 4448);
  EXPECT_EQ(port("InputControl"), 4449);
  EXPECT_EQ(port("AssetManagement"), 4450);
  long const ping = port("UPnPDiscoveryPing");
  EXPECT_TRUE(ping < 4446 || ping > 4450) << "pings need a port of their own";
  EXPECT_NE(ping, FactoryFile("Devices.xml").Port("/Devices/MulticastPort/text()"));
}

TEST(FactoryFiles, ConfigurationHoldsTheSettingsOfUPnP) {
  FactoryFile configuration("Configuration.xml");
  configuration.Number("/Configuration/UPnP/Ping/Interval/text()");
  EXPECT_GT(
      std::strtod(configuration("/Configuration/UPnP/Ping/TimeoutMult/text()").c_str(), nullptr),
      1.0);
  for (char const* path :
       {"/Configuration/UPnP/EndpointType/text()",
        "/Configuration/UPnP/ActiveApplicationService/Name/text()",
        "/Configuration/UPnP/EndpointService/Name/text()",
        "/Configuration/UPnP/GamePlayerDevice/DescriptorFile/text()",
        "/Configuration/UPnP/DLNAWebRoot/text()", "/Configuration/UPnP/ZelvDevicePath/text()"}) {
    EXPECT_NE(configuration(path), "") << path;
  }
}

TEST(FactoryFiles, ApplicationsHoldTheActiveOne) {
  FactoryFile applications("Applications.xml");
  EXPECT_EQ(applications("/Applications/ActiveApplication/Name/text()"), "");
  EXPECT_EQ(applications("/Applications/ActiveApplication/Type/text()"), "");
}

TEST(FactoryFiles, EveryUserHasAnIdentifierAndALogin) {
  FactoryFile users("Users.xml");
  EXPECT_EQ(users("/*[1]/name()"), "Users");
  EXPECT_EQ(users("/Users/User/@ID").size(), 36U);
  EXPECT_EQ(users("/Users/User/LoggedInTv/text()"), "");
}

TEST(FactoryFiles, AssetsHaveTheirRoot) {
  FactoryFile assets("Assets.xml");
  EXPECT_EQ(assets("/*[1]/name()"), "Assets");
}

/// A number of four bytes, the highest first, RFC 2083, 2.1.
unsigned long numberAt(std::string const& aBytes, std::size_t aAt) {
  unsigned long number = 0;
  for (char const byte : aBytes.substr(aAt, 4)) {
    number = number << 8U | static_cast<unsigned char>(byte);
  }
  return number;
}

// The package that is built in names it.
TEST(FactoryFiles, HoldThePictureOfTheTelevision) {
  std::ifstream file(ZELV_TEST_FACTORY_FILES "tv.png", std::ios::binary);
  std::string const bytes((std::istreambuf_iterator<char>(file)), {});
  ASSERT_GT(bytes.size(), 57U);
  EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(bytes.substr(12, 4), "IHDR");
  EXPECT_EQ(numberAt(bytes, 16), 256U);
  EXPECT_EQ(numberAt(bytes, 20), 144U);
  EXPECT_EQ(bytes.substr(bytes.size() - 8, 4), "IEND");
}

TEST(FactoryFiles, MimeKnowsTheTypesOfATelevisionsAssets) {
  FactoryFile mime("Mime.xml");
  auto const type = [&mime](std::string const& aExtension) {
    return mime("/mimetypes/mime[@extension=\"" + aExtension + "\"]/text()");
  };
  EXPECT_EQ(type("png"), "image/png");
  EXPECT_EQ(type("jpg"), "image/jpeg");
  EXPECT_EQ(type("gif"), "image/gif");
  EXPECT_EQ(type("svg"), "image/svg+xml");
  EXPECT_EQ(type("mp3"), "audio/mpeg");
  EXPECT_EQ(type("mp4"), "video/mp4");
  EXPECT_EQ(type("ts"), "video/mp2t");
  EXPECT_EQ(type("xml"), "text/xml");
  EXPECT_EQ(type("html"), "text/html");
  EXPECT_EQ(type("txt"), "text/plain");
  EXPECT_FALSE(mime.Holds("/mimetypes/mime[@extension=\"\"]/text()"));
}

}  // namespace
