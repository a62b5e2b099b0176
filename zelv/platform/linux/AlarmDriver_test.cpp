#include "zelv/platform/linux/AlarmDriver.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>

#include "zelv/platform/PCAlarm.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/linux/ProcessProbe.h"
#include "zelv/platform/linux/ThreadPool.h"

namespace {

using Zelv::Platform::ThreadPool;
using Zelv::Platform::Testing::Event;
using Zelv::Platform::Testing::LetPassUntil;
using Zelv::Platform::Testing::ProcessProbe;

constexpr unsigned cHour = 3600000;

bool count(PTEvent const*, void const* aUserData) {
  ++*static_cast<std::atomic<int>*>(const_cast<void*>(aUserData));
  return true;
}

TEST(AlarmDriver, HasOneThreadForAllAlarmsAndNoneWithoutAlarms) {
  PCThread::ReleaseParked();
  int const before = ProcessProbe::threads();
  PCAlarm alarms[10];
  for (PCAlarm& alarm : alarms) {
    ASSERT_TRUE(alarm.Create(nullptr, cHour, -1));
  }
  EXPECT_EQ(before + 1, ProcessProbe::threads());
  PCThread::ReleaseParked();
  EXPECT_EQ(before + 1, ProcessProbe::threads());
  for (PCAlarm& alarm : alarms) {
    alarm.Destroy();
  }
  EXPECT_EQ(1, ThreadPool::Get().ParkedCount());
  PCThread::ReleaseParked();
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST(AlarmDriver, KeepsItsThreadForAnAlarmThatWentOffForTheLastTime) {
  std::atomic<int> times{0};
  PCAlarm alarm;
  ASSERT_TRUE(alarm.Create(nullptr, 1, 1));
  alarm.SetEventCallback(0, &count, nullptr, &times);
  ASSERT_TRUE(LetPassUntil([&] { return times == 1; }));
  alarm.Reset(1, 1);
  EXPECT_TRUE(LetPassUntil([&] { return times == 2; }));
}

TEST(AlarmDriver, NeedsNoMoreThreadsAfter1000Alarms) {
  PCThread::ReleaseParked();
  int const before = ProcessProbe::threads();
  std::atomic<int> times{0};
  for (int i = 0; i < 1000; ++i) {
    PCAlarm alarm;
    ASSERT_TRUE(alarm.Create(nullptr, 1, -1));
    alarm.SetEventCallback(0, &count, nullptr, &times);
  }
  PCThread::ReleaseParked();
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST(AlarmDriver, EndsItsThreadAlsoWhenTheLastAlarmDeletesItself) {
  PCThread::ReleaseParked();
  int const before = ProcessProbe::threads();
  struct Suicide {
    std::unique_ptr<PCAlarm> alarm = std::make_unique<PCAlarm>();
    Event gone;
  } suicide;
  ASSERT_TRUE(suicide.alarm->Create(nullptr, 1, -1));
  suicide.alarm->SetEventCallback(
      0,
      [](PTEvent const*, void const* aUserData) {
        auto& self = *static_cast<Suicide*>(const_cast<void*>(aUserData));
        self.alarm.reset();
        self.gone.happen();
        return true;
      },
      nullptr, &suicide);
  EXPECT_TRUE(suicide.gone.wait());
  EXPECT_TRUE(ProcessProbe::comesTo([] { return ThreadPool::Get().ParkedCount() == 1; }));
  PCThread::ReleaseParked();
  EXPECT_TRUE(ProcessProbe::comesToThreads(before));
}

TEST(AlarmDriver, LetsNoAlarmGoOffBeforeItsTime) {
  using Clock = std::chrono::steady_clock;
  struct Early {
    Event passed;
    Clock::time_point when;
  } early;
  PCAlarm alarm;
  auto const start = Clock::now();
  ASSERT_TRUE(alarm.Create(nullptr, 5, 1));
  alarm.SetEventCallback(
      0,
      [](PTEvent const*, void const* aUserData) {
        auto& self = *static_cast<Early*>(const_cast<void*>(aUserData));
        self.when = Clock::now();
        self.passed.happen();
        return true;
      },
      nullptr, &early);
  EXPECT_TRUE(early.passed.wait());
  alarm.Destroy();
  // The clock of the alarms counts whole microseconds.
  EXPECT_GE(early.when - start, std::chrono::milliseconds(5) - std::chrono::microseconds(1));
}

/// Runs in a process of its own.
void exitWithAlarms(PCAlarm::EventCallback aCallback) {
  static PCAlarm alarms[3];
  static std::atomic<int> times{0};
  for (PCAlarm& alarm : alarms) {
    alarm.Create(nullptr, 1, -1);
    alarm.SetEventCallback(0, aCallback, nullptr, &times);
  }
  bool const running = ProcessProbe::comesTo([] { return times > 0; });
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  std::exit(running ? 0 : 1);
}

class AlarmDriverDeathTest : public ::testing::Test {
 protected:
  AlarmDriverDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~AlarmDriverDeathTest() override { GTEST_FLAG_SET(death_test_style, "fast"); }
};

TEST_F(AlarmDriverDeathTest, LetsTheProcessEndThoughAlarmsAreSet) {
  EXPECT_EXIT(exitWithAlarms(&count), ::testing::ExitedWithCode(0), "");
}

bool exitWithin(PTEvent const* aEvent, void const* aUserData) {
  count(aEvent, aUserData);
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  std::exit(7);
}

void waitForExit() {
  static PCAlarm alarm;
  static std::atomic<int> times{0};
  static Event never;
  alarm.Create(nullptr, 1, 1);
  alarm.SetEventCallback(0, &exitWithin, nullptr, &times);
  never.wait();
}

TEST_F(AlarmDriverDeathTest, LetsTheProcessEndFromWithinACallback) {
  EXPECT_EXIT(waitForExit(), ::testing::ExitedWithCode(7), "");
}

}  // namespace
