#include "apps/zelvctl/Bell.h"

#include <gtest/gtest.h>
#include <poll.h>

namespace ZelvCtl {
namespace {

bool isReadable(Bell const& aBell) {
  pollfd descriptor{aBell.descriptor(), POLLIN, 0};
  return ::poll(&descriptor, 1, 0) == 1;
}

TEST(Bell, IsReadableFromTheFirstRingToTheAnswer) {
  Bell bell;
  EXPECT_FALSE(isReadable(bell));
  EXPECT_FALSE(bell.answer());
  bell.ring();
  bell.ring();
  EXPECT_TRUE(isReadable(bell));
  EXPECT_TRUE(bell.answer());
  EXPECT_FALSE(isReadable(bell));
}

}  // namespace
}  // namespace ZelvCtl
