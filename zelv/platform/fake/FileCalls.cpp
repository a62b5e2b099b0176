#include "zelv/platform/linux/FileCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <optional>

#include "zelv/platform/fake/FakeFiles.h"

namespace Zelv::Platform {
namespace {

/// The fault of one kind of call.
struct Fault {
  int calls = 0;
  /// Number of the first call that fails; 0 for none.
  int first = 0;
  bool forEver = false;

  bool strikes() const { return first != 0 && (forEver ? calls >= first : calls == first); }
};

std::mutex theLock;
// Guarded by theLock.
std::array<Fault, Fake::FakeFiles::Seek + 1> theFaults;
std::optional<std::size_t> theSpace;

bool fails(Fake::FakeFiles::Call aCall) {
  std::lock_guard lock(theLock);
  Fault& fault = theFaults[aCall];
  ++fault.calls;
  if (fault.strikes()) {
    errno = EIO;
    return true;
  }
  return false;
}

// How much of a write the disk takes.
std::size_t spaceFor(std::size_t aSize) {
  std::lock_guard lock(theLock);
  if (!theSpace) {
    return aSize;
  }
  std::size_t const size = std::min(aSize, *theSpace);
  *theSpace -= size;
  return size;
}

void setFault(Fake::FakeFiles::Call aCall, int aNth, bool aForEver) {
  std::lock_guard lock(theLock);
  Fault& fault = theFaults[aCall];
  fault.first = fault.calls + aNth;
  fault.forEver = aForEver;
}

}  // namespace

int FileCalls::Open(char const* aPath, int aFlags, mode_t aMode) {
  return fails(Fake::FakeFiles::Open) ? -1 : ::open(aPath, aFlags, aMode);
}

ssize_t FileCalls::Read(int aDescriptor, void* aBuffer, std::size_t aSize) {
  return fails(Fake::FakeFiles::Read) ? -1 : ::read(aDescriptor, aBuffer, aSize);
}

off_t FileCalls::Seek(int aDescriptor, off_t aOffset, int aWhence) {
  return fails(Fake::FakeFiles::Seek) ? -1 : ::lseek(aDescriptor, aOffset, aWhence);
}

ssize_t FileCalls::Write(int aDescriptor, void const* aData, std::size_t aSize) {
  if (fails(Fake::FakeFiles::Write)) {
    return -1;
  }
  std::size_t const size = spaceFor(aSize);
  if (size == 0 && aSize > 0) {
    errno = ENOSPC;
    return -1;
  }
  return ::write(aDescriptor, aData, size);
}

int FileCalls::Sync(int aDescriptor) {
  return fails(Fake::FakeFiles::Sync) ? -1 : ::fsync(aDescriptor);
}

int FileCalls::Close(int aDescriptor) {
  bool const failing = fails(Fake::FakeFiles::Close);
  int const result = ::close(aDescriptor);
  if (failing) {
    errno = EIO;
    return -1;
  }
  return result;
}

int FileCalls::Rename(char const* aFrom, char const* aTo) {
  return fails(Fake::FakeFiles::Rename) ? -1 : ::rename(aFrom, aTo);
}

int FileCalls::Remove(char const* aPath) {
  return fails(Fake::FakeFiles::Remove) ? -1 : ::unlink(aPath);
}

namespace Fake {

void FakeFiles::FailNth(Call aCall, int aNth) {
  setFault(aCall, aNth, false);
}

void FakeFiles::FailFrom(Call aCall, int aNth) {
  setFault(aCall, aNth, true);
}

void FakeFiles::DiskFullAfter(std::size_t aBytes) {
  std::lock_guard lock(theLock);
  theSpace = aBytes;
}

int FakeFiles::Count(Call aCall) {
  std::lock_guard lock(theLock);
  return theFaults[aCall].calls;
}

void FakeFiles::Reset() {
  std::lock_guard lock(theLock);
  theFaults = {};
  theSpace.reset();
}

}  // namespace Fake
}  // namespace Zelv::Platform
