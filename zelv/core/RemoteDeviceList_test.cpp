#include "zelv/core/RemoteDeviceList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "zelv/core/testing/DiscoveryTexts.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Infrastructure::HierarchicalDB;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using Texts = Testing::DiscoveryTexts;

class RemoteDeviceListTest : public testing::Test {
 protected:
  bool add(std::string const& aMessage, std::int64_t aNow = 1000) {
    HierarchicalDB message;
    message.loadFromString(aMessage);
    return devices.add(message, aNow);
  }
  bool addDescription(std::string const& aDevice, std::int64_t aNow = 1000) {
    return add(Texts::message("<Hello>" + aDevice + "</Hello>"), aNow);
  }

  std::string read(std::string const& aPath) {
    std::string value;
    return devices.getContent(aPath, value) == 0 ? value : "none";
  }

  static std::string withServices(std::string const& aServices) {
    return "<Device ID='a'><Name>N</Name><Model>M</Model><Type>TV</Type>" + aServices + "</Device>";
  }

  LogCapture log;
  RemoteDeviceList devices;
};

TEST_F(RemoteDeviceListTest, IsEmptyAtFirst) {
  EXPECT_EQ(read("/Devices"), "<Devices/>");
}

TEST_F(RemoteDeviceListTest, TellsWhatItKnowsOfEachDevice) {
  EXPECT_TRUE(devices.all().empty());
  EXPECT_FALSE(devices.find("a"));
  add(Texts::hello("MOBILE", "a", "Phone"), 1000);
  add(Texts::hello("TV", "b", "Set"), 1001);
  devices.stamp("a", 1002);
  std::vector<RemoteDevice> const all = devices.all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].type, "TV");
  EXPECT_EQ(all[0].id, "b");
  EXPECT_EQ(all[0].name, "Set");
  EXPECT_EQ(all[0].stamp, 1001);
  EXPECT_EQ(all[1].type, "MOBILE");
  EXPECT_EQ(all[1].id, "a");
  EXPECT_EQ(all[1].name, "Phone");
  EXPECT_EQ(all[1].stamp, 1002);
  EXPECT_FALSE(devices.find("b' or '1'='1"));
}

TEST_F(RemoteDeviceListTest, KeepsATelevisionByteByByte) {
  EXPECT_TRUE(add(Texts::hello("TV", "a", "Set")));
  EXPECT_EQ(read("/Devices"),
            "<Devices><RemoteTV ID='a'><Name>Set</Name><Model>Model</Model>"
            "<Location>Hall</Location>" +
                Texts::services("192.0.2.9") +
                "<LastHeartBeat>1000</LastHeartBeat></RemoteTV></Devices>");
}

TEST_F(RemoteDeviceListTest, KeepsAPhoneByteByByteWithoutItsLocation) {
  EXPECT_TRUE(add(Texts::hello("MOBILE", "a", "Phone")));
  EXPECT_EQ(read("/Devices"), "<Devices><Mobile ID='a'><Name>Phone</Name><Model>Model</Model>" +
                                  Texts::services("192.0.2.9") +
                                  "<LastHeartBeat>1000</LastHeartBeat></Mobile></Devices>");
}

TEST_F(RemoteDeviceListTest, APhoneIsFoundWithAllThatWasWrittenBeforeTheForeignClosingTag) {
  add(Texts::hello("MOBILE", "a", "Phone"));
  EXPECT_EQ(read("/Devices/Mobile/@ID"), "a");
  EXPECT_EQ(read("/Devices/Mobile/Name/text()"), "Phone");
  EXPECT_EQ(read("/Devices/Mobile/Model/text()"), "Model");
  EXPECT_EQ(read("/Devices/Mobile/Services"), Texts::services("192.0.2.9"));
  EXPECT_EQ(read("/Devices/Mobile/LastHeartBeat/text()"), "1000");
}

