#include "zelv/infrastructure/PlainXml.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Infrastructure {
namespace {

char const cMessage[] =
    "<Envelope><Header><SenderID>a1</SenderID><From></From></Header><Body><OnData><Data>two "
    "words</Data></OnData></Body></Envelope>\n";

std::string contentOf(std::string const& aText, std::string const& aPath) {
  PlainXml const document(aText);
  EXPECT_TRUE(document.isPlain()) << aText;
  std::string result;
  switch (document.content(aPath, result)) {
    case PlainXml::Found::Yes:
      return "'" + result + "'";
    case PlainXml::Found::No:
      return "none";
    default:
      return "unasked";
  }
}

TEST(PlainXml, FindsTextsByTheirPath) {
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/SenderID/text()"), "'a1'");
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Body/OnData/Data/node()"), "'two words'");
}

TEST(PlainXml, ReadsAnElementWithoutTextAsEmpty) {
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/From/text()"), "''");
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/text()"), "''");
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/From/node()"), "none");
}

TEST(PlainXml, FindsNothingWhereThereIsNothing) {
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/ReplyTo/text()"), "none");
  EXPECT_EQ(contentOf(cMessage, "/Header/SenderID/text()"), "none");
  EXPECT_EQ(contentOf(cMessage, "/Envelope/No/Data/node()"), "none");
}

TEST(PlainXml, NamesTheFirstElement) {
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Body/*[1]/name()"), "'OnData'");
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/*[1]/name()"), "'SenderID'");
  EXPECT_EQ(contentOf(cMessage, "/Envelope/Header/From/*[1]/name()"), "none");
}

TEST(PlainXml, TakesOtherPathsForUnasked) {
  for (char const* path :
       {"", "/", "/text()", "text()", "Envelope/Header/text()", "/Envelope/Header",
        "/Envelope/Body/node()", "/Envelope//Data/text()", "/Envelope/*/text()",
        "/Envelope/Header[SenderID='a1']/From/text()", "/Envelope/Header/@ID",
        "/Envelope/Body/*[2]/name()", "/Envelope/Header/SenderID/name()"}) {
    EXPECT_EQ(contentOf(cMessage, path), "unasked") << path;
  }
}

TEST(PlainXml, TakesBackEntitiesOfFourCharacters) {
  EXPECT_EQ(contentOf("<a>[@ID=&apos;x&apos;] &lt;&quot;&gt;</a>", "/a/text()"),
            "'[@ID='x'] <\">'");
}

TEST(PlainXml, LeavesOtherDocumentsAlone) {
  for (char const* text : {"",
                           "\n",
                           "text",
                           "<a>",
                           "<a",
                           "<a/>",
                           "<a></b>",
                           "<a></a>x",
                           "<a></a>\n\n",
                           " <a></a>",
                           "<a b='c'></a>",
                           "<a >x</a>",
                           "<a>x</a >",
                           "<a> x</a>",
                           "<a>x </a>",
                           "<a>x  y</a>",
                           "<a>x\ny</a>",
                           "<a>x\ty</a>",
                           "<a>x&amp;y</a>",
                           "<a>x&#65;y</a>",
                           "<a>x&y</a>",
                           "<a>></a>",
                           "<a>\xC3\xA4</a>",
                           "<a><b>x</b>y</a>",
                           "<a>x<b></b></a>",
                           "<a><b>1</b><b>2</b></a>",
                           "<a><!--x--></a>",
                           "<a><![CDATA[x]]></a>",
                           "<?xml version='1.0'?><a></a>",
                           "<a></a><b></b>",
                           "<1></1>",
                           "<a:b></a:b>",
                           "<a_b></a_b>"}) {
    EXPECT_FALSE(PlainXml(text).isPlain()) << text;
  }
  EXPECT_FALSE(PlainXml(std::string("<a>x\0y</a>", 10)).isPlain());
}

TEST(PlainXml, TakesDocumentsUpToItsBounds) {
  auto const withElements = [](std::size_t aCount) {
    std::string text = "<a>";
    for (std::size_t number = 1; number < aCount; ++number) {
      std::string const name = "e" + std::to_string(number);
      text += "<" + name + "></" + name + ">";
    }
    return text + "</a>";
  };
  auto const ofSize = [](std::size_t aSize) {
    return "<a>" + std::string(aSize - 7, 'x') + "</a>";
  };
  EXPECT_TRUE(PlainXml(withElements(PlainXml::MaxElements)).isPlain());
  EXPECT_FALSE(PlainXml(withElements(PlainXml::MaxElements + 1)).isPlain());
  auto const named = [](std::size_t aSize) {
    std::string const name(aSize, 'n');
    return "<" + name + "></" + name + ">";
  };
  EXPECT_TRUE(PlainXml(named(PlainXml::MaxName)).isPlain());
  EXPECT_FALSE(PlainXml(named(PlainXml::MaxName + 1)).isPlain());
  EXPECT_TRUE(PlainXml(ofSize(PlainXml::MaxText)).isPlain());
  EXPECT_FALSE(PlainXml(ofSize(PlainXml::MaxText + 1)).isPlain());
}

