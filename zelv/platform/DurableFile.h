#pragma once

#include <cstddef>
#include <string>

namespace Zelv::Platform {

/// Writing files that must survive a loss of power. A path that is empty or holds a NUL fails.
class DurableFile {
 public:
  /// Creates or empties the file, writes all of it and forces it to the storage. True only if each
  /// step, the closing included, succeeded; on failure the file's content is not defined. A pipe
  /// that nobody reads fails at once.
  static bool Write(std::string const& aPath, char const* aData, std::size_t aSize);

  /// Puts aFrom in the place of aTo in one step and forces the directory to the storage. On failure
  /// aTo is as it was, or, when only the last step failed, aFrom's content.
  static bool Replace(std::string const& aFrom, std::string const& aTo);

  /// Removes a file; true if it is gone afterwards.
  static bool Remove(std::string const& aPath);
};

}  // namespace Zelv::Platform
