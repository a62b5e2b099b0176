// What becomes of one remote device, event by event, as this set sees it; and what subscribers are
// told of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "zelv/core/testing/DiscoveryTest.h"

namespace Zelv {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RemoteDevice : public Testing::DiscoveryTest {
 protected:
  void SetUp() override {
    start();
    subscribe();
  }

  /// Brings the device into the state that is left by its answer.
  void makeUnresolved(std::string const& aId) {
    hear(Texts::heartBeat(aId));
    EXPECT_THAT(takeTypes(), ElementsAre("Resolve"));
  }
  void makeKnown(std::string const& aType, std::string const& aId) {
    hear(Texts::hello(aType, aId));
    told();
  }
};

struct Kind {
  char const* type;
  char const* element;
};

constexpr Kind cKinds[] = {{"TV", "RemoteTV"}, {"MOBILE", "Mobile"}};

TEST_F(RemoteDevice, UnknownWithAHelloOrAProbeMatchBecomesKnownAndItsKindIsTold) {
  for (Kind const& kind : cKinds) {
    std::string const type = kind.type;
    std::string const list = std::string("/Zelv/Devices/") + kind.element + "/@ID";
    hear(Texts::hello(type, "a"));
    EXPECT_EQ(read(list), "a");
    EXPECT_THAT(told(), ElementsAre(type + " a"));
    hear(Texts::probeMatch(type, "b"));
    EXPECT_EQ(read(list), "a&#x13;b");
    EXPECT_THAT(told(), ElementsAre(type + " a&#x13;b"));
    EXPECT_EQ(stampOf("b"), nowText());
    hear(Texts::bye("a"));
    hear(Texts::bye("b"));
    told();
  }
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(RemoteDevice, UnknownWithAHeartbeatIsAskedForAndIsUnresolved) {
  hear(Texts::heartBeat("a"));
  std::vector<Datagram> const sent = take();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].address, cGroup);
  EXPECT_EQ(sent[0].port, port);
  EXPECT_THAT(sent[0].text, HasSubstr("<Body><Resolve><Device ID='a'/></Resolve></Body>"));
  EXPECT_THAT(sent[0].text,
              HasSubstr("<ReplyTo>udp://192.0.2.1:" + std::to_string(port) + "</ReplyTo>"));
  EXPECT_EQ(televisions(), "none");
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RemoteDevice, UnknownWithAResolveMatchThatNobodyAskedForStaysUnknown) {
  hear(Texts::resolveMatch("TV", "a"));
  EXPECT_EQ(televisions(), "none");
  EXPECT_THAT(told(), IsEmpty());
  // The same description adds it when it comes as a Hello.
  hear(Texts::message("<Hello>" + Texts::description("TV", "a") + "</Hello>"));
  EXPECT_EQ(televisions(), "a");
}

TEST_F(RemoteDevice, UnknownWithAByeChangesNothingAndPhonesAreTold) {
  makeKnown("TV", "other");
  makeKnown("MOBILE", "phone");
  hear(Texts::bye("a"));
  EXPECT_THAT(told(), ElementsAre("MOBILE phone"));
  EXPECT_EQ(televisions(), "other");
  EXPECT_EQ(phones(), "phone");
}

TEST_F(RemoteDevice, UnresolvedWithAHeartbeatIsNotAskedForAgain) {
  makeUnresolved("a");
  hear(Texts::heartBeat("a"));
  pass(1);
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(RemoteDevice, UnresolvedWithItsResolveMatchBecomesKnown) {
  for (Kind const& kind : cKinds) {
    std::string const id = kind.type;
    makeUnresolved(id);
    hear(Texts::resolveMatch(kind.type, id, "Answer"));
    EXPECT_EQ(read("/Zelv/Devices/" + std::string(kind.element) + "/Name/text()"), "Answer");
    EXPECT_THAT(told(), ElementsAre(std::string(id).append(" ").append(id)));
    // The question is answered: a further one is not expected.
    hear(Texts::resolveMatch(kind.type, id, "Late"));
    EXPECT_EQ(read("/Zelv/Devices/" + std::string(kind.element) + "/Name/text()"), "Answer");
    EXPECT_THAT(told(), IsEmpty());
  }
}

TEST_F(RemoteDevice, UnresolvedWithAResolveMatchOfAnotherTypeIsNeitherAddedNorExpectedAnyMore) {
  makeUnresolved("a");
  hear(Texts::resolveMatch("FRIDGE", "a"));
  EXPECT_EQ(read("/Zelv/Devices"), "<Devices/>");
  EXPECT_THAT(told(), IsEmpty());
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), ElementsAre("Resolve"));
}

TEST_F(RemoteDevice, UnresolvedWithAHelloBecomesKnownAndItsResolveMatchIsStillExpected) {
  for (auto const& message : {&Texts::hello, &Texts::probeMatch}) {
    makeUnresolved("a");
    hear(message("TV", "a", "First"));
    EXPECT_THAT(told(), ElementsAre("TV a"));
    hear(Texts::resolveMatch("TV", "a", "Second"));
    EXPECT_EQ(read("/Zelv/Devices/RemoteTV/Name/text()"), "Second");
    EXPECT_THAT(told(), ElementsAre("TV a"));
    hear(Texts::bye("a"));
    told();
  }
}

