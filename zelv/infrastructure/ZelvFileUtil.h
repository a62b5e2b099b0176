#pragma once

#include <string>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// Keeps the writable XML files healthy: one that is missing is copied from the read-only
/// directory, one that no longer parses is overwritten from there.
///
/// All results are 0 for success and -1 for failure. Called at start on the thread of the component
/// that owns the file; there is no lock, two threads that restore one file would both copy.
class ZELV_EXPORT ZelvFileUtil {
 public:
  /// Appends "/" unless the last character is one.
  static int normalizePathParameter(std::string& aDirectory);

  /// Removes one leading "/" if there is one.
  static int normalizeFileParameter(std::string& aFile);

  /// 0 if a regular file can be opened at this path.
  static int checkIfFileExists(std::string const& aPath);

  /// Copies a file of the read-only directory into a directory, which is made if missing.
  ///
  /// Names that hold other characters than letters, digits, ".", "_", "-" and "/" are refused: they
  /// would reach a shell.
  ///
  /// @return 0 once the commands have run, whether or not they succeeded; what they left is for the
  ///         next validation to judge.
  static int restoreFile(std::string const& aFile, std::string const& aDirectory);

  /// Restores a file only if it is missing.
  static int copyIfNotFound(std::string const& aFile, std::string const& aDirectory);

  /// Makes sure that a file is there and, if asked, that it loads; what every component calls
  /// before it loads a file. A file that does not load is replaced, and what was saved in it is
  /// lost.
  static int checkIsFileAvailable(std::string const& aFile, std::string const& aDirectory,
                                  bool aValidate);
};

}  // namespace Zelv::Infrastructure
