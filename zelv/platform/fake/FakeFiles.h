#pragma once

#include <cstddef>

namespace Zelv::Platform::Fake {

/// Faults in the files behind PCFile and DurableFile. Without a fault they are real files; files
/// that a test opens by itself are never touched.
class FakeFiles {
 public:
  /// What can fail. DurableFile::Write() makes Open, Write, Sync, Close; DurableFile::Replace()
  /// makes Rename and then Open, Sync, Close of the directory.
  enum Call { Open, Read, Write, Sync, Close, Rename, Remove, Seek };

  /// The aNth call of this kind from now on fails, 1 being the next; the others work. Replaces an
  /// earlier fault of the same kind. A failing Close closes all the same.
  static void FailNth(Call aCall, int aNth = 1);

  /// As FailNth(), but all later calls fail as well, until Reset().
  static void FailFrom(Call aCall, int aNth = 1);

  /// From now on aBytes can still be written in all: the write that goes beyond is cut short, the
  /// next one fails, as on a full disk.
  static void DiskFullAfter(std::size_t aBytes);

  /// How many calls of this kind there were since Reset(), failed ones included.
  static int Count(Call aCall);

  /// Takes all faults away and counts from 0.
  static void Reset();
};

}  // namespace Zelv::Platform::Fake
