#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "zelv/core/AssetProvider.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

/// The packages that are loaded, by their names. Any thread may use it: the worker of the tree
/// loads and unloads while connections read.
///
/// A package is handed out by reference count, so that it stays whole for those who are at it when
/// it is unloaded. No package's lock is ever waited for under the lock of the table.
class AssetPackages {
 public:
  using AssetPackage = Core::AssetProvider::AssetPackage;
  using Held = std::shared_ptr<AssetPackage>;

  /// Packages come from other devices too, so there is a bound.
  static constexpr std::size_t maximumPackages = 256;
  /// Bytes of all of them, as loaded and as writes make them.
  static constexpr std::size_t maximumSize = std::size_t{64} << 20U;
  /// Bytes of what a read of all packages gives.
  static constexpr std::size_t maximumResult = std::size_t{8} << 20U;

  /// Adds a package; one of that name stays, in silence.
  /// @return false when there are too many, or too large ones.
  bool insert(std::string const& aName, Held aPackage);

  /// Whether the packages may grow by so many bytes.
  bool hasRoomFor(std::size_t aSize);

  /// Null when there is none.
  Held find(std::string const& aName);
  Held findByID(std::string const& aId);

  /// @return false when there is none of that name.
  bool remove(std::string const& aName);

  /// What the path addresses in all packages, as a multi-string in the order of their names;
  /// packages with nothing there, or with an empty text, are left out. Too much of it reads as
  /// nothing, and is logged.
  void read(std::string const& aXPath, std::string& aResult);

  /// Removes the files that any package names from aPaths.
  void removeNamed(std::set<std::string>& aPaths);

 private:
  std::vector<Held> all();
  std::size_t size();

  std::map<std::string, Held> mPackages ZELV_GUARDED_BY(mLock);
  PCMutex mLock;
};

}  // namespace Zelv
