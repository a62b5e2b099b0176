#include "zelv/interfaces/CommandArgs.h"

#include <gtest/gtest.h>

namespace Zelv {
namespace {

TEST(CommandArgs, StartsWithoutIdentityAndAddress) {
  CommandArgs const args;
  EXPECT_EQ(args.commandId, GUID::nullGUID);
  EXPECT_EQ(args.messageId, GUID::nullGUID);
  EXPECT_EQ(args.senderId, "");
  EXPECT_EQ(args.replyTo, "");
}

}  // namespace
}  // namespace Zelv