/// Whatever document is made one of these ways, it makes no difference that it is.
class PlainXmlBesideTheTree : public testing::Test {
 protected:
  void SetUp() override { PCRealDebug::Silence(); }
  void TearDown() override { PCRealDebug::SetLevel(PCRealDebug::Warning); }

  static void expectNoDifference(std::string const& aText) {
    HierarchicalDB tree;
    HierarchicalDB brief(HierarchicalDB::OfOneThread{});
    ASSERT_EQ(brief.loadFromString(aText), tree.loadFromString(aText)) << aText;
    ASSERT_EQ(brief.isLoaded(), tree.isLoaded()) << aText;
    for (char const* path :
         {"/Envelope/Header/SenderID/text()", "/Envelope/Header/From/text()",
          "/Envelope/Body/*[1]/name()", "/Envelope/Body/OnData/Data/node()",
          "/Envelope/Body/OnData/Data/text()", "/Envelope/Header/text()",
          "/Envelope/Header/No/text()", "/Envelope/Header/node()", "/Envelope/Header/From/node()",
          "/Envelope/Header/*[1]/name()", "Envelope/Header/SenderID/text()", "/Envelope/Body/*[1]",
          "/Envelope/Body/OnData/Data", "//Data/text()", "/Envelope/Header/SenderID/text()"}) {
      std::string fromTree;
      std::string fromBrief = "before";
      ASSERT_EQ(brief.getContent(path, fromBrief), tree.getContent(path, fromTree))
          << path << " in " << aText;
      ASSERT_EQ(fromBrief, fromTree) << path << " in " << aText;
    }
  }
};

TEST_F(PlainXmlBesideTheTree, GivesTheSameForMessages) {
  expectNoDifference(cMessage);
  expectNoDifference("");
  expectNoDifference("<Envelope></Envelope>");
}

TEST_F(PlainXmlBesideTheTree, GivesTheSameForMessagesThatAreSpoilt) {
  std::string const pieces[] = {
      "<",        ">",       "/",      " ",  "  ",    "&",    "&apos;", "&amp;",  "&lt;",
      "&quot;",   "&#65;",   "\n",     "\t", "x",     "]]>",  "<b>",    "</b>",   "<b/>",
      "<!--",     "-->",     "'",      "\"", "\xC3",  "\xA4", "=",      "<From>", ";",
      "<?xml ?>", "</Data>", "<Data>", "[",  "&apos", "&gt;", "\x7F",   "a='b'"};
  std::mt19937 random(20261121);
  for (int turn = 0; turn < 20000; ++turn) {
    std::string text = cMessage;
    for (unsigned spoilt = random() % 3; spoilt < 3; ++spoilt) {
      std::size_t const at = random() % (text.size() + 1);
      if (random() % 2 == 0) {
        text.erase(at, random() % 3);
      } else {
        text.insert(at, pieces[random() % std::size(pieces)]);
      }
    }
    ASSERT_NO_FATAL_FAILURE(expectNoDifference(text));
  }
}

TEST_F(PlainXmlBesideTheTree, CanBeWrittenAndPrinted) {
  HierarchicalDB tree;
  HierarchicalDB brief(HierarchicalDB::OfOneThread{});
  std::vector<std::string> printed;
  for (HierarchicalDB* document : {&tree, &brief}) {
    document->loadFromString(cMessage);
    EXPECT_EQ(document->setContent("/Envelope/Header/SenderID/text()", "new", false), 0);
    std::string value;
    EXPECT_EQ(document->getContent("/Envelope/Header/SenderID/text()", value), 0);
    EXPECT_EQ(value, "new");
    EXPECT_EQ(document->serialize(printed.emplace_back(), -1), 0);
  }
  EXPECT_EQ(printed[0], printed[1]);
}

TEST_F(PlainXmlBesideTheTree, ForgetsTheDocumentBefore) {
  HierarchicalDB brief(HierarchicalDB::OfOneThread{});
  brief.loadFromString("<a>1</a>");
  brief.loadFromString("<a x='1'>2</a>");
  std::string value;
  EXPECT_EQ(brief.getContent("/a/text()", value), 0);
  EXPECT_EQ(value, "2");
  EXPECT_EQ(brief.loadFromString("no document"), -1);
  EXPECT_FALSE(brief.isLoaded());
  EXPECT_EQ(brief.getContent("/a/text()", value), -1);
}

}  // namespace
}  // namespace Zelv::Infrastructure
