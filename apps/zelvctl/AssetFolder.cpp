#include "apps/zelvctl/AssetFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "apps/zelvctl/AssetName.h"

namespace ZelvCtl {

AssetFolder::AssetFolder(std::string aPath)
    : mPath(std::move(aPath)),
      mDescriptor(::open(mPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (mDescriptor.number() < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot write to '" + mPath + "'");
  }
}

std::unique_ptr<WholeFile> AssetFolder::create(std::string const& aSource) {
  auto const name = AssetName::of(aSource);
  if (!name) {
    throw Refusal("no file can be called as '" + aSource + "' says");
  }
  std::string const unused = unusedName(*name);
  requirePlainFile(unused);
  return std::make_unique<WholeFile>(mDescriptor, unused);
}

std::string AssetFolder::unusedName(std::string const& aName) {
  std::string name = aName;
  for (unsigned number = 2; !mUsed.insert(name).second; ++number) {
    name = AssetName::numbered(aName, number);
  }
  if (!AssetName::of(name)) {
    throw Refusal("'" + aName + "' is there already, and too long for a number");
  }
  return name;
}

void AssetFolder::requirePlainFile(std::string const& aName) const {
  struct stat status {};
  int const result = ::fstatat(mDescriptor.number(), aName.c_str(), &status, AT_SYMLINK_NOFOLLOW);
  if (result == 0 && !S_ISREG(status.st_mode)) {
    throw Refusal("'" + pathOf(aName) + "' is there and no plain file");
  }
}

std::string AssetFolder::pathOf(std::string const& aName) const {
  if (mPath == ".") {
    return aName;
  }
  return mPath + (mPath.ends_with('/') ? "" : "/") + aName;
}

}  // namespace ZelvCtl