TEST_F(RemoteDeviceListTest, ReadsTheDescriptionFromAnyMessageThatHasOne) {
  EXPECT_TRUE(add(Texts::hello("TV", "a")));
  EXPECT_TRUE(add(Texts::probeMatch("TV", "b")));
  EXPECT_TRUE(add(Texts::resolveMatch("TV", "c")));
  EXPECT_EQ(devices.ids("RemoteTV"), "a&#x13;b&#x13;c");
}

TEST_F(RemoteDeviceListTest, TakesTheFirstElementOfABodyWithTwo) {
  EXPECT_TRUE(add(Texts::message("<Hello>" + Texts::description("TV", "a") + "</Hello><Hello>" +
                                 Texts::description("TV", "b") + "</Hello>")));
  EXPECT_EQ(devices.ids("RemoteTV"), "a");
}

TEST_F(RemoteDeviceListTest, PutsADeviceInThePlaceOfTheOneOfItsIdAtTheEnd) {
  add(Texts::hello("TV", "a", "Old"), 1000);
  add(Texts::hello("TV", "b"), 1000);
  add(Texts::hello("TV", "a", "New"), 1005);
  EXPECT_EQ(devices.ids("RemoteTV"), "b&#x13;a");
  EXPECT_EQ(read("/Devices/*[@ID='a']/Name/text()"), "New");
  EXPECT_EQ(read("/Devices/*[@ID='a']/LastHeartBeat/text()"), "1005");
}

TEST_F(RemoteDeviceListTest, ReplacesBelowTheSameElementNameOnly) {
  add(Texts::hello("TV", "a"));
  add(Texts::hello("MOBILE", "a"));
  EXPECT_EQ(devices.ids("RemoteTV"), "a");
  EXPECT_EQ(devices.ids("Mobile"), "a");
  EXPECT_EQ(devices.typeOf("a"), "MOBILE");
  devices.remove("a");
  EXPECT_EQ(read("/Devices"), "<Devices/>");
}

TEST_F(RemoteDeviceListTest, TakesTheTwoTypesByTheirExactTexts) {
  for (char const* type : {"ANY", "tv", "Mobile", "TV2", ""}) {
    EXPECT_FALSE(add(Texts::hello(type, "a"))) << type;
  }
  EXPECT_EQ(read("/Devices"), "<Devices/>");
}

TEST_F(RemoteDeviceListTest, KnowsTelevisionsAndTakesAllElseForPhones) {
  add(Texts::hello("TV", "a"));
  add(Texts::hello("MOBILE", "b"));
  EXPECT_EQ(devices.typeOf("a"), "TV");
  EXPECT_EQ(devices.typeOf("b"), "MOBILE");
  EXPECT_EQ(devices.typeOf("unknown"), "MOBILE");
  EXPECT_EQ(devices.typeOf("']"), "MOBILE");
}

TEST_F(RemoteDeviceListTest, RemovesTheOneDevice) {
  add(Texts::hello("TV", "a"));
  add(Texts::hello("MOBILE", "b"));
  devices.remove("unknown");
  devices.remove("a");
  EXPECT_EQ(devices.ids("RemoteTV"), "");
  EXPECT_EQ(devices.ids("Mobile"), "b");
}

TEST_F(RemoteDeviceListTest, StampsWhatItKnows) {
  add(Texts::hello("TV", "a"));
  EXPECT_TRUE(devices.stamp("a", 1010));
  EXPECT_FALSE(devices.stamp("b", 1010));
  EXPECT_EQ(read("/Devices/*[@ID='a']/LastHeartBeat/text()"), "1010");
}

TEST_F(RemoteDeviceListTest, ADeviceWithoutAStampIsKnownAllTheSame) {
  devices.setContent("/Devices/RemoteTV", "<RemoteTV ID='a'><Name>N</Name></RemoteTV>");
  EXPECT_FALSE(devices.stamp("a", 1010));
  EXPECT_TRUE(devices.contains("a"));
}

