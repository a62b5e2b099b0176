#include "zelv/platform/PCRealDebug.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/platform/TestPlatform.h"
#include "zelv/platform/fake/FakeLog.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelv::Platform::Fake::LogCapture;
using Zelv::Platform::Fake::LogLine;
using Zelv::Platform::Testing::Event;

constexpr PCRealDebug::Level cLevels[] = {PCRealDebug::Error, PCRealDebug::Warning,
                                          PCRealDebug::Notable, PCRealDebug::Detail,
                                          PCRealDebug::Trace};

TEST(PCRealDebug, HasTheLevelsOfTheSet) {
  EXPECT_EQ(5020U, PCRealDebug::Error);
  EXPECT_EQ(5021U, PCRealDebug::Warning);
  EXPECT_EQ(5022U, PCRealDebug::Trace);
  EXPECT_EQ(5023U, PCRealDebug::Notable);
  EXPECT_EQ(5024U, PCRealDebug::Detail);
}

TEST(PCRealDebug, HandsAFinishedLineAndItsLevelToTheSink) {
  LogCapture log;
  PCRealDebug::Print(PCRealDebug::Notable, "Class::op: %d of '%s'", 3, "path");
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{5023, "Class::op: 3 of 'path'"}));
}

TEST(PCRealDebug, LetsErrorsAndWarningsThroughAtStart) {
  EXPECT_TRUE(PCRealDebug::Enabled(PCRealDebug::Error));
  EXPECT_TRUE(PCRealDebug::Enabled(PCRealDebug::Warning));
  EXPECT_FALSE(PCRealDebug::Enabled(PCRealDebug::Notable));
  EXPECT_FALSE(PCRealDebug::Enabled(PCRealDebug::Detail));
  EXPECT_FALSE(PCRealDebug::Enabled(PCRealDebug::Trace));
}

TEST(PCRealDebug, LetsLevelsThroughUpToTheOneSetWithTracesLast) {
  LogCapture log;
  for (int last = 0; last < 5; ++last) {
    PCRealDebug::SetLevel(cLevels[last]);
    for (int i = 0; i < 5; ++i) {
      log.clear();
      PCRealDebug::Print(cLevels[i], "line");
      EXPECT_EQ(i <= last, PCRealDebug::Enabled(cLevels[i])) << last << ' ' << i;
      EXPECT_EQ(i <= last ? 1U : 0U, log.lines().size()) << last << ' ' << i;
    }
  }
}

