#include "zelv/infrastructure/QueryAnswer.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <random>
#include <string>

#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure {
namespace {

class QueryAnswerTest : public testing::Test {
 protected:
  TiXmlElement* addElement(std::string const& aValue) {
    auto* const element = new TiXmlElement("e");
    element->SetAttribute("x", aValue);
    element->LinkEndChild(new TiXmlText(aValue));
    mParent.LinkEndChild(element);
    return element;
  }

  /// The whole told as one: all items escaped and joined, and all of it unescaped at once.
  std::string expected() const {
    std::string all;
    for (XPathItem const& item : mMatches) {
      all += &item == mMatches.begin() ? "" : "&#x13;";
      if (item.isAttribute()) {
        TiXmlText const text(item.attribute()->ValueStr());
        XMLSerializer::serializeText(&text, all, -1);
      } else {
        XMLSerializer::serializeNode(item.node(), all, -1);
      }
    }
    XMLSerializer::unescapeXMLEntities(all, all);
    return all;
  }

  TiXmlElement mParent{"p"};
  XPathResult mMatches;
};

TEST_F(QueryAnswerTest, IsAsIfAllWereUnescapedAtOnce) {
  static std::string const pieces[] = {"x",
                                       "&",
                                       "&amp;",
                                       "&lt;",
                                       "amp;",
                                       "lt;",
                                       "<",
                                       ">",
                                       "\"",
                                       "'",
                                       "#x13;",
                                       "&#x",
                                       ";",
                                       "\x13",
                                       "\x01",
                                       "quot;",
                                       std::string(1, '\0'),
                                       "\xC3\xA9",
                                       ""};
  std::mt19937 random(20240713);
  for (int turn = 0; turn < 20000; ++turn) {
    mParent.Clear();
    mMatches.clear();
    for (unsigned items = 1 + random() % 4; items > 0; --items) {
      std::string value;
      for (unsigned count = random() % 5; count > 0; --count) {
        value += pieces[random() % std::size(pieces)];
      }
      TiXmlElement* const element = addElement(value);
      switch (random() % 3) {
        case 0:
          mMatches.add(XPathItem(element));
          break;
        case 1:
          mMatches.add(XPathItem(element->FirstChild()));
          break;
        default:
          mMatches.add(XPathItem(element, element->FirstAttribute()));
      }
    }
    std::string answer = "from before";
    ASSERT_TRUE(QueryAnswer::make(mMatches, false, answer));
    ASSERT_EQ(answer, expected());
  }
}

TEST_F(QueryAnswerTest, HasNamesOfElementsAndTextsOfTheRest) {
  TiXmlElement* const element = addElement("v&lt;");
  mMatches.add(XPathItem(element));
  mMatches.add(XPathItem(element->FirstChild()));
  mMatches.add(XPathItem(element, element->FirstAttribute()));
  std::string answer;
  EXPECT_TRUE(QueryAnswer::make(mMatches, true, answer));
  EXPECT_EQ(answer, "e&#x13;v<&#x13;v<");
}

TEST_F(QueryAnswerTest, MayHave8MegabytesWithAllItsItems) {
  std::string const half(QueryAnswer::MaxSize / 2 - 3, 'x');
  mMatches.add(XPathItem(addElement(half)->FirstChild()));
  mMatches.add(XPathItem(addElement(half)->FirstChild()));
  std::string answer;
  EXPECT_TRUE(QueryAnswer::make(mMatches, false, answer));
  EXPECT_EQ(answer.size(), QueryAnswer::MaxSize);
  mMatches.add(XPathItem(addElement("")->FirstChild()));
  EXPECT_FALSE(QueryAnswer::make(mMatches, false, answer));
}

}  // namespace
}  // namespace Zelv::Infrastructure
