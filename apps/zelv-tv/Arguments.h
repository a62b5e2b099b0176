#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace ZelvTv {

/// A line from standard input, taken apart from the left.
class Arguments {
 public:
  /// The line is not what the command takes.
  class Misuse : public std::runtime_error {
    using std::runtime_error::runtime_error;
  };

  /// @param aLine  MUST outlive the object.
  explicit Arguments(std::string_view aLine) : mRest(aLine) {}

  /// The text up to the next blank. Throws Misuse when nothing is left.
  std::string Word();

  /// As Word(), but blanks within brackets and within quotes belong to the path.
  std::string Path();

  /// A word that stands for a device. A name with blanks stands within quotes, or has each of them
  /// as "\x20", as the lines of events do.
  std::string Device();

  /// A whole number of milliseconds. Throws Misuse for anything else.
  unsigned Milliseconds();

  /// All that is left behind one blank, which must be there; possibly nothing. Throws Misuse when
  /// it is not the text of a value.
  std::string Value();

  /// Throws Misuse when anything but blanks is left.
  void End();

 private:
  std::string take(std::size_t aSize);
  void skipBlanks();

  std::string_view mRest;
};

}  // namespace ZelvTv
