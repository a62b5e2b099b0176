// Ticks, duplicates, and the clock.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "zelv/core/testing/DiscoveryTest.h"

namespace Zelv {
namespace {

using testing::ElementsAre;

class DiscoveryUpkeep : public Testing::DiscoveryTest {
 protected:
  static std::string duplicateText(std::string const& aId) {
    return "DiscoveryService::checkDuplicateMessage: Message '" + aId + "' is duplicate.";
  }
  int duplicates(std::string const& aId) const {
    return set.log.count(PCRealDebug::Notable, duplicateText(aId));
  }
  static std::string helloWithId(std::string const& aMessageId, std::string const& aDeviceId) {
    return Texts::envelope(Texts::messageId(aMessageId),
                           "<Hello>" + Texts::description("TV", aDeviceId) + "</Hello>");
  }
};

TEST_F(DiscoveryUpkeep, ThreeCopiesAddADeviceOnceAndTellOfItOnce) {
  start();
  subscribe();
  std::string const hello = Texts::hello("TV", "a");
  hear(hello);
  hear(hello);
  hear(hello);
  EXPECT_EQ(televisions(), "a");
  EXPECT_THAT(told(), ElementsAre("TV a"));
}

TEST_F(DiscoveryUpkeep, TheIdentifierAloneMakesADuplicate) {
  start();
  hear(helloWithId("m", "a"));
  hear(helloWithId("m", "b"));
  hear(helloWithId("M", "c"));
  EXPECT_EQ(televisions(), "a&#x13;c");
  EXPECT_EQ(duplicates("m"), 1);
}

TEST_F(DiscoveryUpkeep, MessagesWithoutAnIdentifierAreNeverDuplicates) {
  start();
  subscribe();
  std::string const hello =
      Texts::envelope("", "<Hello>" + Texts::description("TV", "a") + "</Hello>");
  hear(hello);
  hear(hello);
  EXPECT_THAT(told(), ElementsAre("TV a", "TV a"));
}

TEST_F(DiscoveryUpkeep, MessagesOfNoKnownKindAreNotedToo) {
  start();
  hear(Texts::envelope(Texts::messageId("m"), "<Unknown/>"));
  hear(helloWithId("m", "a"));
  EXPECT_EQ(televisions(), "none");
}

// Three intervals of ten seconds; ticks fall on 10, 20, 30, 40.
TEST_F(DiscoveryUpkeep, AnIdentifierIsForgottenThreeIntervalsAfterItsFirstCopy) {
  start();
  hear(helloWithId("m", "a"));
  pass(25);
  hear(helloWithId("m", "a"));  // does not make it younger
  EXPECT_EQ(duplicates("m"), 1);
  pass(6);  // the tick at 30 finds it thirty seconds old, which is not more than three intervals
  hear(helloWithId("m", "a"));
  EXPECT_EQ(duplicates("m"), 2);
  pass(10);
  hear(helloWithId("m", "a"));
  EXPECT_EQ(duplicates("m"), 2);
  EXPECT_EQ(televisions(), "a");
}

// All steps have something to do in the tick at the second 40.
TEST_F(DiscoveryUpkeep, ATickSendsTheHeartbeatThenSweepsThenForgetsMessagesThenQuestions) {
  start();
  hear(helloWithId("m", "a"));
  for (int second = 0; second < 27; second += 9) {
    pass(9);
    hear(Texts::heartBeat("a"));
  }
  pass(2);
  hear(Texts::heartBeat("b"));
  pass(10);
  set.log.clear();
  pass(1);
  std::string order;
  for (auto const& line : set.log.lines()) {
    if (line.text == "NetworkAdapter::send: Entry.") {
      order += "heartbeat ";
    } else if (line.text.find("CheckRemoteDeviceStatus: Device 'a'") != std::string::npos) {
      order += "silent ";
    } else if (line.text.find("RemoveDeviceFromList: Removed") != std::string::npos) {
      order += "removed ";
    } else if (line.text.find("cleanExpiredMessages: Discarding msg 'm'") != std::string::npos) {
      order += "message ";
    } else if (line.text.find("cleanUnresolvedDevices: Discard device 'b'") != std::string::npos) {
      order += "question";
    }
  }
  EXPECT_EQ(order, "heartbeat silent removed message question");
}

TEST_F(DiscoveryUpkeep, TheSweepHasTheMarginOfTheOwnInterval) {
  start({.interval = "5"});
  hear(Texts::hello("TV", "a"));
  pass(5);
  EXPECT_EQ(televisions(), "a");
  pass(5);
  EXPECT_EQ(televisions(), "none");
}

// A broadcast brings the time to a set that began in 1970.
TEST_F(DiscoveryUpkeep, NobodyDiesOfAClockThatJumpsForward) {
  start();
  FakeClock::SetWall(1000);
  hear(Texts::hello("TV", "a"));
  FakeClock::SetWall(1'700'000'000);
  pass(10);
  EXPECT_EQ(televisions(), "a");
  pass(10);
  EXPECT_EQ(televisions(), "none") << "silent for twenty seconds, whatever the clock did";
}

TEST_F(DiscoveryUpkeep, NobodyLivesForEverByAClockThatJumpsBack) {
  start();
  hear(Texts::hello("TV", "a"));
  FakeClock::SetWall(1000);
  pass(20);
  EXPECT_EQ(televisions(), "none");
}

// Heard after the jump and before the tick that could notice it.
TEST_F(DiscoveryUpkeep, WhoIsHeardRightAfterAJumpIsNotMovedWithIt) {
  for (std::int64_t const wall : {1'900'000'000LL, 1000LL}) {
    start();
    hear(Texts::hello("TV", "a"));
    pass(1);
    FakeClock::SetWall(wall);
    hear(Texts::heartBeat("a"));
    EXPECT_EQ(stampOf("a"), nowText());
    pass(9);
    EXPECT_EQ(stampOf("a"), nowText(-9));
    EXPECT_EQ(televisions(), "a");
    pass(10);
    EXPECT_EQ(televisions(), "none") << wall;
    end();
    FakeClock::Reset();
  }
}

TEST_F(DiscoveryUpkeep, QuestionsAndDuplicatesMoveWithTheClock) {
  start();
  hear(helloWithId("m", "x"));
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), ElementsAre("Resolve"));
  FakeClock::SetWall(1'900'000'000);
  pass(10);
  hear(Texts::heartBeat("a"));
  hear(helloWithId("m", "x"));
  EXPECT_EQ(duplicates("m"), 1);
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat"));
  FakeClock::SetWall(1000);
  pass(10);
  hear(Texts::heartBeat("a"));
  EXPECT_THAT(takeTypes(), ElementsAre("HeartBeat", "Resolve"));
}

TEST_F(DiscoveryUpkeep, TheYear2038IsLikeOthers) {
  start();
  FakeClock::SetWall(2'147'483'640);
  hear(Texts::hello("TV", "a"));
  for (int beat = 0; beat < 5; ++beat) {
    pass(10);
    hear(Texts::heartBeat("a"));
  }
  EXPECT_EQ(stampOf("a"), nowText());
  EXPECT_EQ(televisions(), "a");
  pass(20);
  EXPECT_EQ(televisions(), "none");
}

}  // namespace
}  // namespace Zelv
