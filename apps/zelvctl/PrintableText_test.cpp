#include "apps/zelvctl/PrintableText.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(PrintableText, StaysAsItIsWithoutControlCharacters) {
  for (char const* text : {"plain text",
                           "Gr\xc3\xbc\xc3\x9f"
                           "e \xe2\x82\xac",
                           "\xc2\xa0", "\xff"}) {
    EXPECT_EQ(PrintableText::masked(text), text);
    EXPECT_EQ(PrintableText::line(text), text);
    EXPECT_EQ(PrintableText::block(text), text);
  }
}

TEST(PrintableText, LosesNothingOnOneLine) {
  EXPECT_EQ(PrintableText::line("a\nb\\c\td\x1b[e\x7f \xc2\x9b"
                                "f\xc2"),
            R"(a\nb\\c\x09d\x1b[e\x7f \xc2\x9bf)"
            "\xc2");
}

TEST(PrintableText, IsOneWordInAField) {
  EXPECT_EQ(PrintableText::field(""), "-");
  EXPECT_EQ(PrintableText::field("a b\n"), R"(a\x20b\n)");
}

TEST(PrintableText, KeepsItsLinesAndTabsInABlock) {
  EXPECT_EQ(PrintableText::block("a\n\tb\x1b[c\r\\\xc2\x9b"), "a\n\tb?[c?\\?");
}

TEST(PrintableText, IsMaskedWhereNothingNeedsToBeReadBack) {
  EXPECT_EQ(PrintableText::masked("a\nb\x1b[c\xc2\x85\\"), "a?b?[c?\\");
}

}  // namespace
}  // namespace ZelvCtl
