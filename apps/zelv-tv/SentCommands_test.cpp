#include "apps/zelv-tv/SentCommands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include "apps/zelv-tv/testing/CommandsMock.h"

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::NiceMock;
using testing::Throw;
using Zelv::GUID;
using Zelv::IBaseCommandCallback;

class SentCommandsTest : public testing::Test {
 protected:
  SentCommandsTest() {
    ON_CALL(mCommands, executeCommand)
        .WillByDefault(
            [this](std::string const&, std::string const&, IBaseCommandCallback* aCallback) {
              mCallbacks.push_back(aCallback);
              return GUID::createGUID();
            });
    ON_CALL(mCommands, discardCommandCallback)
        .WillByDefault(
            [this](IBaseCommandCallback* aCallback) { mDiscarded.push_back(aCallback); });
    mSent.emplace(mEvents, mQuestions, mCommands);
  }

  std::string Send() { return mSent->Send("<A></A>", "phone").toString(); }

  NiceMock<CommandsMock> mCommands;
  std::vector<IBaseCommandCallback*> mCallbacks;
  std::vector<IBaseCommandCallback*> mDiscarded;
  EventQueue mEvents;
  OpenQuestions mQuestions{mEvents};
  std::optional<SentCommands> mSent;
};

TEST_F(SentCommandsTest, TellWhichOneReturnedWhateverIdentifierComesWithIt) {
  std::string const first = Send();
  std::string const second = Send();
  EXPECT_FALSE(mQuestions.AreAnswered());
  mCallbacks[1]->onReturn("two\nlines", GUID::createGUID());
  mCallbacks[0]->onReturn("one", GUID::createGUID());
  EXPECT_THAT(mEvents.Take(),
              ElementsAre("returned " + second + " two\\nlines", "returned " + first + " one"));
  EXPECT_TRUE(mQuestions.AreAnswered());
}

TEST_F(SentCommandsTest, TellEachReturnOfAHandlerThatAnswersTwice) {
  std::string const id = Send();
  mCallbacks[0]->onReturn("one", GUID::createGUID());
  mCallbacks[0]->onReturn("two", GUID::createGUID());
  EXPECT_THAT(mEvents.Take(), ElementsAre("returned " + id + " one", "returned " + id + " two"));
}

TEST_F(SentCommandsTest, DiscardACallbackOnceItHasReturned) {
  Send();
  mCallbacks[0]->onReturn("one", GUID::createGUID());
  EXPECT_THAT(mDiscarded, IsEmpty()) << "it is still being called";
  Send();
  EXPECT_THAT(mDiscarded, ElementsAre(mCallbacks[0]));
}

TEST_F(SentCommandsTest, DiscardTheRestAtTheEnd) {
  Send();
  Send();
  mCallbacks[1]->onReturn("one", GUID::createGUID());
  mSent.reset();
  EXPECT_THAT(mDiscarded, testing::UnorderedElementsAre(mCallbacks[0], mCallbacks[1]));
}

TEST_F(SentCommandsTest, WaitForNothingThatTheLibraryRefused) {
  EXPECT_CALL(mCommands, executeCommand).WillOnce(Throw(std::runtime_error("no")));
  EXPECT_THROW(Send(), std::runtime_error);
  EXPECT_TRUE(mQuestions.AreAnswered());
}

TEST_F(SentCommandsTest, GiveUpTheOldestWhenTooManyWait) {
  std::string const oldest = Send();
  for (std::size_t i = 1; i < SentCommands::kMaximumWaiting; ++i) {
    Send();
  }
  EXPECT_THAT(mEvents.Take(), IsEmpty());
  Send();
  EXPECT_THAT(mEvents.Take(), ElementsAre("failed " + oldest));
  EXPECT_THAT(mDiscarded, ElementsAre(mCallbacks[0]));
}

}  // namespace
}  // namespace ZelvTv
