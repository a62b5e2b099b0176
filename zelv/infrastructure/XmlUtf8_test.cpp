#include "zelv/infrastructure/XmlUtf8.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

namespace Zelv::Infrastructure {
namespace {

/// Whether the library, reading UTF-8, finds a text in the file that it printed it into.
bool isReadBack(std::string const& aText) {
  std::string printed;
  TiXmlBase::EncodeString(aText, &printed);
  // NULs enough behind the end, whatever the last character announces.
  std::string const xml =
      "<?xml version=\"1.0\"?><a><b>" + printed + "</b></a>" + std::string(4, '\0');
  TiXmlDocument document;
  document.Parse(xml.data());
  return !document.Error();
}

TEST(XmlUtf8, KnowsWhatTheLibraryReadsBack) {
  static char const* const pieces[] = {"x", "\xC3", "\xE9", "\xF0", "\xA9",
                                       "<", "&",    "\x01", "\xF5"};
  constexpr std::size_t count = std::size(pieces);
  for (std::size_t number = 0; number < count * count * count * count; ++number) {
    std::string text = "t";
    for (std::size_t rest = number, turn = 0; turn < 4; ++turn, rest /= count) {
      text += pieces[rest % count];
    }
    ASSERT_EQ(XmlUtf8::isGood(text), isReadBack(text)) << text;
  }
}

TEST(XmlUtf8, KnowsTheDocumentsThatAreReadAsUtf8) {
  struct {
    char const* xml;
    bool utf8;
  } const rows[] = {
      {"<a/>", false},
      {"<?xml version='1.0'?><a/>", true},
      {"<?xml version='1.0' encoding=''?><a/>", true},
      {"<?xml version='1.0' encoding='UTF-8'?><a/>", true},
      {"<?xml version='1.0' encoding='utf8'?><a/>", true},
      {"<?xml version='1.0' encoding='UTF-8-MAC'?><a/>", true},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a/>", false},
      {"<?xml version='1.0' encoding='UTF-16'?><a/>", false},
      {"<!-- c --><?xml version='1.0'?><a/>", true},
      {"<?xml encoding='latin1'?><?xml encoding='utf-8'?><a/>", false},
  };
  for (auto const& row : rows) {
    TiXmlDocument document;
    document.Parse(row.xml);
    EXPECT_EQ(XmlUtf8::isUsedBy(document, false), row.utf8) << row.xml;
    EXPECT_TRUE(XmlUtf8::isUsedBy(document, true)) << row.xml;
  }
}

TEST(XmlUtf8, KnowsTheMarksThatTheLibrarySkips) {
  for (char const* name : {"\xEF\xBB\xBF", "\xEF\xBB\xBFx", "\xEF\xBF\xBEx", "\xEF\xBF\xBFx"}) {
    EXPECT_TRUE(XmlUtf8::beginsWithMark(name));
  }
  for (char const* name : {"", "x", "\xEF", "\xEF\xBB", "\xEF\xBB\xBE", "x\xEF\xBB\xBF"}) {
    EXPECT_FALSE(XmlUtf8::beginsWithMark(name));
  }
}

}  // namespace
}  // namespace Zelv::Infrastructure
