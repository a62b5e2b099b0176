#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "apps/zelvctl/Descriptor.h"

namespace ZelvCtl {

/// A file that gets its name once all of it has been written and has reached the storage. Until
/// then it has another name, and none if it is given up. All operations throw std::system_error.
class WholeFile {
 public:
  /// @param aFolder  of a directory; outlives the object.
  /// @param aName    without a "/". What else may have that name must be a plain file, which is
  ///                 replaced.
  WholeFile(Descriptor const& aFolder, std::string aName);
  WholeFile(WholeFile const&) = delete;
  WholeFile& operator=(WholeFile const&) = delete;

  /// Gives it up, unless it is finished.
  ~WholeFile();

  std::string const& name() const { return mName; }
  std::uint64_t size() const { return mSize; }

  void write(std::string_view aBytes);
  void finish();

 private:
  Descriptor const& mFolder;
  std::string const mName;
  std::string mTemporaryName;  ///< empty once it has none
  Descriptor mFile;
  std::uint64_t mSize = 0;
};

}  // namespace ZelvCtl
