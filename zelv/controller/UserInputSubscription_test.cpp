#include "zelv/controller/UserInputSubscription.h"

#include <gtest/gtest.h>

#include "zelv/controller/testing/RecordingUserCallback.h"

namespace Zelv::Controller {
namespace {

TEST(UserInputSubscription, GetsAnIdOfItsOwnWhenMade) {
  Testing::RecordingUserCallback callback;
  UserInputSubscription const first("Key", &callback, "context");
  UserInputSubscription const second("Key", &callback, "context");
  EXPECT_NE(first.getId(), GUID::nullGUID);
  EXPECT_NE(first.getId(), second.getId());
  EXPECT_EQ(first.getType(), "Key");
  EXPECT_EQ(first.getCallback(), &callback);
  EXPECT_EQ(first.getContext(), "context");
}

TEST(UserInputSubscription, CopiesWithItsId) {
  UserInputSubscription const original("Key", nullptr, "");
  UserInputSubscription const copy = original;
  EXPECT_EQ(copy.getId(), original.getId());
  EXPECT_EQ(copy.getType(), "Key");
  EXPECT_EQ(copy.getCallback(), nullptr);
}

}  // namespace
}  // namespace Zelv::Controller
