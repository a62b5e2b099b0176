#include "zelv/infrastructure/XmlFragment.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/XmlRoom.h"
#include "zelv/infrastructure/XmlText.h"

namespace Zelv::Infrastructure {
namespace {

/// What an element "<p>" holds after a text was linked into it.
std::string linked(std::string const& aXml) {
  XmlText const text(aXml);
  XmlFragment const fragment(text);
  TiXmlElement parent("p");
  fragment.linkInto(parent);
  EXPECT_EQ(fragment.empty(), parent.NoChildren()) << aXml;
  std::string xml;
  XMLSerializer::serializeElement(&parent, xml, -1);
  return xml;
}

TEST(XmlFragment, LinksAllNodesOfATextWithAnElement) {
  EXPECT_EQ(linked("<a/>"), "<p><a/></p>");
  EXPECT_EQ(linked("<a>1</a><b/><!--c-->"), "<p><a>1</a><b/><!--c--></p>");
}

TEST(XmlFragment, IsEmptyWithoutAnElement) {
  for (char const* xml : {"", " ", "text", "<!--c-->", "<![CDATA[c]]>", "</a>"}) {
    EXPECT_EQ(linked(xml), "<p/>") << xml;
  }
}

TEST(XmlFragment, IsEmptyWhenTheLibraryLeavesARest) {
  for (char const* xml : {"<a/>text", "<a/> text", "<a/> ", "text<a/>"}) {
    EXPECT_EQ(linked(xml), "<p/>") << xml;
  }
}

TEST(XmlFragment, HasWhatStandsBeforeAnError) {
  EXPECT_EQ(linked("<a><b>1</b></c>"), "<p><a><b>1</b></a></p>");
  EXPECT_EQ(linked("<a><b>1</b>"), "<p><a><b>1</b></a></p>");
}

TEST(XmlFragment, LeavesOutEndTagsWithoutTheirElement) {
  EXPECT_EQ(linked("<a></a></a><b/></p>"), "<p><a/><b/></p>");
  EXPECT_EQ(linked("</><a/>"), "<p><a/></p>");
}

TEST(XmlFragment, KeepsDeclarationsThatCanBePrinted) {
  EXPECT_EQ(linked("<?xml version='1.0' encoding='UTF-8'?><a/>"),
            "<p><?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"\" ?><a/></p>");
  EXPECT_EQ(linked("<?xml version='\"'?><a><?xml standalone='&amp;'?></a>"), "<p><a/></p>");
}

TEST(XmlFragment, CostsWhatItsNodesCost) {
  TiXmlDocument document;
  document.Parse("<a x='1'>t</a>");
  std::string const xml = "<a x='1'>t</a>";
  EXPECT_EQ(XmlFragment(XmlText(xml)).cost(), XmlRoom::costOf(document));
}

TEST(XmlFragment, KnowsWhetherItIsGoodUtf8) {
  for (std::string const good : {"<a/>", "<a>\xC3\xA9</a>", "<a>\xE9xy</a>", "<a><!--\xE9--></a>",
                                 "<a><![CDATA[\xE9]]></a>"}) {
    EXPECT_TRUE(XmlFragment(XmlText(good)).isGoodUtf8()) << good;
  }
  for (std::string const bad : {"<a>\xE9</a>", "<a b='\xE9'/>", "<a><b>\xF0\x9F</b></a>",
                                "<\xEF\xBB\xBF"
                                "a/>",
                                "<a \xEF\xBF\xBE"
                                "b=''/>"}) {
    EXPECT_FALSE(XmlFragment(XmlText(bad)).isGoodUtf8()) << bad;
  }
}

}  // namespace
}  // namespace Zelv::Infrastructure
