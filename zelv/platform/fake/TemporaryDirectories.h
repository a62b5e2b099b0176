#pragma once

#include <string>
#include <vector>

namespace Zelv::Platform::Fake {

/// A fresh set of directories for one test, made known to Directories. At its end all of it is
/// removed, Directories is as at start, and all fakes are reset. One at a time.
class TemporaryDirectories {
 public:
  /// Makes both directories, empty.
  TemporaryDirectories();
  TemporaryDirectories(TemporaryDirectories const&) = delete;
  TemporaryDirectories& operator=(TemporaryDirectories const&) = delete;
  ~TemporaryDirectories();

  /// Directories::ReadOnly() and Directories::Writable(), with a final "/".
  std::string const& readOnly() const { return mReadOnly; }
  std::string const& writable() const { return mWritable; }

  /// The directory that holds both, with a final "/"; for files beside them.
  std::string const& root() const { return mRoot; }

  /// Creates or replaces a file; aName is relative to the directory.
  void putReadOnly(std::string const& aName, std::string const& aContent) const;
  void putWritable(std::string const& aName, std::string const& aContent) const;

  /// The content of a file in the writable directory; throws when there is none.
  std::string getWritable(std::string const& aName) const;

  bool hasWritable(std::string const& aName) const;

  /// Names in the writable directory, in alphabetical order.
  std::vector<std::string> listWritable() const;

  void removeWritable(std::string const& aName) const;

  /// Removes the writable directory itself, as on a set that never started before.
  void removeWritableDirectory() const;

  /// Copies every file of aDirectory into the read-only directory.
  void fillReadOnlyFrom(std::string const& aDirectory) const;

  /// root() of the one that lives, empty when there is none.
  static std::string currentRoot();

 private:
  std::string mRoot;
  std::string mReadOnly;
  std::string mWritable;
};

}  // namespace Zelv::Platform::Fake
