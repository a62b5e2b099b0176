#pragma once

#include <string>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// The path of a file, cut at its last "/".
class ZELV_EXPORT Path {
 public:
  Path() = default;
  explicit Path(std::string aPath);

  /// True when the file system tells of something at this path; any failure is false.
  bool exists() const;

  /// The text in front of the last "/"; empty without one.
  std::string getDirectoryName() const;

  /// The text behind the last "/". Empty without one: a bare name has no file name.
  std::string getFileName() const;

 private:
  std::string mPath;
};

}  // namespace Zelv::Infrastructure
