#include "zelv/adapter/IncomingText.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Zelv::Adapter::IncomingText;

TEST(IncomingText, GrowsByPieces) {
  IncomingText text;
  EXPECT_TRUE(text.append("ab", 2));
  EXPECT_TRUE(text.append("", 0));
  EXPECT_TRUE(text.append("cd", 2));
  EXPECT_EQ("abcd", text.text());
}

TEST(IncomingText, TakesTheGreatestSizeAndNotOneByteMore) {
  std::string const piece(IncomingText::MaxSize, 'x');
  IncomingText text;
  EXPECT_TRUE(text.append(piece.data(), piece.size()));
  EXPECT_FALSE(text.append("x", 1));
  EXPECT_EQ(piece.size(), text.text().size());
}

TEST(IncomingText, SharesTheRoomOfTheProcessAndGivesItBack) {
  std::string const piece(IncomingText::MaxSize, 'x');
  {
    std::vector<IncomingText> texts(IncomingText::MaxInFlight / IncomingText::MaxSize);
    for (IncomingText& text : texts) {
      EXPECT_TRUE(text.append(piece.data(), piece.size()));
    }
    IncomingText late;
    EXPECT_FALSE(late.append("x", 1));
    EXPECT_EQ("", late.text());
    EXPECT_EQ(IncomingText::MaxInFlight, IncomingText::inFlight());
  }
  EXPECT_EQ(0U, IncomingText::inFlight());
  IncomingText late;
  EXPECT_TRUE(late.append("x", 1));
}

}  // namespace
