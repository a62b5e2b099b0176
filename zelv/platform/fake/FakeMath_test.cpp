#include "zelv/platform/fake/FakeMath.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "zelv/platform/PCMath.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Zelv::Platform::Fake::FakeMath;

class FakeMathTest : public ::testing::Test {
 protected:
  FakeMathTest() { FakeMath::Reset(); }
  ~FakeMathTest() override { FakeMath::Reset(); }
};

TEST_F(FakeMathTest, DrawsTheNumbersOfAScriptAndThenOthers) {
  FakeMath::Script({7, -1, 100000});
  EXPECT_EQ(7, PCMath::Random(0));
  EXPECT_EQ(-1, PCMath::Random(0));
  EXPECT_EQ(100000, PCMath::Random(0));
  long const number = PCMath::Random(0);
  EXPECT_GE(number, 0);
  EXPECT_LE(number, 32767);
}

TEST_F(FakeMathTest, UsesUpNoScriptedNumberForASeed) {
  FakeMath::Script({7});
  PCMath::Random(42);
  EXPECT_EQ(7, PCMath::Random(0));
}

TEST_F(FakeMathTest, RemembersSeedsAndCountsDraws) {
  PCMath::Random(42);
  PCMath::Random(0);
  PCMath::Random(0);
  PCMath::Random(43);
  EXPECT_THAT(FakeMath::Seeds(), ElementsAre(42U, 43U));
  EXPECT_EQ(2, FakeMath::Draws());
  FakeMath::Reset();
  EXPECT_THAT(FakeMath::Seeds(), IsEmpty());
  EXPECT_EQ(0, FakeMath::Draws());
}

}  // namespace
