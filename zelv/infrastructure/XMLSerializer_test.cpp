#include "zelv/infrastructure/XMLSerializer.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <memory>
#include <random>
#include <string>

#include "zelv/infrastructure/testing/LiteralText.h"

namespace Zelv::Infrastructure {
namespace {

using Testing::LiteralText;

constexpr std::size_t cMebibyte = std::size_t{1024} * 1024;

std::string repeated(std::string const& aPiece, std::size_t aSize = cMebibyte) {
  std::string text;
  while (text.size() < aSize) {
    text += aPiece;
  }
  return text;
}

std::string escaped(std::string const& aText) {
  std::string result = "old";
  XMLSerializer::escapeXMLEntities(aText, result);
  return result;
}

std::string unescaped(std::string const& aText) {
  std::string result = "old";
  XMLSerializer::unescapeXMLEntities(aText, result);
  return result;
}

std::string unescapedOne(std::string const& aEntity, std::string aText) {
  XMLSerializer::unescapeOneXMLEntity(aEntity, aText);
  return aText;
}

std::string serialized(std::string const& aXml, int aDepth) {
  TiXmlDocument document;
  document.Parse(aXml.c_str());
  EXPECT_FALSE(document.Error()) << aXml;
  std::string result;
  XMLSerializer::serializeDocument(&document, result, aDepth);
  return result;
}

std::string attribute(std::string const& aName, std::string const& aValue) {
  TiXmlAttribute const made(aName, aValue);
  std::string result;
  XMLSerializer::serializeAttribute(&made, result, 0);
  return result;
}

std::string text(std::string const& aValue, bool aCData, int aDepth) {
  TiXmlText made(aValue);
  made.SetCDATA(aCData);
  std::string result;
  XMLSerializer::serializeText(&made, result, aDepth);
  return result;
}

TEST(XMLSerializer, WritesAnEmptyElementWithoutABlank) {
  EXPECT_EQ(serialized("<a />", -1), "<a/>");
  EXPECT_EQ(serialized("<a></a>", 0), "<a/>\n");
}

TEST(XMLSerializer, PutsDoubleQuotesAroundAValueWithAnApostrophe) {
  EXPECT_EQ(attribute("x", "it's"), "x=\"it&apos;s\"");
  EXPECT_EQ(attribute("x", "'\""), "x=\"&apos;&quot;\"");
}

TEST(XMLSerializer, PutsSingleQuotesAroundAnyOtherValue) {
  EXPECT_EQ(attribute("x", "say \"hi\""), "x='say &quot;hi&quot;'");
  EXPECT_EQ(attribute("x", "v"), "x='v'");
  EXPECT_EQ(attribute("x", ""), "x=''");
  EXPECT_EQ(attribute("x", "&apos;"), "x='&amp;apos;'");
}

TEST(XMLSerializer, PutsDoubleQuotesAroundAnApostropheWithinAReferenceThatPasses) {
  EXPECT_EQ(attribute("x", "&#x&apos;"), "x=\"&#x&apos;\"");
}

TEST(XMLSerializer, LooksForTheApostropheInTheValueAlone) {
  EXPECT_EQ(attribute("x'", "v"), "x&apos;='v'");
}

TEST(XMLSerializer, EscapesAttributeNames) {
  EXPECT_EQ(attribute("a<b", "<"), "a&lt;b='&lt;'");
}

TEST(XMLSerializer, KeepsAttributesInOrderWithABlankBeforeEach) {
  EXPECT_EQ(serialized("<a z='1' b=\"2\" m='3'/>", -1), "<a z='1' b='2' m='3'/>");
}

TEST(XMLSerializer, WritesATextBesideAnElementOnOneLine) {
  EXPECT_EQ(serialized("<a>text<b/></a>", -1), "<a>text<b/></a>");
}

TEST(XMLSerializer, IndentsChildrenByOneBlankALevel) {
  EXPECT_EQ(serialized("<a><b>1</b><c/></a>", 0), "<a>\n <b>1</b>\n <c/>\n</a>\n");
  EXPECT_EQ(serialized("<a><b><c><d/></c></b></a>", 0),
            "<a>\n <b>\n  <c>\n   <d/>\n  </c>\n </b>\n</a>\n");
}

TEST(XMLSerializer, StartsAtTheDepthGiven) {
  EXPECT_EQ(serialized("<a><b>1</b></a>", 2), "  <a>\n   <b>1</b>\n  </a>\n");
}

TEST(XMLSerializer, WritesAnElementOfItsOwnWithoutALineEnd) {
  TiXmlDocument document;
  document.Parse("<a><b>1</b><c/></a>");
  std::string result = "kept ";
  XMLSerializer::serializeNode(document.RootElement(), result, 0);
  EXPECT_EQ(result, "kept <a>\n <b>1</b>\n <c/>\n</a>");
}

TEST(XMLSerializer, LetsATextFollowItsSiblingDirectlyInTheIndentedForm) {
  EXPECT_EQ(serialized("<a>one<b/>two</a>", 0), "<a>one\n <b/>two\n</a>\n");
  EXPECT_EQ(serialized("<a><b/>two<c/></a>", 0), "<a>\n <b/>two\n <c/>\n</a>\n");
}

TEST(XMLSerializer, PutsNoLineEndAroundALoneText) {
  EXPECT_EQ(serialized("<a>text</a>", 0), "<a>text</a>\n");
  EXPECT_EQ(serialized("<a>text</a>", 3), "   <a>text</a>\n");
}

TEST(XMLSerializer, TreatsTwoTextsAsMixedContent) {
  TiXmlElement element("a");
  element.LinkEndChild(new TiXmlText("one"));
  element.LinkEndChild(new TiXmlText("two"));
  std::string result;
  XMLSerializer::serializeElement(&element, result, 0);
  EXPECT_EQ(result, "<a>onetwo\n</a>");
}

TEST(XMLSerializer, DoesNotEscapeElementNames) {
  TiXmlElement element("a&b");
  element.LinkEndChild(new TiXmlText("x"));
  std::string result;
  XMLSerializer::serializeElement(&element, result, -1);
  EXPECT_EQ(result, "<a&b>x</a&b>");
}

TEST(XMLSerializer, WritesTextEscaped) {
  EXPECT_EQ(text("a<b & 'c'", false, -1), "a&lt;b &amp; &apos;c&apos;");
  EXPECT_EQ(text("a\nb", false, 5), "a&#x0A;b");
}

TEST(XMLSerializer, WritesCDataOnALineOfItsOwnInBothForms) {
  EXPECT_EQ(text("a<b&c", true, -1), "\n<![CDATA[a<b&c]]>\n");
  EXPECT_EQ(text("a<b&c", true, 0), "\n<![CDATA[a<b&c]]>\n");
  EXPECT_EQ(text("a<b&c", true, 2), "\n  <![CDATA[a<b&c]]>\n");
  EXPECT_EQ(serialized("<a><![CDATA[<]]></a>", -1), "<a>\n<![CDATA[<]]>\n</a>");
  EXPECT_EQ(serialized("<a><![CDATA[<]]></a>", 0), "<a>\n <![CDATA[<]]>\n</a>\n");
  EXPECT_EQ(serialized("<a><b/><![CDATA[<]]></a>", 0), "<a>\n <b/>\n <![CDATA[<]]>\n\n</a>\n");
}

TEST(XMLSerializer, WritesCommentsAsTheyAreWithoutALineEnd) {
  EXPECT_EQ(serialized("<a><!-- <x> & 'y' --></a>", -1), "<a><!-- <x> & 'y' --></a>");
  EXPECT_EQ(serialized("<a><!--x--></a>", 0), "<a>\n <!--x-->\n</a>\n");
  TiXmlComment const comment("x");
  std::string result;
  XMLSerializer::serializeComment(&comment, result, 2);
  EXPECT_EQ(result, "  <!--x-->");
}

TEST(XMLSerializer, WritesAllThreeValuesOfADeclaration) {
  EXPECT_EQ(serialized("<?xml version=\"1.0\" encoding=\"UTF-8\" ?><a/>", -1),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"\" ?><a/>");
  EXPECT_EQ(serialized("<?xml version='1.0' standalone='yes'?><a/>", 0),
            "<?xml version=\"1.0\" encoding=\"\" standalone=\"yes\" ?>\n<a/>\n");
  TiXmlDeclaration const declaration("1&0", "", "");
  std::string result;
  XMLSerializer::serializeDeclaration(&declaration, result, 4);
  EXPECT_EQ(result, "<?xml version=\"1&0\" encoding=\"\" standalone=\"\" ?>");
}

TEST(XMLSerializer, LeavesNodesOfTheUnknownKindOut) {
  EXPECT_EQ(serialized("<!DOCTYPE a><a><!ELEMENT b></a>", -1), "<a></a>");
}

TEST(XMLSerializer, WritesLineEndsAroundANodeOfTheUnknownKind) {
  EXPECT_EQ(serialized("<!DOCTYPE a><a><!ELEMENT b></a>", 0), "\n<a>\n\n</a>\n");
}

TEST(XMLSerializer, WritesADocumentThatIsGivenAsANode) {
  TiXmlDocument document;
  document.Parse("<a/>");
  std::string result;
  XMLSerializer::serializeNode(&document, result, 0);
  EXPECT_EQ(result, "<a/>\n");
}

TEST(XMLSerializer, WritesNothingForAnEmptyDocument) {
  TiXmlDocument const document;
  std::string result;
  XMLSerializer::serializeDocument(&document, result, 0);
  EXPECT_EQ(result, "");
}

TEST(XMLSerializer, AppendsAndNeverClears) {
  TiXmlDocument document;
  document.Parse("<a/>");
  std::string result = "kept";
  XMLSerializer::serializeDocument(&document, result, -1);
  EXPECT_EQ(result, "kept<a/>");
}

TEST(XMLSerializer, WritesTheNestingThatDocumentsMayHave) {
  constexpr int cNesting = 128;
  std::string xml;
  for (int i = 0; i < cNesting; ++i) {
    xml += "<a>";
  }
  xml += "x";
  for (int i = 0; i < cNesting; ++i) {
    xml += "</a>";
  }
  EXPECT_EQ(serialized(xml, -1), xml);
}

TEST(XMLSerializer, IsReadBackAsTheSameTree) {
  TiXmlBase::SetCondenseWhiteSpace(false);
  TiXmlElement element("a");
  element.SetAttribute("both", "it's \"this\" & <that>\t\n");
  element.LinkEndChild(new TiXmlText(" 'x' <&> \x13 \xc3\xa9 "));
  std::string written;
  XMLSerializer::serializeElement(&element, written, -1);
  TiXmlDocument document;
  document.Parse(written.c_str());
  TiXmlBase::SetCondenseWhiteSpace(true);
  ASSERT_FALSE(document.Error()) << written;
  EXPECT_STREQ(document.RootElement()->Attribute("both"), "it's \"this\" & <that>\t\n");
  EXPECT_STREQ(document.RootElement()->GetText(), " 'x' <&> \x13 \xc3\xa9 ");
}

TEST(XMLSerializer, EscapesEachByteByTheTable) {
  EXPECT_EQ(escaped("a&b<c>d\"e'f"), "a&amp;b&lt;c&gt;d&quot;e&apos;f");
  EXPECT_EQ(escaped("\n\t\r"), "&#x0A;&#x09;&#x0D;");
  EXPECT_EQ(escaped(std::string("\0\x1f ", 3)), "&#x00;&#x1F; ");
  EXPECT_EQ(escaped("\x7f\x80\xc3\xa9\xff"), "\x7f\x80\xc3\xa9\xff");
  EXPECT_EQ(escaped(""), "");
}

TEST(XMLSerializer, LetsReferencesPass) {
  EXPECT_EQ(escaped("one&#x13;two"), "one&#x13;two");
  EXPECT_EQ(escaped("&#x13;&#x0A;<"), "&#x13;&#x0A;&lt;");
  EXPECT_EQ(escaped("&#13;"), "&amp;#13;");
  EXPECT_EQ(escaped("&#X13;"), "&amp;#X13;");
}

TEST(XMLSerializer, LetsAllPassBetweenTheBeginOfAReferenceAndItsEnd) {
  EXPECT_EQ(escaped("&#x<&>\n'\";'"), "&#x<&>\n'\";&apos;");
}

TEST(XMLSerializer, EscapesAnEntityAgain) {
  EXPECT_EQ(escaped("&amp;&lt;"), "&amp;amp;&amp;lt;");
}

TEST(XMLSerializer, WritesTheControlByteOfTheSeparatorAsTheSeparator) {
  EXPECT_EQ(escaped("one\x13two"), "one&#x13;two");
}

TEST(XMLSerializer, LeavesAReferenceWithoutAnEndAsItIs) {
  EXPECT_EQ(escaped("&#x13"), "&#x13");
  EXPECT_EQ(escaped("&#x"), "&#x");
  EXPECT_EQ(escaped("a&#x1<b"), "a&#x1<b");
}

TEST(XMLSerializer, EscapesTheLastByteOfAReferenceWithoutAnEnd) {
  EXPECT_EQ(escaped("&#x1<"), "&#x1&lt;");
  EXPECT_EQ(escaped("&#x&"), "&#x&amp;");
  EXPECT_EQ(escaped("&#x\n"), "&#x&#x0A;");
}

TEST(XMLSerializer, EscapesAnAmpersandThatStandsLastOrLastButOne) {
  EXPECT_EQ(escaped("&"), "&amp;");
  EXPECT_EQ(escaped("a&"), "a&amp;");
  EXPECT_EQ(escaped("a&#"), "a&amp;#");
  EXPECT_EQ(escaped("&&"), "&amp;&amp;");
}

TEST(XMLSerializer, UnescapesEachOfTheFiveEntities) {
  EXPECT_EQ(unescaped("&quot;&amp;&apos;&lt;&gt;"), "\"&'<>");
  EXPECT_EQ(unescaped("a &lt;b&gt; c"), "a <b> c");
  EXPECT_EQ(unescaped(""), "");
}

TEST(XMLSerializer, UnescapesWhatUnescapingBringsAboutUnlessItsKindHadItsTurn) {
  EXPECT_EQ(unescaped("&amp;amp;"), "&");
  EXPECT_EQ(unescaped("&amp;amp;amp;amp;"), "&");
  EXPECT_EQ(unescaped("&amp;lt;"), "<");
  EXPECT_EQ(unescaped("&amp;apos;"), "'");
  EXPECT_EQ(unescaped("&amp;gt;"), ">");
  EXPECT_EQ(unescaped("&amp;quot;"), "&quot;");
  EXPECT_EQ(unescaped("&&amp;amp;lt;"), "&<");
}

TEST(XMLSerializer, LeavesNumericReferencesAndWhatIsNoEntity) {
  for (char const* text : {"&#x13;", "&#x0A;", "one&#x13;two", "&", "&;", "&amp", "amp;", "&AMP;",
                           "& amp;", "&nbsp;", "&am&#x13;p;", "plain"}) {
    EXPECT_EQ(unescaped(text), text);
  }
}

TEST(XMLSerializer, UnescapesInPlace) {
  std::string text = "a&amp;lt;b&quot;";
  XMLSerializer::unescapeXMLEntities(text, text);
  EXPECT_EQ(text, "a<b\"");
  text = "plain";
  XMLSerializer::unescapeXMLEntities(text, text);
  EXPECT_EQ(text, "plain");
}

TEST(XMLSerializer, UnescapesOneEntityThroughout) {
  EXPECT_EQ(unescapedOne("&lt;", "&lt;a&lt;&gt;"), "<a<&gt;");
  EXPECT_EQ(unescapedOne("&amp;", "&amp;amp;lt;"), "&lt;");
  EXPECT_EQ(unescapedOne("&quot;", "none"), "none");
}

TEST(XMLSerializer, TakesOutATextThatIsNoEntity) {
  EXPECT_EQ(unescapedOne("ab", "xaabbabx"), "xx");
  EXPECT_EQ(unescapedOne("&nbsp;", "a&nbsp;b"), "ab");
}

TEST(XMLSerializer, ChangesNothingForAnEmptyEntity) {
  EXPECT_EQ(unescapedOne("", "a&amp;b"), "a&amp;b");
}

TEST(XMLSerializer, UnescapesWhatItEscaped) {
  std::string const plain = "it's \"this\" < that > those; \xc3\xa9";
  EXPECT_EQ(unescaped(escaped(plain)), plain);
}

TEST(XMLSerializer, UnescapesRandomTextsAsTheLiteralVersion) {
  std::mt19937 random(6);
  std::string const letters = "&&&amplquosgt;;;#x13";
  char const* const pieces[] = {"&amp;",  "amp;",  "&lt;", "lt;", "&quot;", "quot;",
                                "&apos;", "apos;", "&gt;", "gt;", "&#x13;", "&am"};
  int changed = 0;
  for (int i = 0; i < 150000; ++i) {
    std::string text;
    for (std::size_t length = random() % 40; text.size() < length;) {
      text += random() % 3 == 0 ? std::string(1, letters[random() % letters.size()])
                                : pieces[random() % std::size(pieces)];
    }
    std::string const expected = LiteralText::unescape(text);
    ASSERT_EQ(unescaped(text), expected) << text;
    changed += expected != text ? 1 : 0;
    XMLSerializer::unescapeXMLEntities(text, text);
    ASSERT_EQ(text, expected);
  }
  EXPECT_GT(changed, 100000);
}

TEST(XMLSerializer, TakesRandomTextsOutAsTheLiteralVersion) {
  std::mt19937 random(7);
  for (int i = 0; i < 50000; ++i) {
    std::string entity;
    for (std::size_t length = 1 + random() % 4; entity.size() < length;) {
      entity += "ab;"[random() % 3];
    }
    std::string text;
    for (std::size_t length = random() % 24; text.size() < length;) {
      text += "ab;"[random() % 3];
    }
    ASSERT_EQ(unescapedOne(entity, text), LiteralText::unescapeOne(entity, text))
        << entity << " in " << text;
  }
}

TEST(XMLSerializer, EscapesRandomTextsAsTheLiteralVersion) {
  std::mt19937 random(8);
  std::string const alphabet("&&#x1;;<>\"'a\0\n\x13\x80", 16);
  for (int i = 0; i < 150000; ++i) {
    std::string text;
    for (std::size_t length = random() % 24; text.size() < length;) {
      text += random() % 6 == 0 ? "&#x" : std::string(1, alphabet[random() % alphabet.size()]);
    }
    ASSERT_EQ(escaped(text), LiteralText::escape(text)) << ::testing::PrintToString(text);
  }
}

// Quadratic work would take minutes on these.
TEST(XMLSerializer, TakesTextsOfAMebibyte) {
  EXPECT_EQ(unescaped(repeated("&amp;lt;")), std::string(cMebibyte / 8, '<'));
  EXPECT_EQ(unescaped("&" + repeated("amp;")), "&");
  EXPECT_EQ(unescaped(repeated("&quot;")).size(), (cMebibyte + 5) / 6);
  for (std::string const& text :
       {repeated("&"), repeated(";"), repeated("&#x13;"), repeated("&am"), repeated("&#x")}) {
    EXPECT_EQ(unescaped(text), text);
  }
  EXPECT_EQ(unescapedOne("ab", repeated("a", cMebibyte / 2) + repeated("b", cMebibyte / 2)), "");
  EXPECT_EQ(escaped(repeated("&")).size(), 5 * cMebibyte);
  EXPECT_EQ(escaped(repeated("&#x13;")), repeated("&#x13;"));
  EXPECT_EQ(escaped(repeated("&#x")), repeated("&#x"));
  EXPECT_EQ(escaped(std::string(cMebibyte, '\0')).size(), 6 * cMebibyte);
}

}  // namespace
}  // namespace Zelv::Infrastructure
