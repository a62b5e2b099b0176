// The lines that discovery writes, with their levels.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "zelv/core/testing/DiscoveryTest.h"

namespace Zelv {
namespace {

class DiscoveryLog : public Testing::DiscoveryTest {
 public:
  using Bring = std::function<void(DiscoveryLog&)>;

  struct Line {
    char const* name;
    unsigned long level;
    std::string text;
    Bring bring;
    /// Of what is said at the start itself.
    bool address = true;
  };

  // For the functions of the table.
  using Testing::DiscoveryTest::hear;
  using Testing::DiscoveryTest::nowText;
  using Testing::DiscoveryTest::pass;
  using Testing::DiscoveryTest::read;
  using Testing::DiscoveryTest::service;
  using Texts = Testing::DiscoveryTexts;
  static constexpr char const* cMe = cLocalId;
};

class DiscoveryLogLine : public DiscoveryLog,
                         public testing::WithParamInterface<DiscoveryLog::Line> {};

TEST_P(DiscoveryLogLine, IsWrittenAtItsLevel) {
  Line const& line = GetParam();
  Settings settings;
  settings.address = line.address ? cAddress : "";
  start(settings);
  ASSERT_FALSE(set.log.has(line.level, line.text));
  line.bring(*this);
  EXPECT_EQ(set.log.count(line.level, line.text), 1) << set.log.dump();
}

using Texts = Testing::DiscoveryTexts;

std::string const cHello =
    Texts::envelope(Texts::messageId("m"), "<Hello>" + Texts::description("TV", "a") + "</Hello>");

INSTANTIATE_TEST_SUITE_P(
    Lines, DiscoveryLogLine,
    testing::Values(
        DiscoveryLog::Line{"NoXml", PCRealDebug::Error,
                           "DiscoveryService::OnMessage: Failed to load Message.",
                           [](DiscoveryLog& aTest) { aTest.hear("no XML"); }},
        DiscoveryLog::Line{"Duplicate", PCRealDebug::Notable,
                           "DiscoveryService::checkDuplicateMessage: Message 'm' is duplicate.",
                           [](DiscoveryLog& aTest) {
                             aTest.hear(cHello);
                             aTest.hear(cHello);
                           }},
        DiscoveryLog::Line{
            "DuplicateSkipped", PCRealDebug::Detail,
            "DiscoveryService::OnMessage: Received duplicate message and will skip processing.",
            [](DiscoveryLog& aTest) {
              aTest.hear(cHello);
              aTest.hear(cHello);
            }},
        DiscoveryLog::Line{
            "ProbeForOthers", PCRealDebug::Notable,
            "DiscoveryService::OnMessage: Ignoring probe for device type 'MOBILE'.",
            [](DiscoveryLog& aTest) { aTest.hear(Texts::probe("MOBILE", "udp://192.0.2.9:1")); }},
        DiscoveryLog::Line{"ProbeReply", PCRealDebug::Warning,
                           "DiscoveryService::OnMessage: (Probe) replyTo is not a URL 'x'.",
                           [](DiscoveryLog& aTest) { aTest.hear(Texts::probe("ANY", "x")); }},
        DiscoveryLog::Line{
            "ResolveOfOthers", PCRealDebug::Notable,
            "DiscoveryService::OnMessage: Ignoring resolve for device ID 'other'.",
            [](DiscoveryLog& aTest) { aTest.hear(Texts::resolve("other", "udp://192.0.2.9:1")); }},
        DiscoveryLog::Line{
            "ResolveReply", PCRealDebug::Warning,
            "DiscoveryService::OnMessage: (Resolve) replyTo is not a URL 'x'.",
            [](DiscoveryLog& aTest) { aTest.hear(Texts::resolve(DiscoveryLog::cMe, "x")); }},
        DiscoveryLog::Line{
            "ResolveMatchUnasked", PCRealDebug::Warning,
            "DiscoveryService::OnMessage: (ResolveMatch) deviceID 'a' not in unresolved list of "
            "devices.",
            [](DiscoveryLog& aTest) { aTest.hear(Texts::resolveMatch("TV", "a")); }},
        DiscoveryLog::Line{"Unresolved", PCRealDebug::Detail,
                           "DiscoveryService::OnMessage: (HeartBeat) deviceID 'a' unresolved.",
                           [](DiscoveryLog& aTest) { aTest.hear(Texts::heartBeat("a")); }},
        DiscoveryLog::Line{"AddedTelevision", PCRealDebug::Notable,
                           "DiscoveryService::AddDeviceToList: Added TV device with ID='a'",
                           [](DiscoveryLog& aTest) { aTest.hear(cHello); }},
        DiscoveryLog::Line{"AddedPhone", PCRealDebug::Notable,
                           "DiscoveryService::AddDeviceToList: Added MOBILE device with ID='a'",
                           [](DiscoveryLog& aTest) { aTest.hear(Texts::hello("MOBILE", "a")); }},
        DiscoveryLog::Line{"NotAdded", PCRealDebug::Warning,
                           "DiscoveryService::AddDeviceToList: Device with ID='a[' is not added.",
                           [](DiscoveryLog& aTest) { aTest.hear(Texts::hello("MOBILE", "a[")); }},
        DiscoveryLog::Line{"Removed", PCRealDebug::Notable,
                           "DiscoveryService::RemoveDeviceFromList: Removed device with ID='a'",
                           [](DiscoveryLog& aTest) { aTest.hear(Texts::bye("a")); }},
        DiscoveryLog::Line{
            "Dead", PCRealDebug::Warning,
            "DiscoveryService::CheckRemoteDeviceStatus: Device 'a' not sending heartbeat, assuming "
            "it's dead.",
            [](DiscoveryLog& aTest) {
              aTest.hear(cHello);
              DiscoveryLog::pass(20);
            }},
        DiscoveryLog::Line{"NoSuchData", PCRealDebug::Warning,
                           "DiscoveryService::getData: Data not found in HierarchicalDB.",
                           [](DiscoveryLog& aTest) { aTest.read("/Zelv/Devices/X/@ID"); }},
        DiscoveryLog::Line{"NoSuchPlace", PCRealDebug::Warning,
                           "DiscoveryService::setData: Failed to set data in HierarchicalDB.",
                           [](DiscoveryLog& aTest) {
                             aTest.service->setData("/Zelv/Devices/X/@ID", "", GUID::nullGUID);
                           }},
        DiscoveryLog::Line{
            "ProbeWithoutAddress", PCRealDebug::Warning,
            "DiscoveryService::SendProbe: Local network interface address not known.",
            [](DiscoveryLog& aTest) { aTest.service->initialize(); }, false},
        DiscoveryLog::Line{
            "ResolveWithoutAddress", PCRealDebug::Warning,
            "DiscoveryService::SendResolve: Local network interface address not known.",
            [](DiscoveryLog& aTest) { aTest.hear(Texts::heartBeat("a")); }, false},
        DiscoveryLog::Line{"ListenerMissing", PCRealDebug::Error,
                           "DiscoveryService::notifyDataSubscribers: IDataController is NULL!",
                           [](DiscoveryLog&) {
                             Core::DiscoveryService unstarted(nullptr);
                             unstarted.onMessage(cHello, "");
                           }}),
    [](auto const& aInfo) { return aInfo.param.name; });

TEST_F(DiscoveryLog, ForgottenMessagesAreNamedWithTheirTimeAndTheLimit) {
  start();
  hear(cHello);
  std::string const received = nowText();
  pass(40);
  EXPECT_EQ(set.log.count(PCRealDebug::Notable,
                          "DiscoveryService::cleanExpiredMessages: Discarding msg 'm', received: " +
                              received + ", now: " + nowText(-30) + "."),
            1)
      << set.log.dump();
}

TEST_F(DiscoveryLog, ForgottenQuestionsAreNamedWithTheirTimeAndNow) {
  start();
  pass(5);
  hear(Texts::heartBeat("a"));
  std::string const sent = nowText();
  pass(15);
  EXPECT_EQ(set.log.count(
                PCRealDebug::Notable,
                "DiscoveryService::cleanUnresolvedDevices: Discard device 'a', resolve sent at '" +
                    sent + "', now '" + nowText() + "'"),
            1)
      << set.log.dump();
}

TEST_F(DiscoveryLog, EntryAndExitOfTheOperationsAreTraced) {
  start();
  service->onMessage("", "");
  service->onTimer("other", GUID::nullGUID);
  service->onStatus(StatusInformation(""), GUID::nullGUID);
  service->addData("", "", GUID::nullGUID);
  service->onSubscribe("", GUID::nullGUID);
  service->onUnsubscribe("", GUID::nullGUID);
  for (char const* operation :
       {"OnMessage", "onTimer", "onStatus", "addData", "onSubscribe", "onUnsubscribe"}) {
    for (char const* edge : {": Entry.", ": Exit."}) {
      EXPECT_TRUE(
          set.log.has(PCRealDebug::Trace, std::string("DiscoveryService::") + operation + edge))
          << operation << edge;
    }
  }
}

// A stranger's text is shown, cut, and is no format.
TEST_F(DiscoveryLog, WhatStrangersWriteIsNoFormatAndDoesNotFillTheLog) {
  start();
  hear(Texts::resolve("%s%n%d", "udp://192.0.2.9:1"));
  EXPECT_TRUE(set.log.has(PCRealDebug::Notable,
                          "DiscoveryService::OnMessage: Ignoring resolve for device ID '%s%n%d'."));
  hear(Texts::resolve(std::string(100000, 'x'), "udp://192.0.2.9:1"));
  for (auto const& line : set.log.lines()) {
    EXPECT_LT(line.text.size(), 2000U);
  }
}

// The first start with no data interface, or no timer: the whole library is one object, so that
// only a start that fails leaves them out.
TEST_F(DiscoveryLog, WithoutTheDataInterfaceTheStartEndsAtOnce) {
  make();
  service->terminate();
  InterfaceFactory::terminate();
  set.directories.putReadOnly("Devices.xml", "<broken");
  set.directories.removeWritable("Devices.xml");
  set.directories.putReadOnly("Configuration.xml", "<broken");
  set.directories.removeWritable("Configuration.xml");
  service->initialize();
  EXPECT_TRUE(set.log.has(PCRealDebug::Error,
                          "DiscoveryService::initialize: Failed to obtain ICoreData interface."));
  EXPECT_TRUE(take().empty());
  service->terminate();
  EXPECT_TRUE(take().empty());
}

}  // namespace
}  // namespace Zelv
