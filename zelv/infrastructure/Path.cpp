#include "zelv/infrastructure/Path.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace Zelv::Infrastructure {

Path::Path(std::string aPath) : mPath(std::move(aPath)) {}

bool Path::exists() const {
  std::error_code error;
  return std::filesystem::exists(mPath.c_str(), error) && !error;
}

std::string Path::getDirectoryName() const {
  std::string::size_type const slash = mPath.rfind('/');
  return slash == std::string::npos ? "" : mPath.substr(0, slash);
}

std::string Path::getFileName() const {
  std::string::size_type const slash = mPath.rfind('/');
  return slash == std::string::npos ? "" : mPath.substr(slash + 1);
}

}  // namespace Zelv::Infrastructure
