#pragma once

#include <sys/types.h>

#include <cstddef>

namespace Zelv::Platform {

/// The calls into the system that PCFile and DurableFile make. Results and errno are those of the
/// system; tests put faults in their place.
class FileCalls {
 public:
  static int Open(char const* aPath, int aFlags, mode_t aMode);
  static ssize_t Read(int aDescriptor, void* aBuffer, std::size_t aSize);
  static off_t Seek(int aDescriptor, off_t aOffset, int aWhence);
  static ssize_t Write(int aDescriptor, void const* aData, std::size_t aSize);
  static int Sync(int aDescriptor);
  static int Close(int aDescriptor);
  static int Rename(char const* aFrom, char const* aTo);
  static int Remove(char const* aPath);
};

}  // namespace Zelv::Platform
