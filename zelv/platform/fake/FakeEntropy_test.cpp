#include "zelv/platform/fake/FakeEntropy.h"

#include <gtest/gtest.h>

#include <string>

#include "zelv/platform/Entropy.h"

namespace {

using Zelv::Platform::Entropy;
using Zelv::Platform::Fake::FakeEntropy;

class FakeEntropyTest : public ::testing::Test {
 protected:
  ~FakeEntropyTest() override { FakeEntropy::Reset(); }

  static std::string fill(std::size_t aSize) {
    std::string bytes(aSize, '\0');
    EXPECT_TRUE(Entropy::Fill(bytes.data(), bytes.size()));
    return bytes;
  }

  static bool fails() {
    char byte;
    return !Entropy::Fill(&byte, 1);
  }
};

TEST_F(FakeEntropyTest, GivesTheBytesOfAScriptOnceAndThenOthers) {
  FakeEntropy::Script("abcdef");
  EXPECT_EQ("abcd", fill(4));
  std::string const rest = fill(16);
  EXPECT_EQ("ef", rest.substr(0, 2));
  EXPECT_NE(rest, fill(16));
}

TEST_F(FakeEntropyTest, FailsAsOftenAsTold) {
  FakeEntropy::FailNext(2);
  EXPECT_TRUE(fails());
  EXPECT_TRUE(fails());
  EXPECT_FALSE(fails());
}

TEST_F(FakeEntropyTest, FailsUntilReset) {
  FakeEntropy::FailAll();
  EXPECT_TRUE(fails());
  EXPECT_TRUE(fails());
  FakeEntropy::Reset();
  EXPECT_FALSE(fails());
}

TEST_F(FakeEntropyTest, DoesNotRepeatItselfAfterReset) {
  std::string const before = fill(16);
  FakeEntropy::Reset();
  EXPECT_NE(before, fill(16));
}

}  // namespace
