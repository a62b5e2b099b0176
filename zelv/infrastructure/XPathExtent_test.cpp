#include "zelv/infrastructure/XPathExtent.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

namespace Zelv::Infrastructure {

namespace {

XPathExtent extentOf(std::string const& aXml) {
  TiXmlDocument document;
  document.Parse(aXml.c_str());
  return XPathExtent::of(document);
}

TEST(XPathExtent, CountsNodesOfAllKindsAndAttributes) {
  EXPECT_EQ(extentOf("").size, 1U);
  EXPECT_EQ(extentOf("<a/>").size, 2U);
  EXPECT_EQ(extentOf("<a x='1' y='2'/>").size, 4U);
  EXPECT_EQ(extentOf("<a>text<!--c--><b/><![CDATA[d]]></a>").size, 6U);
}

TEST(XPathExtent, CountsTheLevelsAboveEachNode) {
  EXPECT_EQ(extentOf("<a/>").levels, 1U);
  EXPECT_EQ(extentOf("<a><b><c/></b><d/></a>").levels, 1U + 2U + 3U + 2U);
}

TEST(XPathExtent, CountsLongValuesByTheirBytes) {
  EXPECT_EQ(extentOf("<a>" + std::string(15, 'x') + "</a>").size, 3U);
  EXPECT_EQ(extentOf("<a>" + std::string(1600, 'x') + "</a>").size, 103U);
  EXPECT_EQ(extentOf("<a v='" + std::string(1600, 'x') + "'/>").size, 103U);
}

TEST(XPathExtent, StopsWhereItIsTooMuchForAnyExpression) {
  TiXmlDocument document;
  document.LinkEndChild(new TiXmlText(std::string(160'000'016, 'x')));
  document.LinkEndChild(new TiXmlElement("a"));
  XPathExtent const extent = XPathExtent::of(document);
  EXPECT_EQ(extent.size, 10'000'003U);
  EXPECT_EQ(extent.levels, 1U);
}

}  // namespace

}  // namespace Zelv::Infrastructure
