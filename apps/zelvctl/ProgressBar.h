#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

namespace ZelvCtl {

/// Shows on the last line of a terminal how much of a file has come, and takes it away again.
class ProgressBar {
 public:
  /// Asked for the columns of the terminal at each new line, since it may change.
  using Width = std::function<std::size_t()>;

  /// @param aOut    the terminal; outlives the object.
  ProgressBar(std::ostream& aOut, Width aWidth);
  ProgressBar(ProgressBar const&) = delete;
  ProgressBar& operator=(ProgressBar const&) = delete;
  ~ProgressBar() { clear(); }

  /// A file of so many bytes begins.
  void begin(std::string const& aName, std::uint64_t aSize);

  /// So many more have come.
  void advance(std::uint64_t aBytes);

  /// Leaves the line empty, with the cursor at its begin.
  void clear();

  /// Columns of the terminal at standard error; 80 when it does not tell.
  static std::size_t widthOfTerminal();

 private:
  unsigned percent() const;
  std::string line() const;
  void draw();

  std::ostream& mOut;
  Width const mWidth;
  std::string mName;
  std::uint64_t mSize = 0;
  std::uint64_t mDone = 0;
  unsigned mShownPercent = 0;
  std::size_t mShownColumns = 0;
};

}  // namespace ZelvCtl
