#include "zelv/infrastructure/XmlText.h"

#include <gtest/gtest.h>

#include <string>

#include "zelv/infrastructure/Utf8.h"

namespace Zelv::Infrastructure {
namespace {

TEST(XmlText, EndsAtTheFirstNul) {
  using namespace std::string_literals;
  std::string const source = "<a/>\0<b/>"s;
  XmlText const text(source);
  EXPECT_STREQ(text.data(), "<a/>");
  EXPECT_EQ(text.size(), 4U);
}

TEST(XmlText, UsesATextInPlaceThatEndsWithAWholeCharacter) {
  for (std::string const source :
       {"", "x", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x80"}) {
    EXPECT_EQ(XmlText(source).data(), source.data());
  }
}

TEST(XmlText, PutsNulsBehindATextThatEndsWithinACharacter) {
  using namespace std::string_literals;
  for (std::string const& source :
       {"x\xC3"s, "x\xE2"s, "x\xE2\x82"s, "x\xF0"s, "x\xF0\x9F"s, "x\xF0\x9F\x98"s, "\xF0\0abc"s}) {
    XmlText const text(source);
    EXPECT_EQ(std::string(text.data()), source.substr(0, source.find('\0')));
    for (std::size_t behind = 0; behind < 4; ++behind) {
      EXPECT_EQ(text.data()[text.size() + behind], '\0');
    }
  }
}

TEST(XmlText, TellsWhetherATextEndsWithinACharacter) {
  for (char const* whole : {"", "x", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x80", "\xFF",
                            "\xC1", "\xF5", "\xE9xy", "\xF0\xF0\xF0\xF0"}) {
    EXPECT_FALSE(XmlText::endsWithinCharacter(whole)) << whole;
  }
  for (char const* cut : {"\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xE9x", "\xC3\xA9\xC3", "xyz\xF4",
                          "\xF0\xF0\xF0\xF0\xF0"}) {
    EXPECT_TRUE(XmlText::endsWithinCharacter(cut)) << cut;
  }
}

TEST(Utf8, KnowsTheLengthsThatFirstBytesAnnounce) {
  struct {
    int first;
    int last;
    int length;
  } const rows[] = {
      {0x00, 0xC1, 1}, {0xC2, 0xDF, 2}, {0xE0, 0xEF, 3}, {0xF0, 0xF4, 4}, {0xF5, 0xFF, 1}};
  for (auto const& row : rows) {
    for (int byte = row.first; byte <= row.last; ++byte) {
      EXPECT_EQ(utf8Length(static_cast<char>(byte)), row.length) << byte;
    }
  }
}

}  // namespace
}  // namespace Zelv::Infrastructure
