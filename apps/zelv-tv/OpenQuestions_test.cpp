#include "apps/zelv-tv/OpenQuestions.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <stdexcept>

namespace ZelvTv {
namespace {

using Zelv::GUID;

class OpenQuestionsTest : public testing::Test {
 protected:
  bool IsAwake() {
    pollfd descriptor{mEvents.Descriptor(), POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1;
  }

  GUID const mFirst = GUID::createGUID();
  GUID const mSecond = GUID::createGUID();
  EventQueue mEvents;
  OpenQuestions mQuestions{mEvents};
};

TEST_F(OpenQuestionsTest, AreOpenUntilTheLastIsAnsweredWhichWakes) {
  EXPECT_TRUE(mQuestions.AreAnswered());
  EXPECT_EQ(mQuestions.Ask([this] { return mFirst; }), mFirst);
  EXPECT_EQ(mQuestions.Ask([this] { return mSecond; }), mSecond);
  EXPECT_FALSE(mQuestions.AreAnswered());
  mQuestions.Answered(mFirst);
  EXPECT_FALSE(mQuestions.AreAnswered());
  EXPECT_FALSE(IsAwake());
  mQuestions.Answered(mSecond);
  EXPECT_TRUE(mQuestions.AreAnswered());
  EXPECT_TRUE(IsAwake());
}

TEST_F(OpenQuestionsTest, MayBeAnsweredBeforeTheirIdentifierIsKnown) {
  mQuestions.Ask([this] {
    mQuestions.Answered(mFirst);
    return mFirst;
  });
  EXPECT_TRUE(mQuestions.AreAnswered());
}

TEST_F(OpenQuestionsTest, AreNotAskedWhenTheCallFails) {
  EXPECT_THROW(mQuestions.Ask([this]() -> GUID {
    mQuestions.Answered(mFirst);
    throw std::runtime_error("no");
  }),
               std::runtime_error);
  EXPECT_TRUE(mQuestions.AreAnswered());
  mQuestions.Ask([this] { return mFirst; });
  EXPECT_FALSE(mQuestions.AreAnswered()) << "the answer of then was to another question";
}

TEST_F(OpenQuestionsTest, PassOverAnswersToWhatWasNotAsked) {
  mQuestions.Answered(mFirst);
  mQuestions.Ask([this] { return mFirst; });
  mQuestions.Answered(mSecond);
  EXPECT_FALSE(mQuestions.AreAnswered());
}

}  // namespace
}  // namespace ZelvTv
