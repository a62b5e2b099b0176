// A whole set and raw datagrams: this node's part in a conversation, and what readers of the tree
// see of the devices that take part.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/Core.h"
#include "zelv/core/testing/DiscoveryTexts.h"
#include "zelv/core/testing/GroupPeer.h"
#include "zelv/core/testing/Listener.h"
#include "zelv/core/testing/SmallSet.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeInterfaces.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeClock;
using Testing::GroupPeer;
using testing::HasSubstr;
using Testing::Listener;
using Testing::Peer;
using Testing::SmallSet;
using testing::StartsWith;
using Testing::Told;
using Texts = Testing::DiscoveryTexts;

class DiscoveryConversation : public testing::Test {
 protected:
  static constexpr char const* cGroup = "127.0.0.9";
  static constexpr char const* cSetId = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
  static constexpr char const* cTelevisions = "/Zelv/Devices/RemoteTV/@ID";
  static constexpr char const* cPhones = "/Zelv/Devices/Mobile/@ID";

  void SetUp() override {
    std::uint16_t const port = Peer::freePort(Peer::Datagram);
    peer = std::make_unique<GroupPeer>(cGroup, port);
    ASSERT_TRUE(peer->isBound());
    set.directories.putReadOnly(
        "Configuration.xml", "<Configuration><ZelvDiscovery>true</ZelvDiscovery></Configuration>");
    set.directories.putReadOnly(
        "Devices.xml",
        std::string("<Devices><MulticastGroup>") + cGroup + "</MulticastGroup><MulticastPort>" +
            std::to_string(port) +
            "</MulticastPort><HeartBeatInterval>10</HeartBeatInterval><Model/><LocalTV ID=\"" +
            cSetId +
            "\"><Name>Set</Name><Model/><Location>Hall</Location><Interfaces><NetworkInterface "
            "ID=\"1\"><MACAddress/><IPv4><Address/></IPv4></NetworkInterface></Interfaces>"
            "</LocalTV></Devices>");
    Platform::Fake::FakeInterfaces::Set({{"eth0", {2, 0, 0, 0, 0, 1}, {GroupPeer::cSet}}});
    core = SmallSet::start();
    ASSERT_NE(core, nullptr) << set.log.dump();
    ASSERT_EQ(peer->hearType(), "Probe");
    ASSERT_EQ(peer->hearType(), "Hello");
  }

  // The listener outlives the set.
  void TearDown() override { InterfaceFactory::terminate(); }

  /// As a reader of the tree gets it.
  std::string ask(std::string const& aPath) {
    EXPECT_EQ(peer->hearAllSoFar(), "");
    GUID const id = core->requestData(aPath, nullptr, &listener);
    EXPECT_TRUE(listener.waitFor(id));
    auto const told = listener.of(id);
    return !told.empty() && told[0].kind == Told::Data ? told[0].value : "failed";
  }

  Listener listener;
  SmallSet set;
  std::unique_ptr<GroupPeer> peer;
  Core* core = nullptr;
};

TEST_F(DiscoveryConversation, AProbeForTelevisionsOrAnyIsAnswered) {
  for (char const* type : {"TV", "ANY"}) {
    peer->say(Texts::probe(type, peer->url()));
    std::string const answer = peer->hear();
    EXPECT_EQ(Texts::typeOf(answer), "ProbeMatch");
    EXPECT_THAT(answer, HasSubstr("<URL>tcp://127.0.0.1:4446/</URL>"));
  }
}

TEST_F(DiscoveryConversation, AResolveOfTheSetIsAnswered) {
  peer->say(Texts::resolve(cSetId, peer->url()));
  EXPECT_EQ(peer->hearType(), "ResolveMatch");
}

TEST_F(DiscoveryConversation, AHeartbeatOfNobodyInTheListOrTheTableIsAskedAbout) {
  peer->say(Texts::heartBeat("a"));
  std::string const question = peer->hear();
  EXPECT_THAT(question, HasSubstr("<Resolve><Device ID='a'/></Resolve>"));
  peer->say(Texts::heartBeat("a"));
  EXPECT_EQ(peer->hearAllSoFar(), "") << "it is in the table";
  peer->say(Texts::resolveMatch("TV", "a"));
  peer->say(Texts::heartBeat("a"));
  EXPECT_EQ(peer->hearAllSoFar(), "") << "it is in the list";
}