TEST_F(RemoteDevice, UnresolvedIsUnknownAgainWithTheFirstTickAfterItsTenSeconds) {
  makeUnresolved("a");  // right after the start: the next tick finds it ten seconds old
  pass(10);
  take();
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), IsEmpty());
  pass(10);
  take();
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), ElementsAre("Resolve"));
}

TEST_F(RemoteDevice, AHeartbeatEachSecondAsksOnceForEachTimeThatAnEntryHasRunOut) {
  int resolves = 0;
  for (int second = 0; second < 61; ++second) {
    hear(Texts::heartBeat("a"));
    for (std::string const& type : takeTypes()) {
      resolves += type == "Resolve" ? 1 : 0;
    }
    pass(1);
  }
  // At the seconds 0, 20, 40 and 60: an entry made at a tick is ten seconds old at the next, and
  // goes at the one after.
  EXPECT_EQ(resolves, 4);
}

TEST_F(RemoteDevice, KnownWithAHeartbeatIsStamped) {
  makeKnown("TV", "a");
  pass(3);
  hear(Texts::heartBeat("a"));
  EXPECT_EQ(stampOf("a"), nowText());
  EXPECT_THAT(told(), IsEmpty());
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(RemoteDevice, KnownWithoutAStampIsNotAskedForNorStamped) {
  service->setData("/Zelv/Devices/RemoteTV", "<RemoteTV ID='a'/>", GUID::nullGUID);
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(stampOf("a"), "none");
}

TEST_F(RemoteDevice, KnownWithAHelloOrProbeMatchIsReplacedAndStampedAndTold) {
  makeKnown("TV", "a");
  makeKnown("TV", "b");
  pass(3);
  hear(Texts::hello("TV", "a", "New"));
  EXPECT_EQ(read("/Zelv/Devices/RemoteTV[@ID='a']/Name/text()"), "New");
  EXPECT_EQ(stampOf("a"), nowText());
  EXPECT_THAT(told(), ElementsAre("TV b&#x13;a"));
  pass(3);
  hear(Texts::probeMatch("TV", "b", "Newer"));
  EXPECT_EQ(read("/Zelv/Devices/RemoteTV[@ID='b']/Name/text()"), "Newer");
  EXPECT_EQ(stampOf("b"), nowText());
  EXPECT_THAT(told(), ElementsAre("TV a&#x13;b"));
}

TEST_F(RemoteDevice, KnownWithAByeGoesAndItsKindIsTold) {
  makeKnown("TV", "a");
  makeKnown("TV", "b");
  makeKnown("MOBILE", "c");
  hear(Texts::bye("a"));
  EXPECT_EQ(televisions(), "b");
  EXPECT_THAT(told(), ElementsAre("TV b"));
  hear(Texts::bye("c"));
  EXPECT_EQ(phones(), "none");
  EXPECT_THAT(told(), ElementsAre("MOBILE "));
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), ElementsAre("Resolve")) << "it is unknown now";
}

TEST_F(RemoteDevice, KnownAndSilentGoesWithATickAndBothKindsAreTold) {
  makeKnown("TV", "a");
  makeKnown("MOBILE", "b");
  pass(10);
  EXPECT_EQ(televisions(), "a");
  hear(Texts::heartBeat("b"));
  EXPECT_THAT(told(), IsEmpty());
  pass(10);
  EXPECT_EQ(televisions(), "none");
  EXPECT_EQ(phones(), "b");
  EXPECT_THAT(told(), ElementsAre("TV ", "MOBILE b"));
  pass(10);
  EXPECT_THAT(told(), ElementsAre("TV ", "MOBILE "));
  pass(10);
  EXPECT_THAT(told(), IsEmpty());
}

// The margin is 1.2 times the interval: 12 seconds. Ticks fall on the seconds 10 and 20.
TEST_F(RemoteDevice, AStampAtTheCutOffStaysAndOneSecondBelowItGoes) {
  pass(7);
  makeKnown("TV", "thirteen");
  pass(1);
  makeKnown("TV", "twelve");
  makeKnown("MOBILE", "phone");
  pass(12);
  EXPECT_EQ(televisions(), "twelve");
  EXPECT_EQ(phones(), "phone");
}

class RemoteDeviceBefore : public Testing::DiscoveryTest {};

// The listener stands before the Probe has gone out: its thread may be this early.
TEST_F(RemoteDeviceBefore, AHeartbeatOfAnUnknownDeviceBeforeTheProbeDoesNothing) {
  make();
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(set.log.count(PCRealDebug::Detail,
                          "DiscoveryService::OnMessage: (HeartBeat) deviceID 'a' unresolved."),
            0);
  hear(Texts::hello("TV", "a"));
  pass(5);
  hear(Texts::heartBeat("a"));
  EXPECT_EQ(stampOf("a"), nowText());
}

TEST_F(RemoteDeviceBefore, WithoutAnAddressNobodyIsAskedFor) {
  start({.address = ""});
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(
      set.log.count(PCRealDebug::Warning,
                    "DiscoveryService::SendResolve: Local network interface address not known."),
      1);
  hear(Texts::hello("MOBILE", "b"));
  EXPECT_EQ(phones(), "b");
}

}  // namespace
}  // namespace Zelv
