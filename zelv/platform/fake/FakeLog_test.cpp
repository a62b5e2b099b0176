#include "zelv/platform/fake/FakeLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "zelv/platform/fake/LogMatchers.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::Logged;
using Zelv::Platform::Fake::LogLine;

void printSome() {
  PCRealDebug::Print(PCRealDebug::Error, "Class::op: failed");
  PCRealDebug::Print(PCRealDebug::Trace, "Class::op: Exit.");
  PCRealDebug::Print(PCRealDebug::Error, "Class::op: failed");
}

TEST(FakeLog, CollectsAllLevelsInOrder) {
  LogCapture log;
  printSome();
  EXPECT_THAT(log.lines(),
              ElementsAre(LogLine{5020, "Class::op: failed"}, LogLine{5022, "Class::op: Exit."},
                          LogLine{5020, "Class::op: failed"}));
  EXPECT_THAT(log.texts(PCRealDebug::Trace), ElementsAre("Class::op: Exit."));
  EXPECT_EQ("5020 Class::op: failed\n5022 Class::op: Exit.\n5020 Class::op: failed\n", log.dump());
}

TEST(FakeLog, CountsLinesByLevelAndText) {
  LogCapture log;
  printSome();
  EXPECT_EQ(2, log.count(PCRealDebug::Error, "Class::op: failed"));
  EXPECT_EQ(0, log.count(PCRealDebug::Warning, "Class::op: failed"));
  EXPECT_EQ(0, log.count(PCRealDebug::Error, "Class::op: fail"));
  EXPECT_EQ(2, log.count(PCRealDebug::Error));
  EXPECT_EQ(2, log.countContaining(PCRealDebug::Error, "fail"));
  EXPECT_EQ(0, log.countContaining(PCRealDebug::Trace, "fail"));
}

TEST(FakeLog, TellsWhetherALineIsThere) {
  LogCapture log;
  printSome();
  EXPECT_TRUE(log.has(PCRealDebug::Error, "Class::op: failed"));
  EXPECT_FALSE(log.has(PCRealDebug::Error, "Class::op"));
  EXPECT_TRUE(log.hasContaining(PCRealDebug::Trace, "Exit"));
  EXPECT_FALSE(log.hasContaining(PCRealDebug::Detail, "Exit"));
}

TEST(FakeLog, IsMatchedByLevelAndText) {
  LogCapture log;
  printSome();
  EXPECT_THAT(log, Logged(PCRealDebug::Error, "Class::op: failed"));
  EXPECT_THAT(log, Logged(PCRealDebug::Error, StartsWith("Class::")));
  EXPECT_THAT(log, Not(Logged(PCRealDebug::Warning, StartsWith("Class::"))));
}

TEST(FakeLog, ForgetsItsLines) {
  LogCapture log;
  printSome();
  log.clear();
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(FakeLog, WaitsForLinesOfOtherThreads) {
  LogCapture log;
  std::thread other(printSome);
  EXPECT_TRUE(log.waitFor(PCRealDebug::Error, "Class::op: failed", 2));
  other.join();
  EXPECT_FALSE(log.waitFor(PCRealDebug::Error, "Class::op: failed", 3, 0));
}

TEST(FakeLog, LeavesTheLogAsAtStart) {
  auto log = std::make_unique<LogCapture>();
  log.reset();
  EXPECT_TRUE(PCRealDebug::Enabled(PCRealDebug::Warning));
  EXPECT_FALSE(PCRealDebug::Enabled(PCRealDebug::Notable));
  ::testing::internal::CaptureStderr();
  PCRealDebug::Print(PCRealDebug::Error, "after");
  EXPECT_EQ("zelv error: after\n", ::testing::internal::GetCapturedStderr());
}

}  // namespace
