#include "zelv/controller/TimedDeliveries.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/controller/DataSubscriptionManager.h"
#include "zelv/controller/testing/FakeCoreData.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Controller {

/// A subscriber that takes its time.
class SlowSubscriber : public Testing::RecordingCallback {
 public:
  explicit SlowSubscriber(int aMilliseconds) {
    reaction = [aMilliseconds](Testing::Heard const&) {
      Platform::Fake::FakeClock::Advance(aMilliseconds);
    };
  }
};

namespace {

using Platform::Fake::LogCapture;
using Testing::FakeCoreData;
using Testing::RecordingCallback;

constexpr std::int64_t cMs = 1000000;
char const cPath[] = "/Zelv/a";
char const cSlow[] = "Zelv::Controller::SlowSubscriber";

class TimedDeliveriesTest : public ::testing::Test {
 protected:
  void subscribe(std::size_t aCount) {
    for (; aCount > 0; --aCount) {
      manager.addSubscription(cPath, &quick, nullptr, false);
    }
  }
  void subscribeSlow() { manager.addSubscription(cPath, &slow, nullptr, false); }
  void change(int aTimes = 1) {
    for (; aTimes > 0; --aTimes) {
      manager.notifySubscribers(cPath, "new", nullptr);
    }
  }
  LongestCall::Record longest() const { return manager.getLongestCallback().get(); }

  FakeCoreData tree;
  RecordingCallback quick;
  SlowSubscriber slow{50};
  DataSubscriptionManager manager{FakeCoreData::find};
};

TEST_F(TimedDeliveriesTest, NameTheSlowOneOfAFew) {
  subscribe(TimedDeliveries::cFew - 1);
  subscribeSlow();
  change();
  EXPECT_EQ(longest().nanoseconds, 50 * cMs);
  EXPECT_EQ(longest().operation, "onData");
  EXPECT_EQ(longest().callee, cSlow);
  EXPECT_EQ(longest().subject, cPath);
}

TEST_F(TimedDeliveriesTest, SayOfManyThatOneWasSlowAndNeverMoreThanItWas) {
  subscribe(TimedDeliveries::cFew);
  subscribeSlow();
  change();
  EXPECT_EQ(longest().nanoseconds, (50 - PCTime::cCoarseLagMs) * cMs);
  EXPECT_EQ(longest().callee, "one of 5 subscribers");
  EXPECT_EQ(longest().subject, cPath);
}

TEST_F(TimedDeliveriesTest, NameTheSlowOneOfManyAtTheNextChange) {
  subscribe(TimedDeliveries::cFew);
  subscribeSlow();
  change(2);
  EXPECT_EQ(longest().nanoseconds, 50 * cMs);
  EXPECT_EQ(longest().callee, cSlow);
}

TEST_F(TimedDeliveriesTest, TimeManyTogetherAgainAfterSomeChanges) {
  SlowSubscriber once(5);
  GUID const slowId = manager.addSubscription(cPath, &once, nullptr, false);
  subscribe(TimedDeliveries::cFew);
  change();
  // Below what the clock may lag, so that there was nothing to note, but reason for suspicion.
  EXPECT_EQ(longest().nanoseconds, 0);
  manager.removeSubscription(slowId);
  subscribe(1);
  change(TimedDeliveries::cSuspicious);
  subscribeSlow();
  change();
  EXPECT_EQ(longest().callee, "one of 6 subscribers");
}

TEST_F(TimedDeliveriesTest, AreTimedOneByOneWhenTheLogSaysWhatIsDone) {
  LogCapture log;
  subscribe(TimedDeliveries::cFew);
  subscribeSlow();
  change();
  EXPECT_EQ(longest().callee, cSlow);
}

TEST_F(TimedDeliveriesTest, TimeAnAnswerToOneSubscriberToo) {
  GUID const id = manager.addSubscription("/Zelv/b", &slow, nullptr, false);
  manager.notifySubscriber(id, "new");
  EXPECT_EQ(longest().nanoseconds, 50 * cMs);
  EXPECT_EQ(longest().subject, "/Zelv/b");
}

TEST_F(TimedDeliveriesTest, TimeASubscriberThatThrows) {
  slow.reaction = [](Testing::Heard const&) {
    Platform::Fake::FakeClock::Advance(20);
    throw std::runtime_error("no");
  };
  subscribeSlow();
  change();
  EXPECT_EQ(longest().nanoseconds, 20 * cMs);
}

TEST_F(TimedDeliveriesTest, DoNotTimeTheReadsThatAChangeBringsAbout) {
  tree.reaction = [](FakeCoreData::Request const&) { Platform::Fake::FakeClock::Advance(30); };
  manager.addSubscription("/Zelv", &quick, nullptr, false);
  change();
  EXPECT_EQ(longest().nanoseconds, 0);
}

}  // namespace
}  // namespace Zelv::Controller
