#include "zelv/infrastructure/XmlGate.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <algorithm>
#include <random>
#include <string>

#include "zelv/infrastructure/XmlText.h"

namespace Zelv::Infrastructure {
namespace {

char const* objection(std::string const& aXml, int aLevel = 0) {
  XmlText const text(aXml);
  return XmlGate::objection(text.data(), text.size(), aLevel);
}

std::string repeat(std::string const& aText, int aTimes) {
  std::string result;
  for (int turn = 0; turn < aTimes; ++turn) {
    result += aText;
  }
  return result;
}

std::string nested(int aDepth) {
  return repeat("<a>", aDepth) + repeat("</a>", aDepth);
}

std::string withAttributes(int aCount) {
  std::string xml = "<a";
  for (int index = 0; index < aCount; ++index) {
    xml += " n" + std::to_string(index) + "='v'";
  }
  return xml + "/>";
}

/// What the library made of a text.
struct Tree {
  int depth = 0;
  int attributes = 0;
  int elements = 0;
  bool good = false;
};

void measure(TiXmlNode const& aNode, int aDepth, Tree& aTree) {
  TiXmlElement const* const element = aNode.ToElement();
  if (element != nullptr) {
    aTree.depth = std::max(aTree.depth, aDepth);
    ++aTree.elements;
    int attributes = 0;
    for (auto const* at = element->FirstAttribute(); at != nullptr; at = at->Next()) {
      ++attributes;
    }
    aTree.attributes = std::max(aTree.attributes, attributes);
  }
  for (auto const* child = aNode.FirstChild(); child != nullptr; child = child->NextSibling()) {
    measure(*child, aDepth + 1, aTree);
  }
}

Tree parse(std::string const& aXml) {
  XmlText const text(aXml);
  TiXmlDocument document;
  document.Parse(text.data(), nullptr, TIXML_ENCODING_UNKNOWN);
  Tree tree;
  measure(document, 0, tree);
  tree.good = !document.Error();
  return tree;
}

TEST(XmlGate, LetsElementsNest128Deep) {
  EXPECT_STREQ(objection(nested(128)), nullptr);
  EXPECT_STREQ(objection(nested(129)), "elements nested too deep");
}

TEST(XmlGate, CountsAnEmptyElementAsALevel) {
  EXPECT_STREQ(objection(repeat("<a>", 127) + "<b/>"), nullptr);
  EXPECT_STREQ(objection(repeat("<a>", 128) + "<b/>"), "elements nested too deep");
}

TEST(XmlGate, CountsTheLevelsThatTheTextWillStandIn) {
  EXPECT_STREQ(objection("<a><b/></a>", 126), nullptr);
  EXPECT_STREQ(objection("<a><b/></a>", 127), "elements nested too deep");
}

TEST(XmlGate, LetsAnElementHave256Attributes) {
  EXPECT_STREQ(objection(withAttributes(256)), nullptr);
  EXPECT_STREQ(objection(withAttributes(257)), "too many attributes in one element");
}

TEST(XmlGate, CountsAttributesOfEachElementAlone) {
  EXPECT_STREQ(objection("<r>" + repeat(withAttributes(200), 20) + "</r>"), nullptr);
}

TEST(XmlGate, LetsATextHaveAMillionElements) {
  EXPECT_STREQ(objection("<r>" + repeat("<a/>", XmlGate::MaxElements - 1) + "</r>"), nullptr);
  EXPECT_STREQ(objection("<r>" + repeat("<a/>", XmlGate::MaxElements) + "</r>"),
               "too many elements");
}

TEST(XmlGate, LetsATextHave16Megabytes) {
  std::string const tags = "<a></a>";
  std::string const filling(XmlGate::MaxText - tags.size(), 'x');
  EXPECT_STREQ(objection("<a>" + filling + "</a>"), nullptr);
  EXPECT_STREQ(objection("<a>" + filling + "x</a>"), "text too long");
}

TEST(XmlGate, SeesNoElementsInCommentsSectionsValuesAndDeclarations) {
  std::string const deep = repeat("<a>", 200);
  for (std::string const& xml :
       {"<r><!--" + deep + "--></r>", "<r><![CDATA[" + deep + "]]></r>", "<r v='" + deep + "'/>",
        "<r v=\"" + deep + "\"/>", "<r v='" + deep + "'></r>",
        "<?xml version='" + deep + "'?><r/>"}) {
    EXPECT_STREQ(objection(xml), nullptr) << xml.substr(0, 20);
  }
}

TEST(XmlGate, SeesElementsBehindWhatOnlyLooksLikeTheirEnd) {
  std::string const deep = repeat("<a>", 100);
  for (std::string const between :
       {"<!-- </a></a></a> -->", "<![CDATA[</a></a></a>]]>", "<b v='</a></a></a>'/>",
        "<b v=\"</a></a></a>\"/>", "<!</a>", "<!DOCTYPE </a>", "<?x </a>", "< </a>", "<!-->-->",
        "<![CDATA[]]]]>", "<b v = '/>'/>", "<b\n/>", "<b v=w/>"}) {
    std::string const xml = deep + between + repeat("<a>", 28);
    EXPECT_STREQ(objection(xml), nullptr) << between;
    EXPECT_STREQ(objection(xml + "<a>"), "elements nested too deep") << between;
  }
}

TEST(XmlGate, FollowsTheLibraryOverEndTagsThatABrokenCharacterSwallows) {
  std::string const utf8 = "<?xml version='1.0' encoding='UTF-8'?>";
  std::string const swallowed = "<a>\xF0</a>";
  ASSERT_EQ(parse(utf8 + repeat(swallowed, 4)).depth, 4) << "none is closed";
  EXPECT_STREQ(objection(utf8 + repeat("<a>x</a>", 200)), nullptr);
  EXPECT_STREQ(objection(utf8 + "<r>" + repeat("<a>\xF0</a><b/>", 127)),
               "elements nested too deep");
  EXPECT_STREQ(objection("<r>" + repeat("<a>\xF0</a><b/>", 127)), nullptr)
      << "without the declaration each byte stands alone";
}

TEST(XmlGate, FollowsTheLibraryOverTagsThatAReferenceSwallows) {
  for (std::string const swallowed :
       {"<a>&#x</a>x41;", "<a>&#</a>#65;", "<a>&#</a>#;", "<a>&#x</a>x;", "<a b='&#x'/>x41;'>",
        "<a b=\"&#\"/>#65;\">"}) {
    ASSERT_EQ(parse(repeat(swallowed, 4)).depth, 4) << swallowed << ": none is closed";
    EXPECT_STREQ(objection(repeat(swallowed, 128)), nullptr) << swallowed;
    EXPECT_STREQ(objection(repeat(swallowed, 129)), "elements nested too deep") << swallowed;
  }
  EXPECT_STREQ(objection("<r>" + repeat("<a>&#65;&#x41;&lt;&;&</a>", 200) + "</r>"), nullptr);
}

TEST(XmlGate, StopsAtTheFirstNul) {
  using namespace std::string_literals;
  EXPECT_STREQ(objection("<a/>\0"s + repeat("<a>", 200)), nullptr);
}

TEST(XmlGate, EndsOnAnythingWithoutACrash) {
  for (std::string const xml : {"",
                                "<",
                                "<a",
                                "<a ",
                                "<a b",
                                "<a b=",
                                "<a b='",
                                "<a b='c",
                                "<a b='c'",
                                "<a/",
                                "<!",
                                "<!-",
                                "<!--",
                                "<!--x",
                                "<![CDATA[",
                                "<![CDATA[x",
                                "<?",
                                "<?xml",
                                "<?xml version",
                                "<?xml version=",
                                "<?xml version='",
                                "</",
                                "</a",
                                "<a>x",
                                "<a>&",
                                "<a>&#x",
                                "\xEF",
                                "\xEF\xBB\xBF",
                                "<\xEF",
                                "<a>\xF0",
                                "<a>\xF0\x9F",
                                "<a b='\xE9'",
                                "<a b=\"'",
                                "<a b=c'"}) {
    EXPECT_STREQ(objection(xml), nullptr) << xml;
    EXPECT_STREQ(objection(repeat("<r>", 60) + xml + repeat("\n", 5000)), nullptr) << xml;
  }
}

/// Texts out of pieces that the library treats in odd ways.
class XmlGateAgainstTheLibrary : public testing::Test {
 protected:
  std::string randomText() {
    static char const* const pieces[] = {"<a>",
                                         "</a>",
                                         "<b>",
                                         "</b>",
                                         "<a/>",
                                         "<b x='1'>",
                                         "<c x=\"1\" y=2/>",
                                         "<a",
                                         "/>",
                                         ">",
                                         "<",
                                         "/",
                                         "'",
                                         "\"",
                                         "=",
                                         " x",
                                         " y='",
                                         " z=\"",
                                         "<!--",
                                         "-->",
                                         "<![CDATA[",
                                         "]]>",
                                         "<!",
                                         "<?xml",
                                         "?>",
                                         " ",
                                         "\n",
                                         "text",
                                         "\xF0",
                                         "\xE9",
                                         "\xC3",
                                         "\xC3\xA9",
                                         "\xEF\xBB\xBF",
                                         "\xEF\xBF\xBE",
                                         "\x7F",
                                         "&#x3C;",
                                         "&amp;",
                                         "&",
                                         "&#60;",
                                         "<_",
                                         "<\xF0",
                                         "<\xEF\xBB\xBF",
                                         "<1>",
                                         "</",
                                         "\t",
                                         "<?XML encoding='",
                                         "UTF-8",
                                         "<?xml?>",
                                         "&#x",
                                         "x41;",
                                         "&#",
                                         "#65;",
                                         "#;",
                                         "x;",
                                         ";"};
    static char const* const heads[] = {"",
                                        "<?xml version='1.0'?>",
                                        "<?xml encoding='UTF-8'?>",
                                        "<?xml encoding='ISO-8859-1'?>",
                                        "\xEF\xBB\xBF",
                                        "<r>"};
    std::string text = heads[pick(std::size(heads))];
    for (std::size_t count = pick(24); count > 0; --count) {
      // Mostly well-formed, so that what is odd is reached at all.
      text += pieces[pick(2) == 0 ? pick(7) : pick(std::size(pieces))];
    }
    return text;
  }

  std::size_t pick(std::size_t aBelow) { return mRandom() % aBelow; }

  std::mt19937 mRandom{20240711};
};

TEST_F(XmlGateAgainstTheLibrary, NeverTakesATreeForFlatterThanItIs) {
  int deepest = 0;
  for (int turn = 0; turn < 100000; ++turn) {
    std::string const xml = randomText();
    Tree const tree = parse(xml);
    deepest = std::max(deepest, tree.depth);
    if (tree.depth > 0) {
      ASSERT_NE(objection(xml, XmlGate::MaxDepth - tree.depth + 1), nullptr) << xml;
    }
  }
  EXPECT_GT(deepest, 5);
}

TEST_F(XmlGateAgainstTheLibrary, TakesAWellFormedTreeForAsDeepAsItIs) {
  int seen = 0;
  for (int turn = 0; turn < 100000; ++turn) {
    std::string const xml = randomText();
    Tree const tree = parse(xml);
    if (tree.good && tree.depth > 0) {
      ++seen;
      ASSERT_STREQ(objection(xml, XmlGate::MaxDepth - tree.depth), nullptr) << xml;
    }
  }
  EXPECT_GT(seen, 2000);
}

}  // namespace
}  // namespace Zelv::Infrastructure
