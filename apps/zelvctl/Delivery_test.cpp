#include "apps/zelvctl/Delivery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "apps/zelvctl/Loop.h"
#include "apps/zelvctl/Mailbox.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Zelv::Infrastructure::URL;

class DeliveryTest : public testing::Test {
 protected:
  DeliveryTest() {
    mLoop.serve(mMailbox->descriptor(), [this] { mMailbox->serve(); });
  }

  Bell mStop;
  Loop mLoop{mStop.descriptor()};
  std::vector<std::string> mMessages;
  std::unique_ptr<Mailbox> mMailbox = std::make_unique<Mailbox>(
      0, [this](std::string const& aMessage) { mMessages.push_back(aMessage); });
  URL const mUrl{"tcp", "127.0.0.1", std::to_string(mMailbox->port()), ""};
};

TEST_F(DeliveryTest, EndsWhenTheOtherSideHasTakenTheText) {
  Delivery const delivery(mUrl, "text", mLoop.bell());
  EXPECT_EQ(mLoop.run(Loop::Forever, [&] { return delivery.isOver(); }), Loop::Done);
  EXPECT_TRUE(delivery.wasAcknowledged());
  EXPECT_THAT(mMessages, ElementsAre("text\n"));
}

TEST_F(DeliveryTest, FailsWhereNobodyListens) {
  mLoop.serve(-1, [] {});
  mMailbox.reset();
  Delivery const delivery(mUrl, "text", mLoop.bell());
  EXPECT_EQ(mLoop.run(Loop::Forever, [&] { return delivery.isOver(); }), Loop::Done);
  EXPECT_FALSE(delivery.wasAcknowledged());
}

TEST_F(DeliveryTest, SendsNothingOnceCancelled) {
  Zelv::Adapter::SendCancel cancel;
  cancel.cancel();
  EXPECT_FALSE(Delivery::send(mUrl, "text", cancel));
  mMailbox->serve();
  EXPECT_THAT(mMessages, IsEmpty());
}

}  // namespace
}  // namespace ZelvCtl