TEST_F(RemoteDeviceListTest, FindsThoseWhoseStampIsBelowTheLimitAlone) {
  add(Texts::hello("TV", "a"), 999);
  add(Texts::hello("TV", "b"), 1000);
  add(Texts::hello("MOBILE", "c"), 998);
  EXPECT_EQ(devices.silentSince(1000), "a&#x13;c");
  EXPECT_EQ(devices.silentSince(998), "");
}

TEST_F(RemoteDeviceListTest, StampsPastThe32BitsOfOldClocks) {
  std::int64_t const later = 5'000'000'000;
  add(Texts::hello("TV", "a"), later);
  EXPECT_EQ(devices.silentSince(later), "");
  EXPECT_EQ(devices.silentSince(later + 1), "a");
}

TEST_F(RemoteDeviceListTest, MovesAllStampsWithTheWallClock) {
  add(Texts::hello("TV", "a"), 100);
  add(Texts::hello("MOBILE", "b"), 110);
  devices.shiftStamps(1'600'000'000);
  EXPECT_EQ(read("/Devices/*[@ID='a']/LastHeartBeat/text()"), "1600000100");
  EXPECT_EQ(read("/Devices/*[@ID='b']/LastHeartBeat/text()"), "1600000110");
  devices.shiftStamps(-1'600'000'000);
  EXPECT_EQ(devices.silentSince(110), "a");
}

TEST_F(RemoteDeviceListTest, ValuesThatLookLikeMarkupStayInsideTheirElement) {
  EXPECT_TRUE(
      addDescription("<Device ID='a'><Name>Tom &lt;3 &amp; &lt;/Name></Name><Model>&lt;M"
                     "</Model><Location>&lt;b></Location><Type>TV</Type>" +
                     Texts::services("192.0.2.9") + "</Device>"));
  EXPECT_EQ(read("/Devices/*[@ID='a']/Name/text()"), "Tom <3 & </Name>");
  EXPECT_EQ(read("/Devices/*[@ID='a']/Model/text()"), "<M");
  EXPECT_EQ(read("/Devices/*[@ID='a']/Location/text()"), "<b>");
  EXPECT_EQ(read("/Devices/*[@ID='a']/Services"), Texts::services("192.0.2.9"));
  EXPECT_EQ(read("/Devices/*[@ID='a']/LastHeartBeat/text()"), "1000");
}

TEST_F(RemoteDeviceListTest, ServicesAreKeptWholeWhateverTheyAre) {
  std::string const services =
      "<Services Kind='x'><Service><Name>Own</Name><URL>u</URL><More><Deep/></More></Service>"
      "</Services>";
  EXPECT_TRUE(addDescription(withServices(services)));
  EXPECT_EQ(read("/Devices/*[@ID='a']/Services"), services);
}

TEST_F(RemoteDeviceListTest, ADeviceWithoutAnythingButTypeAndIdIsAdded) {
  EXPECT_TRUE(addDescription("<Device ID='a'><Type>MOBILE</Type></Device>"));
  EXPECT_EQ(read("/Devices"),
            "<Devices><Mobile ID='a'><Name/><Model/><LastHeartBeat>1000</LastHeartBeat></Mobile>"
            "</Devices>");
}

TEST_F(RemoteDeviceListTest, ADescriptionThatWouldBreakItsEntryChangesNothing) {
  add(Texts::hello("TV", "a", "Good"));
  for (char const* text :
       {"&lt;x", "&lt;/Services>&lt;/RemoteTV>", "&lt;!--", "&lt;![CDATA[",
        "&lt;/Services>&lt;LastHeartBeat>9999999999&lt;/LastHeartBeat>&lt;Services>"}) {
    EXPECT_FALSE(addDescription(withServices("<Services><Service><Name>" + std::string(text) +
                                             "</Name></Service></Services>")))
        << text;
    EXPECT_EQ(read("/Devices/*/Name/text()"), "Good") << text;
    EXPECT_EQ(read("/Devices/*/LastHeartBeat/text()"), "1000") << text;
  }
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "DiscoveryService::AddDeviceToList: Device with ID='a' is not added."));
}

