#pragma once

#include <cstddef>

#include "zelv/platform/Export.h"

/// A file opened for reading.
class ZELV_EXPORT PCFile {
 public:
  /// Where Seek() counts from.
  enum Origin { Begin = 0, Current = 1, End = 2 };

  PCFile() = default;
  PCFile(PCFile const&) = delete;
  PCFile& operator=(PCFile const&) = delete;
  ~PCFile();

  /// Opens a file.
  ///
  /// Only regular files open: a directory, a pipe or a device fails at once, without waiting. The
  /// descriptor MUST NOT be inherited by children.
  ///
  /// @param aMode  0, reading; other values fail.
  /// @return true when the file is open. An object that is open already fails.
  bool Create(char const* aPath, int aMode);

  /// Reads up to aSize bytes into aBuffer, which the caller owns.
  /// @return the number of bytes read, 0 at the end, -1 on failure.
  long Read(void* aBuffer, std::size_t aSize);

  /// Moves the position. @return the new position from the beginning, -1 on failure.
  long long Seek(long long aOffset, int aOrigin);

  /// Closes the file. Does nothing when none is open.
  void Destroy();

 private:
  int mDescriptor = -1;
};
