#include "apps/zelvctl/SeenIds.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(SeenIds, KnowACopy) {
  SeenIds ids;
  EXPECT_FALSE(ids.check("a"));
  EXPECT_TRUE(ids.check("a"));
  EXPECT_FALSE(ids.check("b"));
  EXPECT_TRUE(ids.check("a"));
}

TEST(SeenIds, TakeNoMessageWithoutAnIdentifierForACopy) {
  SeenIds ids;
  EXPECT_FALSE(ids.check(""));
  EXPECT_FALSE(ids.check(""));
}

TEST(SeenIds, KeepNoIdentifierThatIsTooLong) {
  SeenIds ids;
  std::string const longest(SeenIds::MaxLength, 'x');
  EXPECT_FALSE(ids.check(longest));
  EXPECT_TRUE(ids.check(longest));
  EXPECT_FALSE(ids.check(longest + "x"));
  EXPECT_FALSE(ids.check(longest + "x"));
}

TEST(SeenIds, KeepTheNewest) {
  SeenIds ids;
  for (std::size_t i = 0; i <= SeenIds::MaxEntries; ++i) {
    EXPECT_FALSE(ids.check(std::to_string(i)));
  }
  EXPECT_TRUE(ids.check("1"));
  EXPECT_TRUE(ids.check(std::to_string(SeenIds::MaxEntries)));
  EXPECT_FALSE(ids.check("0")) << "the oldest has made room";
}

}  // namespace
}  // namespace ZelvCtl
