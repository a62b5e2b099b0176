// How discovery begins and ends.

#include "zelv/core/DiscoveryService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/core/testing/DiscoveryTest.h"
#include "zelv/platform/fake/FakeAlarm.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeAlarm;
using Platform::Fake::LogLine;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DiscoveryStart : public Testing::DiscoveryTest {
 protected:
  /// Where the first line with this text stands in the log; the number of lines if nowhere.
  std::size_t placeOf(std::string const& aText) const {
    std::vector<LogLine> const lines = set.log.lines();
    std::size_t place = 0;
    while (place < lines.size() && lines[place].text.find(aText) == std::string::npos) {
      ++place;
    }
    return place;
  }

  bool hasLine(std::string const& aText) const { return placeOf(aText) < set.log.lines().size(); }

  int registrations() const {
    return set.log.countContaining(PCRealDebug::Notable, "Created a new udp handler connection.");
  }
};

/// A socket that was closed keeps its port until the thread that reads from it has left.
bool becomesFree(std::uint16_t aPort) {
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  bool isFree = false;
  while (!isFree && std::chrono::steady_clock::now() < end) {
    isFree = Testing::Peer(Testing::Peer::Datagram).bind(aPort);
    std::this_thread::yield();
  }
  return isFree;
}

TEST_F(DiscoveryStart, NothingIsSentBeforeIt) {
  make();
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(registrations(), 0);
  EXPECT_EQ(televisions(), "none");
}

TEST_F(DiscoveryStart, AsksWhoIsThereAndThenAnnouncesItself) {
  make();
  service->initialize();
  std::vector<Datagram> const messages = takeWhenThereAre(2);
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(Texts::typeOf(messages[0].text), "Probe");
  EXPECT_EQ(Texts::typeOf(messages[1].text), "Hello");
  for (Datagram const& message : messages) {
    EXPECT_EQ(message.address, cGroup);
    EXPECT_EQ(message.port, port);
    EXPECT_EQ(message.text.back(), '\n');
  }
}

TEST_F(DiscoveryStart, ListensThenPausesThenProbesThenAsksTheTreeThenTicks) {
  make();
  std::int64_t const before = FakeClock::MonotonicMs();
  service->initialize();
  EXPECT_EQ(takeWhenThereAre(2).size(), 2U);
  EXPECT_EQ(FakeClock::MonotonicMs() - before, 2);
  EXPECT_LT(placeOf("NetworkAdapter::registerService: Entry."), placeOf("NetworkAdapter::send:"));
  EXPECT_LT(placeOf("NetworkAdapter::send: Entry."),
            placeOf("DataController::requestData: Entry."));
  EXPECT_LT(placeOf("DataController::requestData: Entry."),
            placeOf("TimerController::createTimer: Entry."));
  EXPECT_TRUE(hasLine("TimerController::createTimer: Entry."));
}

TEST_F(DiscoveryStart, ReadsEachSettingAtItsPlace) {
  make({.address = "192.0.2.77", .name = "Other"});
  service->initialize();
  std::string const hello = takeWhenThereAre(2).back().text;
  EXPECT_THAT(hello, HasSubstr(std::string("<SenderID>") + cLocalId + "</SenderID>"));
  EXPECT_THAT(hello, HasSubstr("<From>192.0.2.77</From>"));
  EXPECT_THAT(hello, HasSubstr("<Name>Other</Name><Model>M1</Model><Location>Here</Location>"));
}

TEST_F(DiscoveryStart, TicksInTheIntervalOfTheFile) {
  make({.interval = "3"});
  service->initialize();
  takeWhenThereAre(2);
  FakeClock::Advance(2999);
  EXPECT_THAT(takeTypes(), IsEmpty());
  FakeClock::Advance(1);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat"));
  FakeClock::Advance(9000);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat", "HeartBeat", "HeartBeat"));
}

