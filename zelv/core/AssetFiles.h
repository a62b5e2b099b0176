#pragma once

#include <cstddef>
#include <list>
#include <string>

#include "zelv/core/AssetFileObject.h"

namespace Zelv {

/// Makes the list of files that stand in the descriptions of assets.
class AssetFiles {
 public:
  /// A list is read entry by entry, each time from the first one on, so there is a bound.
  static constexpr std::size_t maximumFiles = 4096;

  /// @param aElements  the assets, a multi-string of elements that have an attribute "src".
  /// @param aRootPath  put before each "src" as it is.
  /// @throws std::runtime_error when an element lacks its "src" or "ID", or has it empty.
  static std::list<AssetFileObject> of(std::string const& aElements, std::string const& aRootPath);

  /// The items of a multi-string without what separates them.
  /// @param aText  receives them.
  /// @return how many there are.
  static std::size_t m_ConcatMultiString(std::string const& aMultiString, std::string& aText);
};

}  // namespace Zelv
