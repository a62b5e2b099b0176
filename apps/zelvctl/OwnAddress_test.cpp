#include "apps/zelvctl/OwnAddress.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZelvCtl {
namespace {

TEST(OwnAddress, IsTheOneThatThePeerSees) {
  EXPECT_EQ(OwnAddress::towards("127.0.0.1"), "127.0.0.1");
}

TEST(OwnAddress, IsMissingWhereNoWayLeads) {
  EXPECT_THROW(OwnAddress::towards("nowhere"), std::runtime_error);
}

}  // namespace
}  // namespace ZelvCtl
