#include "zelv/platform/PCFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "zelv/platform/linux/FileCalls.h"

using Zelv::Platform::FileCalls;

PCFile::~PCFile() {
  Destroy();
}

bool PCFile::Create(char const* aPath, int aMode) {
  if (mDescriptor >= 0 || aPath == nullptr || aMode != 0) {
    return false;
  }
  // O_NONBLOCK, so that a pipe in the place of a file is found out and not waited for.
  int const descriptor = FileCalls::Open(aPath, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0);
  if (descriptor < 0) {
    return false;
  }
  struct stat status;
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    FileCalls::Close(descriptor);
    return false;
  }
  mDescriptor = descriptor;
  return true;
}

long PCFile::Read(void* aBuffer, std::size_t aSize) {
  std::size_t const size = std::min<std::size_t>(aSize, INT_MAX);
  ssize_t result;
  do {
    result = FileCalls::Read(mDescriptor, aBuffer, size);
  } while (result < 0 && errno == EINTR);
  return result < 0 ? -1 : static_cast<long>(result);
}

long long PCFile::Seek(long long aOffset, int aOrigin) {
  static constexpr int cWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (aOrigin < Begin || aOrigin > End) {
    return -1;
  }
  return FileCalls::Seek(mDescriptor, aOffset, cWhence[aOrigin]);
}

void PCFile::Destroy() {
  // The number goes first, so that no second call can close what meanwhile belongs to another file.
  int const descriptor = mDescriptor;
  mDescriptor = -1;
  if (descriptor >= 0) {
    FileCalls::Close(descriptor);
  }
}