TEST_F(DiscoveryConversation, NothingElseIsAnswered) {
  peer->say(Texts::probe("MOBILE", peer->url()));
  peer->say(Texts::probe("ANY", "no URL"));
  peer->say(Texts::resolve("somebody else", peer->url()));
  peer->say(Texts::resolve(cSetId, "no URL"));
  peer->say(Texts::hello("TV", "a"));
  peer->say(Texts::probeMatch("TV", "b"));
  peer->say(Texts::resolveMatch("TV", "c"));
  peer->say(Texts::bye("d"));
  peer->say(Texts::message("<Unknown/>"));
  peer->say("no XML");
  peer->say("");
  EXPECT_EQ(peer->hearAllSoFar(), "");
}

TEST_F(DiscoveryConversation, ItBeatsEachIntervalAndSaysGoodbyeOnce) {
  FakeClock::Advance(9990);
  EXPECT_EQ(peer->hearAllSoFar(), "");
  FakeClock::Advance(10);
  EXPECT_EQ(peer->hearAllSoFar(), "HeartBeat ");
  FakeClock::Advance(20000);
  EXPECT_EQ(peer->hearAllSoFar(), "HeartBeat HeartBeat ");
  InterfaceFactory::terminate();
  std::string const last = peer->hear();
  EXPECT_THAT(last, HasSubstr(std::string("<Bye><Device ID='") + cSetId + "' /></Bye>"));
}

TEST_F(DiscoveryConversation, ATelevisionComesIsReadInTheTreeAndLeaves) {
  GUID const subscription = core->subscribeData(cTelevisions, nullptr, &listener);
  ASSERT_TRUE(listener.waitFor(subscription));
  std::string const hello = Texts::hello("TV", "a", "Kitchen");
  peer->say(hello);
  peer->say(hello);
  peer->say(hello);
  EXPECT_EQ(ask(cTelevisions), "a");
  EXPECT_EQ(ask("/Zelv/Devices/RemoteTV[@ID='a']/Name/text()"), "Kitchen");
  EXPECT_EQ(ask("/Zelv/Devices/RemoteTV[@ID='a']/Services/Service[Name='CommandControl']/URL/"
                "text()"),
            "tcp://192.0.2.9:4448/");
  EXPECT_EQ(ask("/Zelv/Devices/RemoteTV[@ID='a']/LastHeartBeat/text()"),
            std::to_string(PCTime::EpochTime()));
  peer->say(Texts::bye("a"));
  EXPECT_EQ(ask(cTelevisions), "");
  auto const told = listener.of(subscription);
  ASSERT_EQ(told.size(), 3U) << "the first value, the arrival once, the leaving";
  EXPECT_EQ(told[1].value, "a");
  EXPECT_EQ(told[2].value, "");
}

TEST_F(DiscoveryConversation, APhoneThatFallsSilentDies) {
  peer->say(Texts::hello("MOBILE", "p"));
  EXPECT_EQ(ask(cPhones), "p");
  FakeClock::Advance(10000);
  EXPECT_EQ(peer->hearType(), "HeartBeat");
  EXPECT_EQ(ask(cPhones), "p");
  FakeClock::Advance(10000);
  EXPECT_EQ(peer->hearType(), "HeartBeat");
  EXPECT_EQ(ask(cPhones), "");
}

// A television that was missed at its start is found by its next heartbeat.
TEST_F(DiscoveryConversation, AMissedHelloIsMadeUpForByHeartbeatAndResolve) {
  peer->say(Texts::heartBeat("a"));
  std::string const question = peer->hear();
  std::string const reply = Texts::between(question, "<ReplyTo>", "</ReplyTo>");
  EXPECT_THAT(reply, StartsWith("udp://127.0.0.1:"));
  peer->say(Texts::resolveMatch("TV", "a"));
  EXPECT_EQ(ask(cTelevisions), "a");
}

}  // namespace
}  // namespace Zelv
