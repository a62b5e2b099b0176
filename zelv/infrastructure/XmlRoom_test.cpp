#include "zelv/infrastructure/XmlRoom.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

namespace Zelv::Infrastructure {
namespace {

class XmlRoomTest : public testing::Test {
 protected:
  XmlRoomTest() { mDocument.Parse("<abc x='12'>text<d/></abc>"); }

  TiXmlDocument mDocument;
  XmlRoom mRoom;
};

TEST_F(XmlRoomTest, CountsEveryNodeAndWhatItHolds) {
  // The document, two elements, an attribute and a text.
  EXPECT_EQ(XmlRoom::costOf(mDocument), 5 * XmlRoom::CostOfNode + 3 + 1 + 2 + 4 + 1);
}

TEST_F(XmlRoomTest, GivesWhatTheDocumentLeaves) {
  std::size_t const left = XmlRoom::Max - XmlRoom::costOf(mDocument);
  EXPECT_FALSE(mRoom.take(mDocument, left + 1));
  EXPECT_TRUE(mRoom.take(mDocument, left));
}

TEST_F(XmlRoomTest, MeasuresAnewWhenItHasGivenAll) {
  std::size_t const left = XmlRoom::Max - XmlRoom::costOf(mDocument);
  EXPECT_TRUE(mRoom.take(mDocument, left));
  EXPECT_TRUE(mRoom.take(mDocument, left)) << "the document did not grow in fact";
}

TEST_F(XmlRoomTest, HasNoneInADocumentThatIsFull) {
  mDocument.FirstChildElement()->LinkEndChild(new TiXmlText(std::string(XmlRoom::Max, 'x')));
  EXPECT_FALSE(mRoom.take(mDocument, 1));
  EXPECT_TRUE(mRoom.take(mDocument, 0));
}

TEST_F(XmlRoomTest, BelongsToOneDocument) {
  EXPECT_TRUE(mRoom.take(mDocument, 1));
  TiXmlDocument full;
  full.LinkEndChild(new TiXmlText(std::string(XmlRoom::Max, 'x')));
  mRoom.reset();
  EXPECT_FALSE(mRoom.take(full, 1));
}

}  // namespace
}  // namespace Zelv::Infrastructure
