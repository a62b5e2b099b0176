#include "zelv/infrastructure/XmlRemoval.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure {
namespace {

class XmlRemovalTest : public testing::Test {
 protected:
  XmlRemovalTest() { mDocument.Parse("<a x='1'><b><c><d/></c></b><e/></a>"); }

  TiXmlElement* find(std::string const& aName, TiXmlNode* aIn) {
    for (auto* child = aIn->FirstChildElement(); child; child = child->NextSiblingElement()) {
      TiXmlElement* const found = child->ValueStr() == aName ? child : find(aName, child);
      if (found != nullptr) {
        return found;
      }
    }
    return nullptr;
  }

  TiXmlElement* find(std::string const& aName) { return find(aName, &mDocument); }

  std::string remove() {
    XmlRemoval(mMatches, mDocument.FirstChildElement()).run();
    std::string xml;
    xml << mDocument;
    return xml;
  }

  TiXmlDocument mDocument;
  XPathResult mMatches;
};

TEST_F(XmlRemovalTest, TakesOutEachMatch) {
  mMatches.add(XPathItem(find("d")));
  mMatches.add(XPathItem(find("e")));
  EXPECT_EQ(remove(), "<a x=\"1\"><b><c /></b></a>");
}

TEST_F(XmlRemovalTest, TakesOutNestedMatchesOnceWhateverTheirOrder) {
  for (char const* name : {"d", "b", "c", "b"}) {
    mMatches.add(XPathItem(find(name)));
  }
  EXPECT_EQ(remove(), "<a x=\"1\"><e /></a>");
}

TEST_F(XmlRemovalTest, LeavesTheRoot) {
  mMatches.add(XPathItem(find("a")));
  mMatches.add(XPathItem(find("e")));
  EXPECT_EQ(remove(), "<a x=\"1\"><b><c><d /></c></b></a>");
}

TEST_F(XmlRemovalTest, LeavesAttributesAndTheDocument) {
  mMatches.add(XPathItem(find("a"), find("a")->FirstAttribute()));
  mMatches.add(XPathItem(&mDocument));
  EXPECT_EQ(remove(), "<a x=\"1\"><b><c><d /></c></b><e /></a>");
}

TEST_F(XmlRemovalTest, TellsWhatGoes) {
  mMatches.add(XPathItem(find("b")));
  XmlRemoval const removal(mMatches, mDocument.FirstChildElement());
  EXPECT_TRUE(removal.takes(find("b")));
  EXPECT_TRUE(removal.takes(find("d")));
  EXPECT_FALSE(removal.takes(find("a")));
  EXPECT_FALSE(removal.takes(find("e")));
}

}  // namespace
}  // namespace Zelv::Infrastructure