TEST(PCRealDebug, LetsNothingThroughWhenSilenced) {
  LogCapture log;
  PCRealDebug::Silence();
  for (PCRealDebug::Level const level : cLevels) {
    EXPECT_FALSE(PCRealDebug::Enabled(level));
    PCRealDebug::Print(level, "line");
  }
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(PCRealDebug, DropsLevelsThatDoNotExist) {
  LogCapture log;
  for (unsigned long const level : {0UL, 5019UL, 5025UL, ~0UL}) {
    EXPECT_FALSE(PCRealDebug::Enabled(level));
    PCRealDebug::Print(level, "line");
  }
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(PCRealDebug, CutsAStringAt1024Bytes) {
  LogCapture log;
  std::string const just(1024, 'j');
  std::string const over(1025, 'o');
  std::string const huge(1024 * 1024, 'h');
  PCRealDebug::Print(PCRealDebug::Error, "<%s> <%s> <%s>", just.c_str(), over.c_str(),
                     huge.c_str());
  EXPECT_EQ("<" + just + "> <" + over.substr(0, 1024) + "> <" + huge.substr(0, 1024) + ">",
            log.lines().at(0).text);
}

TEST(PCRealDebug, ShowsANullStringAsSuch) {
  LogCapture log;
  char const* volatile null = nullptr;
  PCRealDebug::Print(PCRealDebug::Error, "'%s' and '%.3s'", null, null);
  EXPECT_EQ("'(null)' and '(nu'", log.lines().at(0).text);
}

TEST(PCRealDebug, IgnoresANullFormat) {
  LogCapture log;
  char const* volatile null = nullptr;
  PCRealDebug::Print(PCRealDebug::Error, null, 0);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(PCRealDebug, DoesNotReadValuesAsFormats) {
  LogCapture log;
  PCRealDebug::Print(PCRealDebug::Error, "path '%s'", "%s%n%d%%");
  EXPECT_EQ("path '%s%n%d%%'", log.lines().at(0).text);
}

TEST(PCRealDebug, LeavesErrnoAlone) {
  errno = ENOSPC;
  LogCapture log;
  errno = ENOSPC;
  PCRealDebug::Print(PCRealDebug::Error, "%s", "text");
  EXPECT_EQ(ENOSPC, errno);
}

TEST(PCRealDebug, HandsItsUserDataToTheSink) {
  int received = 0;
  PCRealDebug::SetSink(
      [](unsigned long, char const*, void* aUserData) { ++*static_cast<int*>(aUserData); },
      &received);
  PCRealDebug::Print(PCRealDebug::Error, "line");
  PCRealDebug::SetSink(nullptr, nullptr);
  EXPECT_EQ(1, received);
}

TEST(PCRealDebug, SurvivesASinkThatThrows) {
  PCRealDebug::SetSink([](unsigned long, char const*, void*) { throw std::runtime_error("full"); },
                       nullptr);
  EXPECT_NO_THROW(PCRealDebug::Print(PCRealDebug::Error, "line"));
  LogCapture log;
  PCRealDebug::Print(PCRealDebug::Error, "line");
  EXPECT_EQ(1, log.count(PCRealDebug::Error));
}

TEST(PCRealDebug, DropsWhatASinkLogs) {
  std::atomic<int> received{0};
  PCRealDebug::SetSink(
      [](unsigned long, char const*, void* aUserData) {
        ++*static_cast<std::atomic<int>*>(aUserData);
        PCRealDebug::Print(PCRealDebug::Error, "within");
      },
      &received);
  PCRealDebug::Print(PCRealDebug::Error, "line");
  PCRealDebug::SetSink(nullptr, nullptr);
  EXPECT_EQ(1, received);
}

TEST(PCRealDebug, WritesToStandardErrorWithoutASink) {
  PCRealDebug::SetSink(nullptr, nullptr);
  ::testing::internal::CaptureStderr();
  PCRealDebug::Print(PCRealDebug::Error, "Class::op: %d", 1);
  PCRealDebug::Print(PCRealDebug::Warning, "Class::op: 2");
  PCRealDebug::Print(PCRealDebug::Notable, "Class::op: 3");
  EXPECT_EQ("zelv error: Class::op: 1\nzelv warning: Class::op: 2\n",
            ::testing::internal::GetCapturedStderr());
}

TEST(PCRealDebug, NamesEveryLevelOnStandardError) {
  ::testing::internal::CaptureStderr();
  PCRealDebug::SetLevel(PCRealDebug::Trace);
  for (PCRealDebug::Level const level : cLevels) {
    PCRealDebug::Print(level, "x");
  }
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  EXPECT_EQ("zelv error: x\nzelv warning: x\nzelv notable: x\nzelv detail: x\nzelv trace: x\n",
            ::testing::internal::GetCapturedStderr());
}

TEST(PCRealDebug, ShowsControlBytesOnStandardErrorSoThatNoValuePassesForALine) {
  ::testing::internal::CaptureStderr();
  PCRealDebug::Print(PCRealDebug::Error, "'%s'", "a\nzelv error: forged\x1b[2J\x7f \xc3\xa9");
  EXPECT_EQ("zelv error: 'a\\nzelv error: forged\\x1b[2J\\x7f \xc3\xa9'\n",
            ::testing::internal::GetCapturedStderr());
}

TEST(PCRealDebug, TakesLinesFromManyThreads) {
  constexpr int cThreads = 4;
  constexpr int cLines = 500;
  LogCapture log;
  std::vector<std::thread> threads;
  threads.reserve(cThreads);
  for (int i = 0; i < cThreads; ++i) {
    threads.emplace_back([i] {
      for (int line = 0; line < cLines; ++line) {
        PCRealDebug::Print(PCRealDebug::Detail, "thread %d", i);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  for (int i = 0; i < cThreads; ++i) {
    EXPECT_EQ(cLines, log.count(PCRealDebug::Detail, "thread " + std::to_string(i)));
  }
}

TEST(PCRealDebug, ReturnsFromSetSinkOnlyWhenNobodyIsInTheFormerSink) {
  struct Slow {
    Event entered;
    Event goOn;
    std::atomic<bool> ended{false};
  } slow;
  PCRealDebug::SetSink(
      [](unsigned long, char const*, void* aUserData) {
        auto& self = *static_cast<Slow*>(aUserData);
        self.entered.happen();
        self.goOn.wait();
        for (int i = 0; i < 1000; ++i) {
          std::this_thread::yield();
        }
        self.ended = true;
      },
      &slow);
  std::thread logger([] { PCRealDebug::Print(PCRealDebug::Error, "line"); });
  EXPECT_TRUE(slow.entered.wait());
  slow.goOn.happen();
  PCRealDebug::SetSink(nullptr, nullptr);
  EXPECT_TRUE(slow.ended);
  logger.join();
}

TEST(PCRealDebug, MayChangeSinksWhileThreadsLogWithoutAPause) {
  std::atomic<bool> stop{false};
  std::atomic<int> received{0};
  auto const sink = [](unsigned long, char const*, void* aUserData) {
    ++*static_cast<std::atomic<int>*>(aUserData);
  };
  PCRealDebug::SetSink(sink, &received);
  std::vector<std::thread> threads;
  threads.reserve(3);
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&stop] {
      while (!stop) {
        PCRealDebug::Print(PCRealDebug::Error, "line");
      }
    });
  }
  for (int i = 0; i < 100; ++i) {
    PCRealDebug::SetSink(sink, &received);
  }
  stop = true;
  for (auto& thread : threads) {
    thread.join();
  }
  PCRealDebug::SetSink(nullptr, nullptr);
  int const before = received;
  PCRealDebug::Silence();
  PCRealDebug::Print(PCRealDebug::Error, "line");
  PCRealDebug::SetLevel(PCRealDebug::Warning);
  EXPECT_EQ(before, received);
}

}  // namespace
