#pragma once

#include <string_view>

namespace ZelvTv {

/// Writes to a descriptor without being held up by a reader that has stopped reading once the
/// program is told to end.
class LineWriter {
 public:
  /// @param aStop  readable when the program is told to end.
  LineWriter(int aDescriptor, int aStop) : mDescriptor(aDescriptor), mStop(aStop) {}

  /// Writes the text and a line feed. False when the reader is gone or the program is told to end.
  bool Line(std::string_view aText);

  /// Writes the text alone; otherwise as Line().
  bool Text(std::string_view aText);

  /// Writes a few bytes if there is room for them now, also when the program is told to end.
  void TextIfRoom(std::string_view aText);

 private:
  bool waitForRoom() const;

  int const mDescriptor;
  int const mStop;
};

}  // namespace ZelvTv
