#pragma once

#include <memory>
#include <string>

#include "bench/TemporaryDirectory.h"
#include "zelv/interfaces/IAppData.h"

namespace Zelv::Bench {

/// A set in this process, on a fresh state directory; brought up here and taken down at the end.
class Set {
 public:
  Set();

  /// With heartbeats so many seconds apart: of others, too, it takes silence for so long.
  explicit Set(int aHeartBeatInterval);
  Set(Set const&) = delete;
  Set& operator=(Set const&) = delete;
  ~Set();

  IAppData* data() const { return mData; }
  std::string const& directory() const { return mDirectory.path(); }

 private:
  void start(std::string const& aFactoryFiles);

  TemporaryDirectory mDirectory;
  std::unique_ptr<TemporaryDirectory> mFactoryFiles;
  IAppData* mData = nullptr;
};

}  // namespace Zelv::Bench
