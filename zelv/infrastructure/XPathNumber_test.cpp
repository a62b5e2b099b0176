#include "zelv/infrastructure/XPathNumber.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace Zelv::Infrastructure {

namespace {

TEST(XPathNumber, ReadsWholeNumbers) {
  EXPECT_EQ(XPathNumber::parse("0"), 0.0);
  EXPECT_EQ(XPathNumber::parse("1000"), 1000.0);
  EXPECT_EQ(XPathNumber::parse("007"), 7.0);
  EXPECT_EQ(XPathNumber::parse("-42"), -42.0);
  EXPECT_EQ(XPathNumber::parse("123456789012345"), 123456789012345.0);
  EXPECT_EQ(XPathNumber::parse("12345678901234567890"), 12345678901234567890.0);
}

TEST(XPathNumber, ReadsFractions) {
  EXPECT_EQ(XPathNumber::parse("1.5"), 1.5);
  EXPECT_EQ(XPathNumber::parse("-0.25"), -0.25);
  EXPECT_EQ(XPathNumber::parse(".5"), 0.5);
  EXPECT_EQ(XPathNumber::parse("-.5"), -0.5);
  EXPECT_EQ(XPathNumber::parse("5."), 5.0);
  EXPECT_EQ(XPathNumber::parse("0.1"), 0.1);
}

TEST(XPathNumber, AllowsBlanksAroundButNotWithin) {
  EXPECT_EQ(XPathNumber::parse(" \t\r\n7 \n"), 7.0);
  EXPECT_TRUE(std::isnan(XPathNumber::parse("7 7")));
  EXPECT_TRUE(std::isnan(XPathNumber::parse("- 7")));
}

TEST(XPathNumber, TakesAllElseForNoNumber) {
  for (char const* const text : {"", " ", "-", ".", "-.", "+1", "1e3", "1E3", "0x10", "inf", "nan",
                                 "NaN", "Infinity", "1,5", "1.2.3", "--1", "1-", "abc", "1a"}) {
    EXPECT_TRUE(std::isnan(XPathNumber::parse(text))) << text;
  }
  EXPECT_TRUE(std::isnan(XPathNumber::parse(std::string("1\0", 2))));
}

TEST(XPathNumber, GoesToInfinityAndToZeroAtTheEnds) {
  EXPECT_EQ(XPathNumber::parse(std::string(400, '9')), INFINITY);
  EXPECT_EQ(XPathNumber::parse("-" + std::string(400, '9') + ".5"), -INFINITY);
  EXPECT_EQ(XPathNumber::parse("0." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(XPathNumber::parse("000." + std::string(400, '0') + "1"), 0.0);
  EXPECT_EQ(XPathNumber::parse(std::string(400, '0') + "5"), 5.0);
}

}  // namespace

}  // namespace Zelv::Infrastructure