TEST_F(DiscoveryStart, WithAnIntervalOfZeroNothingTicksAndHeartbeatsStillCount) {
  start({.interval = "0"});
  EXPECT_EQ(FakeAlarm::Armed(), 0);
  hear(Texts::hello("TV", "a"));
  pass(100000);
  hear(Texts::heartBeat("a"));
  EXPECT_EQ(stampOf("a"), nowText());
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(televisions(), "a");
}

// What a damaged file may hold. A text that is no number is none, as it always was.
TEST_F(DiscoveryStart, IntervalsOutOfAllReasonAreBroughtIntoIt) {
  struct Case {
    char const* text;
    int seconds;
  };
  for (Case const& one : {Case{"-5", 1}, Case{"1", 1}, Case{"86400", 86400}, Case{"86401", 86400},
                          Case{"1000000000", 86400}, Case{"99999999999999999999999", 86400},
                          Case{"abc", 0}, Case{"", 0}, Case{"7s", 7}, Case{"1e308", 1}}) {
    start({.interval = one.text});
    EXPECT_EQ(FakeAlarm::Armed(), one.seconds == 0 ? 0 : 1) << one.text;
    if (one.seconds != 0) {
      FakeClock::Advance(one.seconds * 1000LL - 1);
      EXPECT_THAT(takeTypes(), IsEmpty()) << one.text;
      FakeClock::Advance(1);
      EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat")) << one.text;
    }
    end();
  }
}

TEST_F(DiscoveryStart, ANameChangedLaterIsToldFromThenOn) {
  start();
  device->setData("/Zelv/Devices/LocalTV/Name/text()", "Renamed", GUID::nullGUID);
  service->onData("whatever", "", nullptr, GUID::nullGUID);
  EXPECT_THAT(take().at(0).text, HasSubstr("<Name>Renamed</Name>"));
}

