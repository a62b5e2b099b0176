#include "zelv/interfaces/eLifetimeCommand.h"

#include <gtest/gtest.h>

namespace Zelv {
namespace {

TEST(ELifetimeCommand, ValuesAreTheNumbersThatComponentsAreSent) {
  EXPECT_EQ(static_cast<int>(LIFETIME_INITIALISE), 0);
  EXPECT_EQ(static_cast<int>(LIFETIME_START), 1);
  EXPECT_EQ(static_cast<int>(LIFETIME_STOP), 2);
  EXPECT_EQ(static_cast<int>(LIFETIME_TERMINATE), 3);
}

}  // namespace
}  // namespace Zelv
