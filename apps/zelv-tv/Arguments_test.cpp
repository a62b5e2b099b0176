#include "apps/zelv-tv/Arguments.h"

#include <gtest/gtest.h>

namespace ZelvTv {
namespace {

TEST(Arguments, TakesWordsDividedByAnyNumberOfBlanks) {
  Arguments arguments("  timer   20  tea");
  EXPECT_EQ(arguments.Word(), "timer");
  EXPECT_EQ(arguments.Milliseconds(), 20U);
  EXPECT_EQ(arguments.Word(), "tea");
  EXPECT_NO_THROW(arguments.End());
  EXPECT_THROW(arguments.Word(), Arguments::Misuse);
}

TEST(Arguments, KeepsBlanksWithinBracketsInAPath) {
  Arguments arguments("/a/b[c='1' and @d='2']/e value");
  EXPECT_EQ(arguments.Path(), "/a/b[c='1' and @d='2']/e");
  EXPECT_EQ(arguments.Value(), "value");
}

TEST(Arguments, KeepsBlanksAndBracketsWithinQuotesInAPath) {
  Arguments arguments("/a[@b=\"x ] y\"]/c d");
  EXPECT_EQ(arguments.Path(), "/a[@b=\"x ] y\"]/c");
}

TEST(Arguments, TakesAnUnclosedBracketToTheEndOfTheLine) {
  Arguments arguments("/a[b c");
  EXPECT_EQ(arguments.Path(), "/a[b c");
}

TEST(Arguments, TakesAClosingBracketAloneAsAnyCharacter) {
  Arguments arguments("/a]] b");
  EXPECT_EQ(arguments.Path(), "/a]]");
}

TEST(Arguments, KeepsEveryBlankOfAValueButTheFirst) {
  Arguments arguments("p  a b ");
  arguments.Word();
  EXPECT_EQ(arguments.Value(), " a b ");
}

TEST(Arguments, TellsAnEmptyValueFromAMissingOne) {
  Arguments empty("p ");
  empty.Word();
  EXPECT_EQ(empty.Value(), "");
  Arguments missing("p");
  missing.Word();
  EXPECT_THROW(missing.Value(), Arguments::Misuse);
}

TEST(Arguments, TakesADeviceWithBlanksInQuotesOrEscaped) {
  Arguments arguments(R"(plain 'Tom''s' "Living room" Living\x20room '' <a> )");
  EXPECT_EQ(arguments.Device(), "plain");
  EXPECT_EQ(arguments.Device(), "Tom");
  EXPECT_EQ(arguments.Device(), "s");
  EXPECT_EQ(arguments.Device(), "Living room");
  EXPECT_EQ(arguments.Device(), "Living room");
  EXPECT_EQ(arguments.Device(), "");
  EXPECT_EQ(arguments.Value(), "<a> ");
}

TEST(Arguments, RefusesADeviceThatIsMissingOrOpen) {
  EXPECT_THROW(Arguments("").Device(), Arguments::Misuse);
  EXPECT_THROW(Arguments("'Living room").Device(), Arguments::Misuse);
  EXPECT_THROW(Arguments("\\q").Device(), Arguments::Misuse);
}

TEST(Arguments, RefusesAValueWithAStrayBackslash) {
  Arguments arguments(" a\\b");
  EXPECT_THROW(arguments.Value(), Arguments::Misuse);
}

TEST(Arguments, RefusesNumbersThatAreNone) {
  for (char const* text : {"", "x", "-1", "1.5", "12x", "4294967296"}) {
    EXPECT_THROW(Arguments(text).Milliseconds(), Arguments::Misuse) << text;
  }
  EXPECT_EQ(Arguments("4294967295").Milliseconds(), 4294967295U);
}

TEST(Arguments, RefusesWhatIsTooMuch) {
  EXPECT_THROW(Arguments(" x").End(), Arguments::Misuse);
  EXPECT_NO_THROW(Arguments("  ").End());
}

}  // namespace
}  // namespace ZelvTv
