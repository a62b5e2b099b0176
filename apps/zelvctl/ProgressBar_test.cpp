#include "apps/zelvctl/ProgressBar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace ZelvCtl {
namespace {

class ProgressBarTest : public testing::Test {
 protected:
  /// What was written since the last call.
  std::string written() {
    std::string text = mOut.str();
    mOut.str("");
    return text;
  }

  std::size_t mWidth = 50;
  std::ostringstream mOut;
  ProgressBar mBar{mOut, [this] { return mWidth; }};
};

TEST_F(ProgressBarTest, ShowsHowMuchHasCome) {
  mBar.begin("tv.png", 3000);
  EXPECT_EQ(written(), "\rtv.png [" + std::string(25, '-') + "] 0 % of 2.9 KiB");
  mBar.advance(1500);
  EXPECT_EQ(written(), "\rtv.png [############------------] 50 % of 2.9 KiB");
  mBar.advance(1500);
  EXPECT_EQ(written(), "\rtv.png [" + std::string(23, '#') + "] 100 % of 2.9 KiB");
}

TEST_F(ProgressBarTest, IsDrawnOncePerPercent) {
  mBar.begin("tv.png", 1000000);
  written();
  mBar.advance(9999);
  EXPECT_EQ(written(), "");
  mBar.advance(1);
  EXPECT_NE(written().find("1 %"), std::string::npos);
}

TEST_F(ProgressBarTest, LeavesAnEmptyLine) {
  mBar.clear();
  EXPECT_EQ(written(), "");
  mBar.begin("a", 0);
  std::size_t const columns = written().size() - 1;
  mBar.clear();
  EXPECT_EQ(written(), "\r" + std::string(columns, ' ') + "\r");
  mBar.clear();
  EXPECT_EQ(written(), "");
}

TEST_F(ProgressBarTest, TakesAwayWhatIsLeftOfALongerLine) {
  mWidth = 20;
  mBar.begin("a-long-name", 5);
  EXPECT_EQ(written(), "\ra-long-name 0 % of ");
  mBar.begin("b", 5);
  EXPECT_EQ(written(), "\rb 0 % of 5 B" + std::string(7, ' '));
}

TEST_F(ProgressBarTest, FillsNoLineOfANarrowTerminal) {
  for (std::size_t width = 0; width < 60; ++width) {
    mWidth = width;
    mBar.clear();
    written();
    mBar.begin("Straße.png", 1ULL << 62U);
    EXPECT_LE(written().size(), std::max<std::size_t>(width, 1) + 1) << width;
  }
}

TEST_F(ProgressBarTest, ShortensNamesAndLetsNoneSteerTheTerminal) {
  mBar.begin("\x1b[2J" + std::string(40, 'x'), 1);
  EXPECT_EQ(written().substr(0, 32), "\r?[2J" + std::string(26, 'x') + " ");
}

TEST_F(ProgressBarTest, ShowsAFileWithoutBytesAsWhole) {
  mBar.begin("empty", 0);
  EXPECT_NE(written().find("100 % of 0 B"), std::string::npos);
}

TEST(ProgressBar, GoesAwayWithItsOwner) {
  std::ostringstream out;
  {
    ProgressBar(out, [] { return std::size_t{40}; }).begin("a", 1);
  }
  EXPECT_TRUE(out.str().ends_with(" \r"));
}

TEST(ProgressBar, KnowsAWidthEvenWithoutATerminal) {
  EXPECT_GT(ProgressBar::widthOfTerminal(), 0U);
}

}  // namespace
}  // namespace ZelvCtl
