#include "zelv/infrastructure/XNSp_xpath_node_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>
#include <vector>

namespace TinyXPath {

namespace {

using ::testing::IsEmpty;

class XNSpXPathNodeList : public ::testing::Test {
 protected:
  XNSpXPathNodeList() { mDocument.Parse("<a x='1 &amp; 2'><b>one</b><b>two</b></a>"); }
  ~XNSpXPathNodeList() override { XNSp_free_attribute_nodes(&mNodes); }

  void list(char const* aXPath) {
    XNSp_xpath_node_list(&mNodes, mDocument.FirstChildElement(), aXPath);
  }

  TiXmlDocument mDocument;
  std::vector<TiXmlNode*> mNodes;
};

TEST_F(XNSpXPathNodeList, HoldsTheNodesOfTheTreeInDocumentOrder) {
  list("/a/b");
  ASSERT_EQ(mNodes.size(), 2U);
  EXPECT_EQ(mNodes[0], mDocument.RootElement()->FirstChild());
  EXPECT_EQ(mNodes[1], mDocument.RootElement()->LastChild());
}

TEST_F(XNSpXPathNodeList, HoldsATextNodeWithTheValueForAnAttribute) {
  list("/a/@x");
  ASSERT_EQ(mNodes.size(), 1U);
  ASSERT_NE(mNodes[0]->ToText(), nullptr);
  EXPECT_EQ(mNodes[0]->ValueStr(), "1 & 2");
  EXPECT_FALSE(mNodes[0]->ToText()->CDATA());
  EXPECT_EQ(mNodes[0]->Parent(), nullptr);
}

TEST_F(XNSpXPathNodeList, StaysEmptyWithoutAResult) {
  for (char const* const text : {"/a/c", "/a/@y", "/a[", "", "1+1"}) {
    list("/a/b");
    list(text);
    EXPECT_THAT(mNodes, IsEmpty()) << text;
  }
}

TEST_F(XNSpXPathNodeList, StaysEmptyForNullArguments) {
  list(nullptr);
  EXPECT_THAT(mNodes, IsEmpty());
  XNSp_xpath_node_list(&mNodes, nullptr, "/a");
  EXPECT_THAT(mNodes, IsEmpty());
}

TEST_F(XNSpXPathNodeList, IsGivenBackWithoutHarmToTheTree) {
  for (char const* const text : {"/a/b/text()", "/a/@x", "/", "/a/node()|/a/@x"}) {
    list(text);
    EXPECT_FALSE(mNodes.empty()) << text;
    XNSp_free_attribute_nodes(&mNodes);
    EXPECT_THAT(mNodes, IsEmpty()) << text;
  }
  list("/a/b/text()");
  ASSERT_EQ(mNodes.size(), 2U);
  EXPECT_EQ(mNodes[1]->ValueStr(), "two");
}

}  // namespace

}  // namespace TinyXPath
