#pragma once

#include <cstddef>
#include <string>

namespace ZelvTv {

/// Cuts a stream of bytes into lines.
class LineReader {
 public:
  static constexpr std::size_t kMaximumLine = std::size_t{1} << 20U;

  enum class Result { None, Line, TooLong };

  explicit LineReader(int aDescriptor) : mDescriptor(aDescriptor) {}

  /// Reads what is there, waiting until something is.
  void Read();

  /// The next whole line, without its line feed and a carriage return before that. At the end of
  /// the stream what is left counts as a line. A line that is too long is passed over.
  Result Next(std::string& aLine);

  /// True once the stream has ended; lines may still be left.
  bool HasEnded() const { return mEnded; }

 private:
  int const mDescriptor;
  std::string mBytes;
  /// Up to here there is no line feed.
  std::size_t mSearched = 0;
  bool mPassingOver = false;
  bool mEnded = false;
};

}  // namespace ZelvTv
