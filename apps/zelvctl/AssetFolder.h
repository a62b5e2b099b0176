#pragma once

#include <memory>
#include <set>
#include <stdexcept>
#include <string>

#include "apps/zelvctl/Descriptor.h"
#include "apps/zelvctl/WholeFile.h"

namespace ZelvCtl {

/// The directory that files of assets are written to.
class AssetFolder {
 public:
  /// A file cannot be written here under the name that it has; others can.
  class Refusal : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
  };

  /// Throws std::system_error when there is no such directory.
  explicit AssetFolder(std::string aPath);

  /// A file under the last step of its source. The second one of a name gets "-2" before its
  /// extension, and so on; a plain file that is there already is replaced. Throws Refusal, or
  /// std::system_error.
  std::unique_ptr<WholeFile> create(std::string const& aSource);

  /// For people: the way to a file from where the program runs.
  std::string pathOf(std::string const& aName) const;

 private:
  std::string unusedName(std::string const& aName);
  void requirePlainFile(std::string const& aName) const;

  std::string const mPath;
  Descriptor const mDescriptor;
  std::set<std::string> mUsed;
};

}  // namespace ZelvCtl
