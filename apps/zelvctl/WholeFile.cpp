#include "apps/zelvctl/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "apps/zelvctl/Identifier.h"

namespace ZelvCtl {

namespace {

constexpr mode_t everybody = 0666;

[[noreturn]] void fail(std::string const& aName) {
  throw std::system_error(errno, std::generic_category(), "cannot write '" + aName + "'");
}

}  // namespace

WholeFile::WholeFile(Descriptor const& aFolder, std::string aName)
    : mFolder(aFolder),
      mName(std::move(aName)),
      mTemporaryName(".zelvctl-" + Identifier::create()),
      mFile(::openat(mFolder.number(), mTemporaryName.c_str(),
                     O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, everybody)) {
  if (mFile.number() < 0) {
    fail(mName);
  }
}

WholeFile::~WholeFile() {
  if (!mTemporaryName.empty()) {
    ::unlinkat(mFolder.number(), mTemporaryName.c_str(), 0);
  }
}

void WholeFile::write(std::string_view aBytes) {
  while (!aBytes.empty()) {
    ssize_t const size = ::write(mFile.number(), aBytes.data(), aBytes.size());
    if (size < 0 && errno != EINTR) {
      fail(mName);
    }
    auto const written = static_cast<std::size_t>(size < 0 ? 0 : size);
    aBytes.remove_prefix(written);
    mSize += written;
  }
}

void WholeFile::finish() {
  if (::fsync(mFile.number()) != 0 ||
      ::renameat(mFolder.number(), mTemporaryName.c_str(), mFolder.number(), mName.c_str()) != 0) {
    fail(mName);
  }
  mTemporaryName.clear();
  if (::fsync(mFolder.number()) != 0) {
    fail(mName);
  }
}

}  // namespace ZelvCtl
