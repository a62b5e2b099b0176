#include "zelv/infrastructure/BufferChunk.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Zelv::Infrastructure::BufferChunk;

class BufferChunkTest : public ::testing::Test {
 protected:
  BufferChunkTest() { chunk.setBuffer(text, 8); }

  std::string shown() const { return {chunk.getBuffer(), chunk.getSize()}; }

  char text[9] = "abcdefgh";
  BufferChunk chunk;
};

TEST_F(BufferChunkTest, ShowsAllOfItsBuffer) {
  EXPECT_EQ(shown(), "abcdefgh");
}

TEST_F(BufferChunkTest, SkipsAtTheFront) {
  EXPECT_EQ(chunk.moveBuffer(2), 1U);
  EXPECT_EQ(chunk.moveBuffer(1), 1U);
  EXPECT_EQ(shown(), "defgh");
}

TEST_F(BufferChunkTest, DoesNotSkipNothingAtTheFirstByte) {
  EXPECT_EQ(chunk.moveBuffer(0), 0U);
  EXPECT_EQ(shown(), "abcdefgh");
  chunk.moveBuffer(1);
  EXPECT_EQ(chunk.moveBuffer(0), 1U);
}

TEST_F(BufferChunkTest, DoesNotSkipAllOfItAtOnce) {
  EXPECT_EQ(chunk.moveBuffer(8), 0U);
  EXPECT_EQ(shown(), "abcdefgh");
}

TEST_F(BufferChunkTest, CountsWhatIsSkippedAlreadyOnceMore) {
  chunk.moveBuffer(2);
  EXPECT_EQ(chunk.moveBuffer(10), 0U);
  EXPECT_EQ(shown(), "cdefgh");
}

TEST_F(BufferChunkTest, GrowsByWhatIsCropped) {
  EXPECT_EQ(chunk.cropBuffer(2), 1U);
  EXPECT_EQ(chunk.getSize(), 10U);
}

TEST_F(BufferChunkTest, DoesNotCropExactlyWhatIsLeft) {
  EXPECT_EQ(chunk.cropBuffer(8), 0U);
  chunk.moveBuffer(3);
  EXPECT_EQ(chunk.cropBuffer(5), 0U);
  EXPECT_EQ(chunk.cropBuffer(8), 0U);
  EXPECT_EQ(shown(), "defgh");
}

TEST_F(BufferChunkTest, ShowsAllAgainAfterAReset) {
  chunk.moveBuffer(3);
  chunk.cropBuffer(1);
  chunk.reset();
  EXPECT_EQ(shown(), "abcdefgh");
}

TEST_F(BufferChunkTest, SharesItsMemoryWithItsCopies) {
  BufferChunk const copy = chunk;
  text[0] = 'X';
  EXPECT_EQ(copy.getBuffer()[0], 'X');
}

}  // namespace
