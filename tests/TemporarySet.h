#pragma once

#include <string>

#include "zelv/platform/fake/OwnNetwork.h"

/// The two directories of a set that has never been started, for tests that bring the library up in
/// their own process; without discovery, and in a network of its own, since the ports of the
/// services are fixed and other sets run at the same time. The end stops the library, removes the
/// directories and makes the ones of before known again.
class TemporarySet {
 public:
  TemporarySet();
  TemporarySet(TemporarySet const&) = delete;
  TemporarySet& operator=(TemporarySet const&) = delete;
  ~TemporarySet();

  /// Where the library writes; with a final "/".
  std::string const& writable() const { return mWritable; }

 private:
  Zelv::Platform::Fake::OwnNetwork mNetwork;
  std::string mRoot;
  std::string mWritable;
  std::string mReadOnlyBefore;
  std::string mWritableBefore;
};
