#include "zelv/infrastructure/XPathResult.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <algorithm>
#include <vector>

namespace Zelv::Infrastructure {

namespace {

TEST(XPathResult, KeepsOrderWhenItGrows) {
  std::vector<TiXmlElement> elements(100, TiXmlElement("a"));
  XPathResult result;
  for (TiXmlElement& element : elements) {
    result.add(XPathItem(&element));
  }
  ASSERT_EQ(result.size(), elements.size());
  for (std::size_t index = 0; index < elements.size(); ++index) {
    EXPECT_EQ(result[index].node(), &elements[index]);
  }
}

TEST(XPathResult, IsEmptyAtFirstAndWhenCleared) {
  TiXmlElement element("a");
  XPathResult result;
  EXPECT_TRUE(result.empty());
  result.add(XPathItem(&element));
  EXPECT_FALSE(result.empty());
  result.clear();
  EXPECT_TRUE(result.empty());
  EXPECT_EQ(result.begin(), result.end());
}

TEST(XPathItem, OfAnAttributeIsNoNodeButKnowsItsElement) {
  TiXmlElement element("a");
  element.SetAttribute("x", "1");
  XPathItem const item(&element, element.FirstAttribute());
  EXPECT_TRUE(item.isAttribute());
  EXPECT_EQ(item.node(), nullptr);
  EXPECT_EQ(item.attribute(), element.FirstAttribute());
  EXPECT_EQ(item.place(), &element);
}

TEST(XPathItem, OfANodeHasNoAttribute) {
  TiXmlElement element("a");
  XPathItem const item(&element);
  EXPECT_FALSE(item.isAttribute());
  EXPECT_EQ(item.node(), &element);
  EXPECT_EQ(item.attribute(), nullptr);
  EXPECT_EQ(item.place(), &element);
}

}  // namespace

}  // namespace Zelv::Infrastructure