TEST_F(DiscoveryStart, AnyAnswerOfTheTreeSendsAHello) {
  start();
  service->onData("/any/path", "any value", nullptr, GUID::createGUID());
  EXPECT_THAT(takeTypes(), ElementsAre("Hello"));
  service->onStatus(StatusInformation("failed"), GUID::nullGUID);
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(DiscoveryStart, OtherTimersAreNotItsOwn) {
  start();
  service->onTimer("heartbeattimer", GUID::nullGUID);
  service->onTimer("", GUID::nullGUID);
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(DiscoveryStart, WithoutAnAddressItSaysSoAndAnnouncesItselfAllTheSame) {
  make({.address = ""});
  service->initialize();
  std::vector<Datagram> const messages = takeWhenThereAre(1);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(Texts::typeOf(messages[0].text), "Hello");
  EXPECT_THAT(messages[0].text, HasSubstr("<From></From>"));
  EXPECT_THAT(messages[0].text, HasSubstr("<URL>tcp://:4446/</URL>"));
  EXPECT_TRUE(
      set.log.has(PCRealDebug::Warning,
                  "DiscoveryService::SendProbe: Local network interface address not known."));
  tick();
  service->terminate();
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat", "Bye"));
}

TEST_F(DiscoveryStart, AMissingSettingLeavesTheStart) {
  for (char const* missing :
       {"/Devices/MulticastGroup", "/Devices/MulticastPort", "/Devices/LocalTV/Model",
        "/Devices/LocalTV/Location", "/Devices/LocalTV/Interfaces"}) {
    make();
    device->getDeviceData()->setContent(missing, "", false);
    EXPECT_THROW(service->initialize(), std::runtime_error) << missing;
    EXPECT_THAT(takeTypes(), IsEmpty());
    EXPECT_EQ(registrations(), 0);
    service->terminate();
    EXPECT_THAT(takeTypes(), IsEmpty()) << "there is nobody to say goodbye to";
    end();
  }
}

TEST_F(DiscoveryStart, AListenerThatFailsDoesNotEndTheStartAndIsTriedAgainAtEachTick) {
  make();
  FakeSockets::FailNext(FakeSockets::Bind, ENODEV, 2);
  service->initialize();
  EXPECT_EQ(takeWhenThereAre(2).size(), 2U);
  EXPECT_EQ(registrations(), 0);
  tick();
  EXPECT_EQ(registrations(), 0);
  tick();
  EXPECT_EQ(registrations(), 1);
  tick();
  EXPECT_EQ(registrations(), 1);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat", "HeartBeat", "HeartBeat"));
}

// The interface does not exist on this machine, as when there is no cable.
TEST_F(DiscoveryStart, AGroupThatCannotBeJoinedIsTriedAgainAtEachTick) {
  start({.group = "239.255.44.46", .address = "192.0.2.1"});
  tick();
  tick();
  EXPECT_EQ(set.log.countContaining(PCRealDebug::Error, "Failed to join multicast group"), 2);
}

TEST_F(DiscoveryStart, ASecondStartKeepsTheListenerAndHasOneTimer) {
  start();
  service->initialize();
  EXPECT_EQ(takeWhenThereAre(2).size(), 2U);
  EXPECT_EQ(FakeAlarm::Armed(), 1);
  FakeClock::Advance(10000);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat"));
  service->terminate();
  EXPECT_EQ(FakeAlarm::Armed(), 0);
  EXPECT_EQ(set.log.countContaining(PCRealDebug::Warning, "Registration not found"), 0);
}

TEST_F(DiscoveryStart, ASecondStartReadsTheSettingsAnew) {
  start();
  std::string const port2 = std::to_string(Testing::Peer::freePort(Testing::Peer::Datagram));
  device->getDeviceData()->setContent("/Devices/MulticastPort/text()", port2, false);
  device->getDeviceData()->setContent("/Devices/LocalTV/Location/text()", "There", false);
  device->getDeviceData()->setContent("/Devices/HeartBeatInterval/text()", "5", false);
  service->initialize();
  std::vector<Datagram> const messages = takeWhenThereAre(2);
  ASSERT_EQ(messages.size(), 2U);
  EXPECT_EQ(std::to_string(messages[1].port), port2);
  EXPECT_THAT(messages[1].text, HasSubstr("<Location>There</Location>"));
  FakeClock::Advance(5000);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat"));
  EXPECT_EQ(registrations(), 1);
  EXPECT_TRUE(becomesFree(port));
}

TEST_F(DiscoveryStart, ASecondStartThatFailsLeavesTheFirstAtWork) {
  struct Case {
    char const* missing;
    std::size_t said;  // before it is missed
  };
  for (Case const& one :
       {Case{"/Devices/MulticastGroup", 0}, Case{"/Devices/HeartBeatInterval", 2}}) {
    start();
    device->getDeviceData()->setContent(one.missing, "", false);
    EXPECT_THROW(service->initialize(), std::runtime_error) << one.missing;
    EXPECT_EQ(takeWhenThereAre(one.said).size(), one.said);
    FakeClock::Advance(10000);
    service->terminate();
    EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat", "Bye")) << one.missing;
    EXPECT_EQ(FakeAlarm::Armed(), 0);
    end();
  }
}

using DiscoveryEnd = DiscoveryStart;

TEST_F(DiscoveryEnd, EndsItsTimerThenSaysGoodbyeThenStopsListening) {
  start();
  service->terminate();
  EXPECT_THAT(takeTypes(), ElementsAre("Bye"));
  EXPECT_LT(placeOf("TimerController::destroyTimer: Entry."), placeOf("NetworkAdapter::send: E"));
  EXPECT_LT(placeOf("NetworkAdapter::send: Entry."),
            placeOf("NetworkAdapter::unregisterService: Entry."));
  EXPECT_TRUE(hasLine("NetworkAdapter::unregisterService: Exit."));
  FakeClock::Advance(100000);
  EXPECT_THAT(takeTypes(), IsEmpty());
}

TEST_F(DiscoveryEnd, DoesNothingBeforeAnyStart) {
  make();
  service->terminate();
  EXPECT_THAT(takeTypes(), IsEmpty());
  EXPECT_EQ(set.log.count(PCRealDebug::Warning), 0);
}

TEST_F(DiscoveryEnd, ASecondEndDoesNoHarm) {
  start();
  service->terminate();
  service->terminate();
  EXPECT_THAT(takeTypes(), ElementsAre("Bye", "Bye"));
  EXPECT_EQ(FakeAlarm::Armed(), 0);
}

TEST_F(DiscoveryEnd, NoLateTickListensAgain) {
  start();
  service->terminate();
  set.log.clear();
  tick();
  EXPECT_EQ(registrations(), 0);
}

TEST_F(DiscoveryEnd, BeginsAgainAfterwards) {
  start();
  service->terminate();
  take();
  set.log.clear();
  service->initialize();
  EXPECT_EQ(takeWhenThereAre(2).size(), 2U);
  EXPECT_EQ(registrations(), 1);
  FakeClock::Advance(10000);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat"));
}

TEST_F(DiscoveryEnd, KeepsItsListToTheEnd) {
  start();
  hear(Texts::hello("TV", "a"));
  service->terminate();
  EXPECT_EQ(televisions(), "a");
}

using DiscoveryProvider = DiscoveryStart;

TEST_F(DiscoveryProvider, CutsTheFirstSixCharactersOfAPathWhateverTheyAre) {
  start();
  hear(Texts::hello("TV", "a"));
  EXPECT_EQ(read("/Zelv/Devices/RemoteTV/@ID"), "a");
  EXPECT_EQ(read("123456Devices/RemoteTV/@ID"), "a");
  EXPECT_EQ(read("123456/Devices/RemoteTV/@ID"), "a");
  // What is left of these is the whole list.
  for (char const* path : {"", "/", "/Zelv", "/Zelv/", "abcdef"}) {
    EXPECT_EQ(read(path), read("/Zelv/Devices")) << path;
  }
}

TEST_F(DiscoveryProvider, ReadingWhatIsNotThereFailsWithAWarning) {
  start();
  std::string value;
  EXPECT_EQ(service->getData("/Zelv/Devices/RemoteTV/@ID", value, GUID::nullGUID), -1);
  EXPECT_EQ(value, "");
  EXPECT_EQ(set.log.count(PCRealDebug::Warning,
                          "DiscoveryService::getData: Data not found in HierarchicalDB."),
            1);
}

TEST_F(DiscoveryProvider, WritesIntoTheList) {
  start();
  hear(Texts::hello("TV", "a"));
  std::string const name = "/Zelv/Devices/RemoteTV[@ID='a']/Name/text()";
  EXPECT_EQ(service->setData(name, "Given", GUID::nullGUID), 0);
  EXPECT_EQ(read(name), "Given");
  EXPECT_EQ(service->setData("/Zelv/Devices/Nobody/Name/text()", "x", GUID::nullGUID), -1);
  EXPECT_EQ(service->setData("", "x", GUID::nullGUID), -1);
  EXPECT_EQ(set.log.count(PCRealDebug::Warning,
                          "DiscoveryService::setData: Failed to set data in HierarchicalDB."),
            2);
}

TEST_F(DiscoveryProvider, WritingAddsNoAttribute) {
  start();
  hear(Texts::hello("TV", "a"));
  EXPECT_EQ(service->setData("/Zelv/Devices/RemoteTV/@New", "x", GUID::nullGUID), -1);
}

TEST_F(DiscoveryProvider, AddsNothingAndTakesNoNoticeOfSubscribers) {
  start();
  EXPECT_EQ(service->addData("/Zelv/Devices", "<X/>", GUID::nullGUID), 0);
  EXPECT_EQ(service->onSubscribe("/Zelv/Devices", GUID::nullGUID), 0);
  EXPECT_EQ(service->onUnsubscribe("/Zelv/Devices", GUID::nullGUID), 0);
  EXPECT_EQ(read("/Zelv/Devices"), "<Devices/>");
}

}  // namespace
}  // namespace Zelv
