#include "zelv/platform/TypeName.h"

#include <gtest/gtest.h>

#include <typeinfo>

namespace ZelvTypeNames {

struct Known {};

TEST(TypeName, IsTheClassWithItsNamespaces) {
  EXPECT_EQ(Zelv::Platform::TypeName::Of(typeid(Known).name()), "ZelvTypeNames::Known");
}

TEST(TypeName, LeavesOtherTextsAsTheyAre) {
  EXPECT_EQ(Zelv::Platform::TypeName::Of("one of 100 subscribers"), "one of 100 subscribers");
  EXPECT_EQ(Zelv::Platform::TypeName::Of(""), "");
}

}  // namespace ZelvTypeNames
