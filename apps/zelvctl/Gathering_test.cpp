#include "apps/zelvctl/Gathering.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

using Seconds = std::chrono::seconds;

Gathering::Clock::time_point const start{};

TEST(Gathering, WaitsTheWholeTimeForTheFirst) {
  Gathering const gathering(start, Seconds(3));
  EXPECT_EQ(gathering.left(start), Seconds(3));
  EXPECT_EQ(gathering.left(start + Seconds(2)), Seconds(1));
  EXPECT_EQ(gathering.left(start + Seconds(4)), Seconds(0));
}

TEST(Gathering, EndsAMomentAfterTheLastThatWasNew) {
  Gathering gathering(start, Seconds(3));
  gathering.heard(start + Seconds(1));
  EXPECT_EQ(gathering.left(start + Seconds(1)), Gathering::Moment);
  gathering.heard(start + Seconds(2));
  EXPECT_EQ(gathering.left(start + Seconds(2)), Gathering::Moment);
  EXPECT_EQ(gathering.left(start + Seconds(2) + Gathering::Moment), Seconds(0));
}

TEST(Gathering, EndsInTimeHoweverMuchComes) {
  Gathering gathering(start, Seconds(3));
  gathering.heard(start + std::chrono::milliseconds(2900));
  EXPECT_EQ(gathering.left(start + std::chrono::milliseconds(2900)),
            std::chrono::milliseconds(100));
}

}  // namespace
}  // namespace ZelvCtl
