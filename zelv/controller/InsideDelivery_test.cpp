#include "zelv/controller/InsideDelivery.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "zelv/controller/DataSubscriptionManager.h"

namespace {

using Zelv::GUID;
using Zelv::Controller::DataSubscriptionManager;
using Zelv::Controller::InsideDelivery;

class Subscriber : public virtual Zelv::IBaseDataCallback {
 public:
  void onData(std::string const&, std::string const&, Zelv::ContextInformation const*,
              GUID const&) override {
    ++heard;
    inside = InsideDelivery::isThisThread();
    if (throws) {
      throw 1;
    }
  }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

  bool throws = false;
  int heard = 0;
  bool inside = false;
};

TEST(InsideDelivery, IsOfOneThreadAndLastsAsLongAsTheOuterScope) {
  EXPECT_FALSE(InsideDelivery::isThisThread());
  InsideDelivery const outer;
  {
    InsideDelivery const inner;
    EXPECT_TRUE(InsideDelivery::isThisThread());
  }
  EXPECT_TRUE(InsideDelivery::isThisThread());
  bool elsewhere = true;
  std::thread([&] { elsewhere = InsideDelivery::isThisThread(); }).join();
  EXPECT_FALSE(elsewhere);
}

TEST(InsideDelivery, IsWhereSubscribersAreTold) {
  DataSubscriptionManager subscriptions([]() -> Zelv::ICoreData* { return nullptr; });
  Subscriber subscriber;
  GUID const id = subscriptions.addSubscription("/Zelv/A/text()", &subscriber, nullptr, false);
  subscriptions.notifySubscribers("/Zelv/A/text()", "changed", nullptr);
  EXPECT_EQ(1, subscriber.heard);
  EXPECT_TRUE(subscriber.inside);
  EXPECT_FALSE(InsideDelivery::isThisThread());
  subscriber.inside = false;
  subscriber.throws = true;
  subscriptions.notifySubscriber(id, "answered");
  EXPECT_EQ(2, subscriber.heard);
  EXPECT_TRUE(subscriber.inside);
  EXPECT_FALSE(InsideDelivery::isThisThread());
}

}  // namespace