TEST_F(RemoteDeviceListTest, AnIdThatCouldBreakOutOfItsQuotesMatchesNothingAndIsNotAdded) {
  add(Texts::hello("TV", "a"));
  add(Texts::hello("TV", "b"));
  std::vector<std::string> const ids = {"",          "a[b",
                                        "a]b",       "x' or '1'='1",
                                        "\"",        "a<b",
                                        "a&b",       std::string("a\x13") + "b",
                                        "a&#x13;b",  std::string(129, 'i'),
                                        "a\nb",      "\x7f",
                                        "a']/x[@y='"};
  for (std::string const& id : ids) {
    HierarchicalDB message;
    message.loadFromString(Texts::hello("TV", "put here"));
    message.setContent("/Envelope/Body/Hello/Device/@ID", id, false);
    EXPECT_FALSE(devices.add(message, 1000)) << id;
    EXPECT_FALSE(devices.contains(id)) << id;
    EXPECT_FALSE(devices.stamp(id, 2000)) << id;
    EXPECT_EQ(devices.typeOf(id), "MOBILE") << id;
    devices.remove(id);
    EXPECT_EQ(devices.ids("RemoteTV"), "a&#x13;b") << id;
    EXPECT_EQ(devices.silentSince(1001), "a&#x13;b") << id;
  }
}

TEST_F(RemoteDeviceListTest, AnIdOfTheGreatestLengthIsOneLikeOthers) {
  std::string const id(128, 'i');
  EXPECT_TRUE(add(Texts::hello("TV", id)));
  EXPECT_TRUE(devices.stamp(id, 1001));
  devices.remove(id);
  EXPECT_FALSE(devices.contains(id));
}

// Whatever an ID is made of: what is in the list can be stamped, found silent and removed.
TEST_F(RemoteDeviceListTest, WhateverIsAddedCanBeRemovedAgain) {
  PCRealDebug::Silence();
  std::mt19937 random(44);  // NOLINT(cert-msc51-cpp): the same on every run
  std::string const alphabet = "abz09-_.:;/\\|!=<>()[]{}'\"@*%$#&,~ \t\x01\x13\x7f\xc3\xa4\xff";
  int added = 0;
  for (int round = 0; round < 1000; ++round) {
    std::string id;
    for (std::size_t length = 1 + random() % 6; length > 0; --length) {
      id += alphabet[random() % alphabet.size()];
    }
    HierarchicalDB message;
    message.loadFromString(Texts::hello(round % 2 == 0 ? "TV" : "MOBILE", "put here"));
    message.setContent("/Envelope/Body/Hello/Device/@ID", id, false);
    if (devices.add(message, 1000)) {
      ++added;
      EXPECT_TRUE(devices.contains(id)) << id;
      EXPECT_TRUE(devices.stamp(id, 990)) << id;
      EXPECT_EQ(devices.silentSince(991), id);
      devices.remove(id);
    }
    ASSERT_EQ(read("/Devices"), "<Devices/>") << id;
  }
  EXPECT_GT(added, 100);
}

TEST_F(RemoteDeviceListTest, HoldsAsManyAsItMayAndNotOneMore) {
  PCRealDebug::Silence();
  for (std::size_t index = 0; index < RemoteDeviceList::MaxDevices; ++index) {
    ASSERT_TRUE(add(Texts::hello(index % 2 == 0 ? "TV" : "MOBILE", std::to_string(index))));
  }
  EXPECT_FALSE(add(Texts::hello("TV", "new")));
  EXPECT_FALSE(add(Texts::hello("MOBILE", "0"))) << "as a phone it would be one more";
  EXPECT_TRUE(add(Texts::hello("TV", "0", "Again")));
  EXPECT_EQ(read("/Devices/*[@ID='0']/Name/text()"), "Again");
  devices.remove("1");
  EXPECT_TRUE(add(Texts::hello("TV", "new")));
  EXPECT_EQ(Infrastructure::MultiString::split(read("/Devices/*/@ID")).size(),
            RemoteDeviceList::MaxDevices);
}

}  // namespace
}  // namespace Zelv
