#include "zelv/controller/LongestCall.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "zelv/controller/TimedCall.h"
#include "zelv/platform/fake/FakeClock.h"

namespace Zelv::Controller {

struct Callee {};

namespace {

using Platform::Fake::FakeClock;

constexpr std::int64_t cMs = 1000000;

TEST(LongestCall, IsNoneAtFirst) {
  LongestCall const longest;
  EXPECT_EQ(longest.get().nanoseconds, 0);
  EXPECT_EQ(longest.get().operation, "");
  EXPECT_EQ(longest.get().callee, "");
  EXPECT_EQ(longest.get().subject, "");
}

TEST(LongestCall, IsTheOneThatTookLongestAndOfEqualOnesTheFirst) {
  LongestCall longest;
  longest.note(5, "onData", typeid(Callee).name(), "a");
  longest.note(7, "onStatus", "one of 100 subscribers", "b");
  longest.note(7, "onTimer", "c", "c");
  longest.note(6, "onTimer", "d", "d");
  EXPECT_EQ(longest.get().nanoseconds, 7);
  EXPECT_EQ(longest.get().operation, "onStatus");
  EXPECT_EQ(longest.get().callee, "one of 100 subscribers");
  EXPECT_EQ(longest.get().subject, "b");
}

TEST(LongestCall, NamesTheClassForReaders) {
  LongestCall longest;
  longest.note(1, "onData", typeid(Callee).name(), "a");
  EXPECT_EQ(longest.get().callee, "Zelv::Controller::Callee");
}

TEST(LongestCall, KeepsTheBeginningOfALongSubject) {
  LongestCall longest;
  std::string const subject = std::string(LongestCall::cSubject, 'a');
  longest.note(1, "onData", "c", subject);
  EXPECT_EQ(longest.get().subject, subject);
  longest.note(2, "onData", "c", subject + "b");
  EXPECT_EQ(longest.get().subject, subject);
  EXPECT_EQ(longest.get().nanoseconds, 2);
}

TEST(LongestCall, IsTheLongestOfSeveralThreads) {
  LongestCall longest;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&longest, thread] {
      for (int call = 1; call <= 1000; ++call) {
        longest.note(4 * call + thread, "onData", "c", std::to_string(4 * call + thread));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(longest.get().nanoseconds, 4003);
  EXPECT_EQ(longest.get().subject, "4003");
}

TEST(TimedCall, LastsToTheEndOfItsScope) {
  LongestCall longest;
  std::string const path = "/Zelv/a";
  {
    TimedCall const call(longest, "getData", typeid(Callee), path);
    FakeClock::Advance(12);
    EXPECT_EQ(longest.get().nanoseconds, 0);
  }
  EXPECT_EQ(longest.get().nanoseconds, 12 * cMs);
  EXPECT_EQ(longest.get().operation, "getData");
  EXPECT_EQ(longest.get().callee, "Zelv::Controller::Callee");
  EXPECT_EQ(longest.get().subject, path);
}

TEST(TimedCall, IsNotedAlsoWhenItThrows) {
  LongestCall longest;
  std::string const path = "/Zelv/a";
  try {
    TimedCall const call(longest, "getData", typeid(Callee), path);
    FakeClock::Advance(3);
    throw 1;
  } catch (int) {
    EXPECT_EQ(longest.get().nanoseconds, 3 * cMs);
  }
}

TEST(TimedCall, MayEndEarlierAndTheNextBeginThere) {
  LongestCall first;
  LongestCall second;
  std::string const path = "/Zelv/a";
  {
    TimedCall call(first, "getData", typeid(Callee), path);
    FakeClock::Advance(3);
    std::int64_t const end = call.end();
    FakeClock::Advance(2);
    TimedCall const next(second, "onData", typeid(Callee), path, end);
    FakeClock::Advance(4);
  }
  EXPECT_EQ(first.get().nanoseconds, 3 * cMs);
  EXPECT_EQ(second.get().nanoseconds, 6 * cMs);
}

}  // namespace
}  // namespace Zelv::Controller
