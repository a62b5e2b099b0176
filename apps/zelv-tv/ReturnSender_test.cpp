#include "apps/zelv-tv/ReturnSender.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <set>
#include <stdexcept>

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using Zelv::CommandArgs;

/// Takes what is sent; at the addresses that are closed only once all is cancelled. Waits are
/// bounded to 20 seconds.
class ReturnSenderTest : public testing::Test {
 protected:
  ReturnSenderTest() {
    mSender.emplace(ReturnSender::Way{
        [this](std::string const& aValue, CommandArgs const& aArgs) { take(aValue, aArgs); },
        [this] { cancel(); }});
  }
  ~ReturnSenderTest() override { mSender.reset(); }

  void take(std::string const& aValue, CommandArgs const& aArgs) {
    std::unique_lock lock(mMutex);
    ++mBegun;
    mChange.notify_all();
    if (mClosed.contains(aArgs.replyTo)) {
      mChange.wait_for(lock, mPatience, [this] { return mCancelled; });
      throw std::runtime_error("not taken");
    }
    mTaken.push_back(aArgs.replyTo + " " + aValue);
    mChange.notify_all();
  }

  void cancel() {
    std::lock_guard const lock(mMutex);
    mCancelled = true;
    mChange.notify_all();
  }

  bool Send(std::string const& aAddress, std::string const& aValue) {
    CommandArgs args;
    args.replyTo = aAddress;
    return mSender->Send(aValue, args);
  }

  bool WaitForBegun(int aCount) {
    std::unique_lock lock(mMutex);
    return mChange.wait_for(lock, mPatience, [&] { return mBegun >= aCount; });
  }

  std::vector<std::string> WaitForTaken(std::size_t aCount) {
    std::unique_lock lock(mMutex);
    mChange.wait_for(lock, mPatience, [&] { return mTaken.size() >= aCount; });
    return mTaken;
  }

  std::chrono::seconds const mPatience{20};
  std::mutex mMutex;
  std::condition_variable mChange;
  std::set<std::string> mClosed;
  std::vector<std::string> mTaken;
  int mBegun = 0;
  bool mCancelled = false;
  std::optional<ReturnSender> mSender;
};

TEST_F(ReturnSenderTest, SendsToOneAddressInOrder) {
  std::vector<std::string> expected;
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(Send("a", std::to_string(i)));
    expected.push_back("a " + std::to_string(i));
  }
  EXPECT_EQ(WaitForTaken(200), expected);
}

TEST_F(ReturnSenderTest, IsNotHeldUpByOneThatTakesNothing) {
  mClosed.insert("dead");
  EXPECT_TRUE(Send("dead", "1"));
  ASSERT_TRUE(WaitForBegun(1));
  EXPECT_TRUE(Send("dead", "2"));
  EXPECT_TRUE(Send("a", "1"));
  EXPECT_TRUE(Send("b", "1"));
  EXPECT_THAT(WaitForTaken(2), testing::UnorderedElementsAre("a 1", "b 1"));
}

TEST_F(ReturnSenderTest, EndsThoughNobodyTakesAnything) {
  for (std::size_t i = 0; i < ReturnSender::kThreads; ++i) {
    mClosed.insert(std::to_string(i));
    EXPECT_TRUE(Send(std::to_string(i), "1"));
    EXPECT_TRUE(Send(std::to_string(i), "2"));
  }
  ASSERT_TRUE(WaitForBegun(static_cast<int>(ReturnSender::kThreads)));
  mSender.reset();
  EXPECT_EQ(mBegun, static_cast<int>(ReturnSender::kThreads)) << "the rest is given up";
}

TEST_F(ReturnSenderTest, GoesOnBehindOneThatCouldNotBeSent) {
  mClosed.insert("dead");
  cancel();
  EXPECT_TRUE(Send("dead", "1"));
  EXPECT_TRUE(Send("dead", "2"));
  ASSERT_TRUE(WaitForBegun(2));
  EXPECT_TRUE(Send("a", "1"));
  EXPECT_THAT(WaitForTaken(1), ElementsAre("a 1"));
}

TEST_F(ReturnSenderTest, KeepsSoManyAddressesAndBytes) {
  for (std::size_t i = 0; i <= ReturnSender::kThreads; ++i) {
    mClosed.insert("dead" + std::to_string(i));
    EXPECT_TRUE(Send("dead" + std::to_string(i), "1"));
  }
  ASSERT_TRUE(WaitForBegun(static_cast<int>(ReturnSender::kThreads)));
  for (std::size_t i = ReturnSender::kThreads + 1; i < ReturnSender::kMaximumAddresses; ++i) {
    EXPECT_TRUE(Send(std::to_string(i), "1"));
  }
  EXPECT_FALSE(Send("another", "1"));
  EXPECT_FALSE(Send("dead0", std::string(ReturnSender::kMaximumBytes, 'x')));
  EXPECT_TRUE(Send("dead0", "2"));
}

}  // namespace
}  // namespace ZelvTv
