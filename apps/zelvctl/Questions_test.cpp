#include "apps/zelvctl/Questions.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

using std::chrono::milliseconds;

TEST(Questions, AskOnceASecondForADevice) {
  Questions questions;
  Questions::Clock::time_point const start{};
  EXPECT_TRUE(questions.mayAsk("a", start));
  EXPECT_FALSE(questions.mayAsk("a", start + milliseconds(999)));
  EXPECT_TRUE(questions.mayAsk("b", start + milliseconds(999)));
  EXPECT_TRUE(questions.mayAsk("a", start + milliseconds(1000)));
}

TEST(Questions, AskNoMoreThanTheMostASecondHoweverManyStrangersCome) {
  Questions questions;
  Questions::Clock::time_point const start{};
  std::size_t asked = 0;
  for (int i = 0; i < 100000; ++i) {
    asked += questions.mayAsk(std::to_string(i), start) ? 1 : 0;
  }
  EXPECT_EQ(asked, Questions::MostPerSecond);
  EXPECT_TRUE(questions.mayAsk("later", start + milliseconds(1000)));
}

}  // namespace
}  // namespace ZelvCtl
