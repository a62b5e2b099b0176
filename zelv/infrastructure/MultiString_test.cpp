#include "zelv/infrastructure/MultiString.h"

#include <gmock/gmock.h>

#include "zelv/infrastructure/XMLSerializer.h"

namespace Zelv::Infrastructure {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(MultiString, HasASeparatorOfSixCharactersThatAreNoControlByte) {
  EXPECT_EQ(MultiString::Separator, "&#x13;");
  EXPECT_EQ(MultiString::Separator.size(), 6U);
}

TEST(MultiString, HasASeparatorThatPassesEscapingAndUnescaping) {
  std::string const separator(MultiString::Separator);
  std::string text;
  XMLSerializer::escapeXMLEntities(separator, text);
  EXPECT_EQ(text, separator);
  XMLSerializer::unescapeXMLEntities(text, text);
  EXPECT_EQ(text, separator);
}

TEST(MultiString, JoinsItemsWithNothingBeforeAndBehind) {
  EXPECT_EQ(MultiString::join({}), "");
  EXPECT_EQ(MultiString::join({"one"}), "one");
  EXPECT_EQ(MultiString::join({"one", "two"}), "one&#x13;two");
  EXPECT_EQ(MultiString::join({"", "two", ""}), "&#x13;two&#x13;");
}

TEST(MultiString, SplitsAnEmptyTextIntoNothing) {
  EXPECT_THAT(MultiString::split(""), IsEmpty());
}

TEST(MultiString, SplitsALoneValueIntoOneItem) {
  EXPECT_THAT(MultiString::split("one"), ElementsAre("one"));
}

TEST(MultiString, SplitsBetweenSeparators) {
  EXPECT_THAT(MultiString::split("one&#x13;two"), ElementsAre("one", "two"));
}

TEST(MultiString, GivesAnEmptyItemForADoubledSeparator) {
  EXPECT_THAT(MultiString::split("one&#x13;&#x13;two"), ElementsAre("one", "", "two"));
}

TEST(MultiString, GivesAnEmptyItemBeforeALeadingSeparator) {
  EXPECT_THAT(MultiString::split("&#x13;two"), ElementsAre("", "two"));
  EXPECT_THAT(MultiString::split("&#x13;"), ElementsAre(""));
}

TEST(MultiString, GivesNoItemBehindATrailingSeparator) {
  EXPECT_THAT(MultiString::split("one&#x13;"), ElementsAre("one"));
}

TEST(MultiString, TakesNothingElseForASeparator) {
  EXPECT_THAT(MultiString::split("a&#x1;b&#X13;c\x13"), ElementsAre("a&#x1;b&#X13;c\x13"));
}

}  // namespace
}  // namespace Zelv::Infrastructure
