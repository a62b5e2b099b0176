#include "zelv/infrastructure/XmlPrinter.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <cstdio>
#include <random>
#include <string>

namespace Zelv::Infrastructure {
namespace {

constexpr std::size_t cNoLimit = std::size_t{1} << 30;

std::string printed(TiXmlDocument const& aDocument) {
  std::string text = "from before";
  EXPECT_TRUE(XmlPrinter::print(aDocument, false, cNoLimit, text));
  return text;
}

/// What the library itself writes into a file.
std::string savedByTheLibrary(TiXmlDocument const& aDocument) {
  std::FILE* const file = std::tmpfile();
  EXPECT_TRUE(file != nullptr && aDocument.SaveFile(file));
  std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
  std::fclose(file);
  return text;
}

/// Any tree that the library can hold, also such as it would never parse.
class RandomTree {
 public:
  explicit RandomTree(unsigned aSeed) : mRandom(aSeed) {}

  void fill(TiXmlDocument& aDocument) {
    for (unsigned count = mRandom() % 4; count > 0; --count) {
      aDocument.LinkEndChild(node(0));
    }
  }

 private:
  TiXmlNode* node(int aDepth) {
    switch (mRandom() % 8) {
      case 0: {
        auto* const section = new TiXmlText(text());
        section->SetCDATA(true);
        return section;
      }
      case 1:
        // As from the parser, these end at a NUL.
        return new TiXmlDeclaration(text().c_str(), text().c_str(), text().c_str());
      case 2: {
        auto* const comment = new TiXmlComment();
        comment->SetValue(text());
        return comment;
      }
      case 3: {
        auto* const unknown = new TiXmlUnknown();
        unknown->SetValue(text());
        return unknown;
      }
      case 4:
      case 5:
        return new TiXmlText(text());
      default:
        return element(aDepth);
    }
  }

  TiXmlElement* element(int aDepth) {
    auto* const result = new TiXmlElement("e" + text());
    for (unsigned count = mRandom() % 3; count > 0; --count) {
      result->SetAttribute("n" + text(), text());
    }
    for (unsigned count = aDepth < 5 ? mRandom() % 4 : 0; count > 0; --count) {
      result->LinkEndChild(node(aDepth + 1));
    }
    return result;
  }

  std::string text() {
    static std::string const pieces[] = {"",     "x",      "<",        ">",
                                         "&",    "\"",     "'",        "\n",
                                         "\x01", "&#x13;", "%s",       std::string(1, '\0'),
                                         "]]>",  "--",     "\xC3\xA9", " "};
    std::string result;
    for (unsigned count = mRandom() % 4; count > 0; --count) {
      result += pieces[mRandom() % std::size(pieces)];
    }
    return result;
  }

  std::mt19937 mRandom;
};

TEST(XmlPrinter, PrintsEveryTreeAsTheLibraryWritesItIntoAFile) {
  for (unsigned seed = 0; seed < 5000; ++seed) {
    TiXmlDocument document;
    RandomTree(seed).fill(document);
    ASSERT_EQ(printed(document), savedByTheLibrary(document)) << seed;
  }
}

TEST(XmlPrinter, BeginsWithTheMarkWhereTheLibraryDoes) {
  TiXmlDocument document;
  document.Parse("\xEF\xBB\xBF<a/>");
  std::string text;
  EXPECT_TRUE(XmlPrinter::print(document, true, cNoLimit, text));
  EXPECT_EQ(text, "\xEF\xBB\xBF<a />\n");
  EXPECT_EQ(text, savedByTheLibrary(document));
}

TEST(XmlPrinter, PrintsNothingForAnEmptyDocument) {
  EXPECT_EQ(printed(TiXmlDocument()), "");
}

TEST(XmlPrinter, TellsWhenThereIsMoreThanItMayPrint) {
  TiXmlDocument document;
  document.Parse("<a><b/><b/></a>");
  std::string text;
  std::size_t const size = printed(document).size();
  EXPECT_TRUE(XmlPrinter::print(document, false, size, text));
  EXPECT_FALSE(XmlPrinter::print(document, false, size - 1, text));
}

TEST(XmlPrinter, StopsSoonBehindItsLimit) {
  TiXmlDocument document;
  std::string xml = "<a>";
  for (int index = 0; index < 10000; ++index) {
    xml += "<b><c/></b>";
  }
  document.Parse((xml + "</a>").c_str());
  std::string text;
  EXPECT_FALSE(XmlPrinter::print(document, false, 1000, text));
  EXPECT_LT(text.size(), 2000U);
}

}  // namespace
}  // namespace Zelv::Infrastructure
