#include "zelv/core/AssetFileObject.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace Zelv {

AssetFileObject::AssetFileObject(std::string aFileName, std::string aPath, std::string aId)
    : mFileName(std::move(aFileName)), mPath(std::move(aPath)), mId(std::move(aId)) {}

AssetFileObject::~AssetFileObject() = default;

// Of the whole path, not of its two parts: "packages/." and "./tv.png" have it at their seam alone.
bool AssetFileObject::climbs() const {
  std::string_view rest = mPath;
  while (true) {
    std::size_t const end = rest.find('/');
    if (rest.substr(0, end) == "..") {
      return true;
    }
    if (end == std::string_view::npos) {
      return false;
    }
    rest.remove_prefix(end + 1);
  }
}

}  // namespace Zelv
