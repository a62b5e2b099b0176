#include "zelv/controller/DataSubscription.h"

#include <gtest/gtest.h>

#include "zelv/controller/testing/RecordingCallback.h"

namespace Zelv::Controller {
namespace {

using Testing::RecordingCallback;

class Context : public ContextInformation {};

TEST(DataSubscription, IsNobodysAtFirst) {
  DataSubscription const subscription;
  EXPECT_EQ(subscription.getId(), GUID::nullGUID);
  EXPECT_EQ(subscription.getXPath(), "");
  EXPECT_EQ(subscription.getSubscriber(), nullptr);
  EXPECT_EQ(subscription.getContext(), nullptr);
  EXPECT_FALSE(subscription.isOneTimeDelivery());
}

TEST(DataSubscription, GetsAnIdOfItsOwnWhenMade) {
  RecordingCallback callback;
  Context const context;
  DataSubscription const first("/Zelv/a", &callback, &context, true);
  DataSubscription const second("/Zelv/a", &callback, &context, true);
  EXPECT_FALSE(first.getId() == GUID::nullGUID);
  EXPECT_FALSE(first.getId() == second.getId());
  EXPECT_EQ(first.getXPath(), "/Zelv/a");
  EXPECT_EQ(first.getSubscriber(), &callback);
  EXPECT_EQ(first.getContext(), &context);
  EXPECT_TRUE(first.isOneTimeDelivery());
}

TEST(DataSubscription, CopiesWithItsId) {
  DataSubscription const original("/Zelv/a", nullptr, nullptr, false);
  DataSubscription copy;
  copy = original;
  EXPECT_EQ(copy.getId(), original.getId());
  EXPECT_EQ(copy.getXPath(), original.getXPath());
}

TEST(DataSubscription, TakesTheTextBeforeTheRootForTheRemoteDevice) {
  auto const deviceOf = [](char const* aPath) {
    return DataSubscription(aPath, nullptr, nullptr, false).getRemoteDeviceId();
  };
  EXPECT_EQ(deviceOf("/Zelv/a"), "");
  EXPECT_EQ(deviceOf("device/Zelv/a/Zelv"), "device");
  EXPECT_EQ(deviceOf("elsewhere"), "elsewhere");
}

}  // namespace
}  // namespace Zelv::Controller
