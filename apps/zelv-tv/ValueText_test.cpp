#include "apps/zelv-tv/ValueText.h"

#include <gtest/gtest.h>

#include <random>

namespace ZelvTv {
namespace {

using namespace std::string_literals;

TEST(ValueText, LeavesPlainTextAlone) {
  EXPECT_EQ(ValueText::ToLine("<a b='c'> ä </a>"), "<a b='c'> ä </a>");
  EXPECT_EQ(ValueText::FromLine("<a b='c'> ä </a>"), "<a b='c'> ä </a>");
}

TEST(ValueText, WritesALineFeedAsBackslashAndN) {
  EXPECT_EQ(ValueText::ToLine("a\nb"), "a\\nb");
}

TEST(ValueText, DoublesABackslashSoThatItIsNoLineFeed) {
  EXPECT_EQ(ValueText::ToLine("a\\nb"), "a\\\\nb");
  EXPECT_EQ(ValueText::FromLine("a\\\\nb"), "a\\nb");
}

TEST(ValueText, WritesOtherControlBytesByNumber) {
  EXPECT_EQ(ValueText::ToLine("\x1b[K\0\x7f"s), "\\x1b[K\\x00\\x7f");
}

TEST(ValueText, AFieldHoldsNoBlankAndIsNeverEmpty) {
  EXPECT_EQ(ValueText::ToField("a b\nc"), "a\\x20b\\nc");
  EXPECT_EQ(ValueText::FromLine("a\\x20b"), "a b");
  EXPECT_EQ(ValueText::ToField(""), "-");
}

TEST(ValueText, RefusesABackslashThatBeginsNoForm) {
  for (char const* text : {"\\", "a\\", "\\t", "\\x", "\\x1", "\\xg0", "\\x-1", "\\\\\\"}) {
    EXPECT_EQ(ValueText::FromLine(text), std::nullopt) << text;
  }
}

TEST(ValueText, BringsAnyBytesBack) {
  std::mt19937 random(7);
  for (int round = 0; round < 1000; ++round) {
    std::string value(random() % 20, '\0');
    for (char& byte : value) {
      byte = random() % 3 == 0 ? '\\' : static_cast<char>(random());
    }
    std::string const line = ValueText::ToLine(value);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_EQ(ValueText::FromLine(line), value);
  }
}

}  // namespace
}  // namespace ZelvTv
