#include "zelv/platform/DurableFile.h"

#include <fcntl.h>

#include <cerrno>

#include "zelv/platform/linux/FileCalls.h"

namespace Zelv::Platform {
namespace {

// A text with a NUL inside would name another file than its caller means.
bool isPath(std::string const& aPath) {
  return !aPath.empty() && aPath.find('\0') == std::string::npos;
}

bool writeAll(int aDescriptor, char const* aData, std::size_t aSize) {
  while (aSize > 0) {
    ssize_t const written = FileCalls::Write(aDescriptor, aData, aSize);
    if (written > 0) {
      aData += written;
      aSize -= static_cast<std::size_t>(written);
    } else if (written == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

bool sync(int aDescriptor) {
  int result;
  do {
    result = FileCalls::Sync(aDescriptor);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

// Linux gives the descriptor back also when a signal breaks in; what was written is forced by then.
bool close(int aDescriptor) {
  return FileCalls::Close(aDescriptor) == 0 || errno == EINTR;
}

std::string directoryOf(std::string const& aPath) {
  std::size_t const slash = aPath.rfind('/');
  if (slash == std::string::npos) {
    return ".";
  }
  return slash == 0 ? "/" : aPath.substr(0, slash);
}

bool syncDirectory(std::string const& aDirectory) {
  int const descriptor = FileCalls::Open(aDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
  if (descriptor < 0) {
    return false;
  }
  bool const synced = sync(descriptor);
  return close(descriptor) && synced;
}

}  // namespace

bool DurableFile::Write(std::string const& aPath, char const* aData, std::size_t aSize) {
  if (!isPath(aPath)) {
    return false;
  }
  // Without O_NONBLOCK the opening of a pipe that nobody reads would wait for ever.
  int const descriptor = FileCalls::Open(
      aPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  if (descriptor < 0) {
    return false;
  }
  bool const written = writeAll(descriptor, aData, aSize) && sync(descriptor);
  return close(descriptor) && written;
}

bool DurableFile::Replace(std::string const& aFrom, std::string const& aTo) {
  if (!isPath(aFrom) || !isPath(aTo)) {
    return false;
  }
  return FileCalls::Rename(aFrom.c_str(), aTo.c_str()) == 0 && syncDirectory(directoryOf(aTo));
}

bool DurableFile::Remove(std::string const& aPath) {
  return isPath(aPath) && (FileCalls::Remove(aPath.c_str()) == 0 || errno == ENOENT);
}

}  // namespace Zelv::Platform
