#include "zelv/platform/PCMath.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace {

std::vector<long> draw(int aCount) {
  std::vector<long> numbers;
  numbers.reserve(static_cast<std::size_t>(aCount));
  for (int i = 0; i < aCount; ++i) {
    numbers.push_back(PCMath::Random(0));
  }
  return numbers;
}

TEST(PCMath, DrawsFrom0To32767AndUsesTheRange) {
  PCMath::Random(1);
  long most = 0;
  for (long const number : draw(10000)) {
    EXPECT_GE(number, 0);
    EXPECT_LE(number, 32767);
    most = std::max(most, number);
  }
  EXPECT_GT(most, 32000);
}

TEST(PCMath, DrawsTheSameAfterTheSameSeedAndOthersAfterAnother) {
  PCMath::Random(1600000000);
  std::vector<long> const first = draw(10);
  PCMath::Random(1600000000);
  EXPECT_EQ(first, draw(10));
  PCMath::Random(1600000001);
  EXPECT_NE(first, draw(10));
}

TEST(PCMath, GivesANumberInRangeAlsoWhenItIsSeeded) {
  for (unsigned long const seed : {1UL, 32768UL, 0xffffffffUL, ~0UL}) {
    EXPECT_THAT(PCMath::Random(seed), ::testing::AllOf(::testing::Ge(0), ::testing::Le(32767)));
  }
}

TEST(PCMath, DoesNotSoonRepeatItself) {
  PCMath::Random(7);
  std::vector<long> const numbers = draw(1000);
  EXPECT_GT(std::set<long>(numbers.begin(), numbers.end()).size(), 900U);
}

TEST(PCMath, MayBeAskedOnSeveralThreads) {
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (long const number : draw(1000)) {
        EXPECT_LE(number, 32767);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
}

}  // namespace
