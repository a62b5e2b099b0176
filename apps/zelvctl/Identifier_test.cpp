#include "apps/zelvctl/Identifier.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(Identifier, HasOneUsualForm) {
  std::string const usual = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";
  EXPECT_EQ(Identifier::usualForm(usual), usual);
  EXPECT_EQ(Identifier::usualForm("{6F1D2A3E-0C57-4B8E-9A41-5D7E6B3C2F10}"), usual);
}

TEST(Identifier, IsNotFoundInOtherTexts) {
  EXPECT_FALSE(Identifier::usualForm(""));
  EXPECT_FALSE(Identifier::usualForm("Kitchen"));
}

TEST(Identifier, IsAnotherEachTime) {
  std::string const id = Identifier::create();
  EXPECT_NE(id, Identifier::create());
  EXPECT_EQ(Identifier::usualForm(id), id);
}

}  // namespace
}  // namespace ZelvCtl
