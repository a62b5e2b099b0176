#pragma once

#include <string>

/// The two directories of a set that has never been started, for tests that bring the library up in
/// their own process; without discovery. The end stops the library, removes the directories and
/// makes the ones of before known again.
class TemporarySet {
 public:
  TemporarySet();
  TemporarySet(TemporarySet const&) = delete;
  TemporarySet& operator=(TemporarySet const&) = delete;
  ~TemporarySet();

  /// Where the library writes; with a final "/".
  std::string const& writable() const { return mWritable; }

 private:
  std::string mRoot;
  std::string mWritable;
  std::string mReadOnlyBefore;
  std::string mWritableBefore;
};
