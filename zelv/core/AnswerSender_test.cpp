#include "zelv/core/AnswerSender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/FakeThreads.h"
#include "zelv/platform/fake/Fakes.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv {
namespace {

using Platform::Fake::FakeThreads;
using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using testing::ElementsAre;

OutgoingMessage answer(std::string const& aText) {
  return {Infrastructure::URL("tcp", "192.0.2.9", "4451", ""), aText, ""};
}

/// Where the answers go; each one is held back while the gate is closed.
class Wire {
 public:
  void send(OutgoingMessage const& aAnswer) {
    std::unique_lock lock(mLock);
    mSent.push_back(aAnswer.mText);
    mThread = std::this_thread::get_id();
    mChanged.notify_all();
    mChanged.wait_for(lock, std::chrono::seconds(20), [&] { return mOpen; });
  }
  void close() { setOpen(false); }
  void open() { setOpen(true); }

  bool waitFor(std::size_t aCount) {
    std::unique_lock lock(mLock);
    return mChanged.wait_for(lock, std::chrono::seconds(20),
                             [&] { return mSent.size() >= aCount; });
  }
  std::vector<std::string> sent() const {
    std::lock_guard lock(mLock);
    return mSent;
  }
  std::thread::id thread() const {
    std::lock_guard lock(mLock);
    return mThread;
  }

 private:
  void setOpen(bool aOpen) {
    std::lock_guard lock(mLock);
    mOpen = aOpen;
    mChanged.notify_all();
  }

  mutable std::mutex mLock;
  std::condition_variable mChanged;
  std::vector<std::string> mSent;
  std::thread::id mThread;
  bool mOpen = true;
};

class AnswerSenderTest : public testing::Test {
 protected:
  ~AnswerSenderTest() override {
    wire.open();
    Platform::Fake::ResetFakes();
  }

  /// Offers one whose sending does not end, and waits until it is under way.
  void block() {
    wire.close();
    ASSERT_TRUE(sender.offer(answer("blocked")));
    ASSERT_TRUE(wire.waitFor(1));
  }

  LogCapture log;
  Wire wire;
  AnswerSender sender{[this](OutgoingMessage const& aAnswer) { wire.send(aAnswer); }};
};

TEST_F(AnswerSenderTest, SendsInOrderOnAThreadOfItsOwn) {
  sender.begin();
  EXPECT_TRUE(sender.offer(answer("a")));
  EXPECT_TRUE(sender.offer(answer("b")));
  EXPECT_TRUE(sender.offer(answer("c")));
  ASSERT_TRUE(wire.waitFor(3));
  EXPECT_THAT(wire.sent(), ElementsAre("a", "b", "c"));
  EXPECT_NE(wire.thread(), std::this_thread::get_id());
}

TEST_F(AnswerSenderTest, HasNoThreadBeforeTheFirstAnswer) {
  sender.begin();
  EXPECT_EQ(sender.GetId(), 0U);
  sender.offer(answer("a"));
  EXPECT_NE(sender.GetId(), 0U);
}

TEST_F(AnswerSenderTest, DoesNotHoldUpWhoOffers) {
  sender.begin();
  block();
  EXPECT_TRUE(sender.offer(answer("next")));
  EXPECT_THAT(wire.sent(), ElementsAre("blocked"));
  wire.open();
  ASSERT_TRUE(wire.waitFor(2));
}

TEST_F(AnswerSenderTest, KeepsAsManyAsItMayAndDropsTheNext) {
  sender.begin();
  block();
  for (std::size_t count = 0; count < AnswerSender::MaxWaiting; ++count) {
    EXPECT_TRUE(sender.offer(answer("waiting")));
  }
  EXPECT_EQ(log.count(PCRealDebug::Warning), 0);
  EXPECT_FALSE(sender.offer(answer("one too many")));
  EXPECT_THAT(log, Logged(PCRealDebug::Warning,
                          "AnswerSender::offer: Answer to 'tcp://192.0.2.9:4451/' is dropped."));
  wire.open();
  ASSERT_TRUE(wire.waitFor(1 + AnswerSender::MaxWaiting));
  EXPECT_TRUE(sender.offer(answer("room again")));
  ASSERT_TRUE(wire.waitFor(2 + AnswerSender::MaxWaiting));
  EXPECT_EQ(wire.sent().back(), "room again");
}

TEST_F(AnswerSenderTest, TakesNothingBeforeItBegins) {
  EXPECT_FALSE(sender.offer(answer("a")));
  EXPECT_EQ(sender.GetId(), 0U);
}

TEST_F(AnswerSenderTest, WaitsAtItsEndForTheOneUnderWayAloneAndDropsTheOthers) {
  sender.begin();
  block();
  sender.offer(answer("dropped"));
  sender.offer(answer("dropped too"));
  std::thread ending([this] { sender.end(); });
  EXPECT_TRUE(log.waitFor(PCRealDebug::Notable, "AnswerSender::end: 2 answers are dropped."));
  EXPECT_FALSE(sender.offer(answer("late"))) << "it takes no more as soon as it is ending";
  wire.open();
  ending.join();
  EXPECT_THAT(wire.sent(), ElementsAre("blocked"));
  EXPECT_EQ(sender.GetId(), 0U);
}

TEST_F(AnswerSenderTest, EndsTwiceAndBeforeItsBeginningWithoutHarm) {
  sender.end();
  sender.begin();
  sender.begin();
  sender.offer(answer("a"));
  ASSERT_TRUE(wire.waitFor(1));
  sender.end();
  sender.end();
  EXPECT_FALSE(sender.offer(answer("b")));
}

TEST_F(AnswerSenderTest, BeginsAgainAfterItsEnd) {
  sender.begin();
  block();
  sender.offer(answer("dropped"));
  wire.open();
  sender.end();
  std::size_t const before = wire.sent().size();
  sender.begin();
  EXPECT_TRUE(sender.offer(answer("again")));
  ASSERT_TRUE(wire.waitFor(before + 1));
  EXPECT_EQ(wire.sent().back(), "again");
}

TEST_F(AnswerSenderTest, DropsAnAnswerWhenThereIsNoThreadAndTriesAgainWithTheNext) {
  sender.begin();
  FakeThreads::FailNext(1);
  EXPECT_FALSE(sender.offer(answer("a")));
  EXPECT_TRUE(sender.offer(answer("b")));
  ASSERT_TRUE(wire.waitFor(1));
  EXPECT_THAT(wire.sent(), ElementsAre("b"));
}

TEST_F(AnswerSenderTest, GoesOnAfterAnExceptionOfTheSending) {
  int turn = 0;
  AnswerSender thrower([&](OutgoingMessage const& aAnswer) {
    ++turn;
    if (turn == 1) {
      throw std::runtime_error("no wire");
    }
    if (turn == 2) {
      throw 7;
    }
    wire.send(aAnswer);
  });
  thrower.begin();
  thrower.offer(answer("a"));
  thrower.offer(answer("b"));
  thrower.offer(answer("c"));
  ASSERT_TRUE(wire.waitFor(1));
  EXPECT_THAT(wire.sent(), ElementsAre("c"));
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "AnswerSender::send: Answer lost, exception: no wire"));
  EXPECT_THAT(log,
              Logged(PCRealDebug::Error, "AnswerSender::send: Answer lost, unknown exception."));
  thrower.end();
}

}  // namespace
}  // namespace Zelv
