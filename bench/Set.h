#pragma once

#include <filesystem>
#include <string>

#include "zelv/interfaces/IAppData.h"

namespace Zelv::Bench {

/// A set in this process, on a fresh state directory; brought up here and taken down at the end.
class Set {
 public:
  Set();
  Set(Set const&) = delete;
  Set& operator=(Set const&) = delete;
  ~Set();

  IAppData* data() const { return mData; }
  std::string const& directory() const { return mDirectory; }

 private:
  std::string mDirectory;
  IAppData* mData = nullptr;
};

}  // namespace Zelv::Bench
