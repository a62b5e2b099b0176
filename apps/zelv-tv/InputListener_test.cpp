#include "apps/zelv-tv/InputListener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZelvTv {
namespace {

using testing::ElementsAre;
using Zelv::GUID;

class InputMock : public virtual Zelv::IAppUser {
 public:
  MOCK_METHOD(GUID, subscribeUser, (std::string const&, Zelv::IBaseUserCallback*), (override));
  MOCK_METHOD(void, unsubscribeUser, (GUID), (override));
};

TEST(InputListenerTest, SubscribesToKeysToTextAndToWhatHasNoType) {
  EventQueue events;
  InputListener listener(events);
  testing::StrictMock<InputMock> input;
  EXPECT_CALL(input, subscribeUser("Key", &listener));
  EXPECT_CALL(input, subscribeUser("Text", &listener));
  EXPECT_CALL(input, subscribeUser("", &listener));
  listener.Begin(input);
}

TEST(InputListenerTest, TellsOfAnEventInOneLine) {
  EventQueue events;
  InputListener listener(events);
  listener.onUserInput("Text", "one two\nthree", "phone1", "Tom B", GUID::createGUID());
  listener.onUserInput("", "", "", "", GUID::createGUID());
  EXPECT_THAT(events.Take(),
              ElementsAre("input Text phone1 Tom\\x20B one two\\nthree", "input - - - "));
}

}  // namespace
}  // namespace ZelvTv
