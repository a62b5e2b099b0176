#include "apps/zelvctl/Answers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <set>

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using Zelv::Adapter::SendCancel;
using Zelv::Infrastructure::URL;

URL urlOf(std::string const& aHost) {
  return {"tcp", aHost, "1", ""};
}

/// Takes what is sent, but at some hosts not before it is told to. Waits are bounded to 20 seconds.
class AnswersTest : public testing::Test {
 protected:
  bool take(URL const& aAddress, std::string const& aText, SendCancel& aCancel) {
    std::unique_lock lock(mLock);
    std::string const host = aAddress.getDomainName();
    ++mBegun;
    mChange.notify_all();
    mChange.wait_for(lock, mPatience,
                     [&] { return !mClosed.contains(host) || aCancel.isCancelled(); });
    if (mDead.contains(host) || aCancel.isCancelled()) {
      return false;
    }
    mTaken.push_back(host + " " + aText);
    mChange.notify_all();
    return true;
  }

  void TearDown() override {
    std::lock_guard const lock(mLock);
    mClosed.clear();
    mChange.notify_all();
  }

  void open(std::string const& aHost) {
    std::lock_guard const lock(mLock);
    mClosed.erase(aHost);
    mChange.notify_all();
  }

  bool waitForBegun(int aCount) {
    std::unique_lock lock(mLock);
    return mChange.wait_for(lock, mPatience, [&] { return mBegun >= aCount; });
  }

  std::vector<std::string> waitForTaken(std::size_t aCount) {
    std::unique_lock lock(mLock);
    mChange.wait_for(lock, mPatience, [&] { return mTaken.size() >= aCount; });
    return mTaken;
  }

  std::chrono::seconds const mPatience{20};
  std::mutex mLock;
  std::condition_variable mChange;
  std::set<std::string> mClosed;
  std::set<std::string> mDead;
  std::vector<std::string> mTaken;
  int mBegun = 0;
  Answers mAnswers{[this](URL const& aAddress, std::string const& aText, SendCancel& aCancel) {
    return take(aAddress, aText, aCancel);
  }};
};

TEST_F(AnswersTest, GoToOneAddressInTheirOrder) {
  std::vector<std::string> expected;
  for (int number = 0; number < 100; ++number) {
    EXPECT_TRUE(mAnswers.send(urlOf("a"), std::to_string(number)));
    expected.push_back("a " + std::to_string(number));
  }
  EXPECT_EQ(waitForTaken(100), expected);
}

TEST_F(AnswersTest, WaitForNoOtherAddress) {
  mClosed = {"a"};
  mAnswers.send(urlOf("a"), "1");
  ASSERT_TRUE(waitForBegun(1));
  mAnswers.send(urlOf("a"), "2");
  mAnswers.send(urlOf("b"), "3");
  EXPECT_THAT(waitForTaken(1), ElementsAre("b 3"));
  open("a");
  EXPECT_THAT(waitForTaken(3), ElementsAre("b 3", "a 1", "a 2"));
}

TEST_F(AnswersTest, AreGivenUpForAnAddressThatTakesNone) {
  mClosed = mDead = {"a"};
  mAnswers.send(urlOf("a"), "1");
  ASSERT_TRUE(waitForBegun(1));
  mAnswers.send(urlOf("a"), "2");
  open("a");
  mAnswers.send(urlOf("b"), "3");
  EXPECT_THAT(waitForTaken(1), ElementsAre("b 3"));
}

TEST_F(AnswersTest, AreRefusedWhenTooManyWaitForOneAddress) {
  mClosed = {"a"};
  mAnswers.send(urlOf("a"), "first");
  ASSERT_TRUE(waitForBegun(1));
  for (std::size_t count = 0; count < Answers::MaxTexts; ++count) {
    ASSERT_TRUE(mAnswers.send(urlOf("a"), "text"));
  }
  EXPECT_FALSE(mAnswers.send(urlOf("a"), "one more"));
  EXPECT_TRUE(mAnswers.send(urlOf("b"), "text"));
}

TEST_F(AnswersTest, AreRefusedWhenTheyAreTooLongInAll) {
  mClosed = {"a"};
  mAnswers.send(urlOf("a"), "first");
  ASSERT_TRUE(waitForBegun(1));
  EXPECT_TRUE(mAnswers.send(urlOf("a"), std::string(Answers::MaxBytes, 'x')));
  EXPECT_FALSE(mAnswers.send(urlOf("b"), "x"));
  open("a");
  ASSERT_EQ(waitForTaken(2).size(), 2U);
  EXPECT_TRUE(mAnswers.send(urlOf("b"), "x"));
}

TEST_F(AnswersTest, AreRefusedWhenTooManyAddressesWait) {
  for (std::size_t count = 0; count < Answers::MaxAddresses; ++count) {
    mClosed.insert(std::to_string(count));
  }
  for (std::size_t count = 0; count < Answers::MaxAddresses; ++count) {
    ASSERT_TRUE(mAnswers.send(urlOf(std::to_string(count)), "text"));
  }
  EXPECT_FALSE(mAnswers.send(urlOf("one more"), "text"));
  EXPECT_TRUE(mAnswers.send(urlOf("0"), "another text"));
}

}  // namespace
}  // namespace ZelvCtl
