#pragma once

#include <string>
#include <vector>

namespace Zelv::Platform::Fake {

/// The shell of the tests. It starts no process: it records each line and performs, in the test's
/// own directories alone, those that the system uses: "mkdir -m 777 -p DIR", "cp -r SOURCE...
/// TARGET", "cd DIR; chmod 777 *", "sync". Lines that name any other place fail with status 1,
/// unknown commands with 127.
class FakeShell {
 public:
  enum Mode { Perform, RecordOnly };

  /// RecordOnly answers 0 to every line and touches nothing. After Reset(): Perform.
  static void SetMode(Mode aMode);

  /// Every line that holds aPart fails with aStatus and does nothing, until Reset().
  static void FailLinesWith(std::string const& aPart, int aStatus = 1);

  /// The lines run so far, failed ones included, refused ones not.
  static std::vector<std::string> Lines();

  /// How often exactly this line was run.
  static int Count(std::string const& aLine);

  /// Forgets the lines.
  static void ClearLines();

  /// Forgets lines, mode and faults.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
