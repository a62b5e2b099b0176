#include "zelv/platform/linux/FileCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace Zelv::Platform {

int FileCalls::Open(char const* aPath, int aFlags, mode_t aMode) {
  return ::open(aPath, aFlags, aMode);
}

ssize_t FileCalls::Read(int aDescriptor, void* aBuffer, std::size_t aSize) {
  return ::read(aDescriptor, aBuffer, aSize);
}

off_t FileCalls::Seek(int aDescriptor, off_t aOffset, int aWhence) {
  return ::lseek(aDescriptor, aOffset, aWhence);
}

ssize_t FileCalls::Write(int aDescriptor, void const* aData, std::size_t aSize) {
  return ::write(aDescriptor, aData, aSize);
}

int FileCalls::Sync(int aDescriptor) {
  return ::fsync(aDescriptor);
}

int FileCalls::Close(int aDescriptor) {
  return ::close(aDescriptor);
}

int FileCalls::Rename(char const* aFrom, char const* aTo) {
  return ::rename(aFrom, aTo);
}

int FileCalls::Remove(char const* aPath) {
  return ::unlink(aPath);
}

}  // namespace Zelv::Platform
