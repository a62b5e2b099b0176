#pragma once

#include <string>

namespace Zelv::Platform {

/// The set's shell, for seeding and repairing files.
class Shell {
 public:
  /// True for a name or directory that may stand in a line: not empty, and made only of letters,
  /// digits, ".", "_", "-" and "/". Callers put no other text into a line.
  static bool IsPlain(std::string const& aName);

  /// Runs one line and waits for its end. The line "sync" forces the file system of the writable
  /// directory to the storage, without a process for it.
  ///
  /// A line that holds anything but the characters of IsPlain(), blanks, "*" and ";" is refused: it
  /// is logged at error level and not run. Children inherit no descriptor but the standard three.
  ///
  /// @return the exit status of the line, 0 being success; 128 and the number of the signal that
  ///         ended it; -1 when it could not be run or its status is not known.
  static int Run(std::string const& aLine);
};

}  // namespace Zelv::Platform
