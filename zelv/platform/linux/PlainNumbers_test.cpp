#include "zelv/platform/PlainNumbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

namespace Zelv::Platform {

namespace {

/// A locale of this thread's own, such as an application may have set.
class PlainNumbersTest : public ::testing::Test {
 protected:
  PlainNumbersTest() : mOwn(newlocale(LC_ALL_MASK, "C.UTF-8", nullptr)), mFormer(uselocale(mOwn)) {}
  ~PlainNumbersTest() override {
    uselocale(mFormer);
    freelocale(mOwn);
  }

  locale_t mOwn;
  locale_t mFormer;
};

TEST_F(PlainNumbersTest, TakeTheThreadOutOfItsLocaleWhileTheyLive) {
  PlainNumbers const plain;
  EXPECT_NE(uselocale(nullptr), mOwn);
  EXPECT_EQ(std::strtod("1.5", nullptr), 1.5);
}

TEST_F(PlainNumbersTest, BringTheLocaleBack) {
  { PlainNumbers const plain; }
  EXPECT_EQ(uselocale(nullptr), mOwn);
}

TEST_F(PlainNumbersTest, MayLiveWithinEachOther) {
  {
    PlainNumbers const outer;
    locale_t const set = uselocale(nullptr);
    { PlainNumbers const inner; }
    EXPECT_EQ(uselocale(nullptr), set);
  }
  EXPECT_EQ(uselocale(nullptr), mOwn);
}

}  // namespace

}  // namespace Zelv::Platform
