#include "apps/zelv-tv/LineReader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ZelvTv {
namespace {

using Result = LineReader::Result;

/// A pipe whose writing end the test feeds.
class LineReaderTest : public testing::Test {
 protected:
  LineReaderTest() {
    EXPECT_EQ(::pipe(mPipe.data()), 0);
    mReader.emplace(mPipe[0]);
  }
  ~LineReaderTest() override {
    ::close(mPipe[0]);
    Close();
  }

  void Feed(std::string const& aText) {
    EXPECT_EQ(::write(mPipe[1], aText.data(), aText.size()), static_cast<ssize_t>(aText.size()));
    mReader->Read();
  }
  void Close() {
    if (mPipe[1] >= 0) {
      ::close(mPipe[1]);
      mPipe[1] = -1;
    }
  }
  void FeedEnd() {
    Close();
    mReader->Read();
  }
  void ExpectLine(std::string const& aExpected) {
    std::string line;
    EXPECT_EQ(mReader->Next(line), Result::Line);
    EXPECT_EQ(line, aExpected);
  }
  void ExpectNone() {
    std::string line;
    EXPECT_EQ(mReader->Next(line), Result::None);
  }

  std::array<int, 2> mPipe{};
  std::optional<LineReader> mReader;
};

TEST_F(LineReaderTest, PutsALineTogetherFromPieces) {
  Feed("ab");
  ExpectNone();
  Feed("c\nd");
  ExpectLine("abc");
  ExpectNone();
  Feed("\n\n");
  ExpectLine("d");
  ExpectLine("");
  ExpectNone();
}

TEST_F(LineReaderTest, TakesACarriageReturnBeforeTheLineFeedAway) {
  Feed("a\rb\r\n");
  ExpectLine("a\rb");
}

TEST_F(LineReaderTest, TakesWhatIsLeftAtTheEndAsALine) {
  Feed("a\nb");
  FeedEnd();
  EXPECT_TRUE(mReader->HasEnded());
  ExpectLine("a");
  ExpectLine("b");
  ExpectNone();
}

TEST_F(LineReaderTest, HasNoLineWhenTheStreamEndsBehindALineFeed) {
  Feed("a\n");
  FeedEnd();
  ExpectLine("a");
  ExpectNone();
}

TEST_F(LineReaderTest, TakesTheLongestLineAndPassesOverALongerOne) {
  std::string const longest(LineReader::kMaximumLine, 'x');
  std::string const text = longest + "\n" + longest + "x\nend\n";
  std::thread writer([this, &text] {
    for (std::size_t at = 0; at < text.size();) {
      ssize_t const count = ::write(mPipe[1], text.data() + at, text.size() - at);
      ASSERT_GT(count, 0);
      at += static_cast<std::size_t>(count);
    }
    Close();
  });
  std::string line;
  std::vector<std::size_t> sizes;
  int tooLong = 0;
  while (!mReader->HasEnded()) {
    mReader->Read();
    for (Result result = mReader->Next(line); result != Result::None;
         result = mReader->Next(line)) {
      if (result == Result::TooLong) {
        ++tooLong;
      } else {
        sizes.push_back(line.size());
      }
    }
  }
  writer.join();
  EXPECT_EQ(tooLong, 1);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{longest.size(), 3}));
}

}  // namespace
}  // namespace ZelvTv
