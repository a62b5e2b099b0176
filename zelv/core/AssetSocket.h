#pragma once

#include <atomic>

#include "zelv/platform/PCMutex.h"

namespace Zelv {

/// Owns the number of a socket, and closes it once.
///
/// One thread uses the number and closes it; others may shut the socket down, which ends whatever
/// that thread waits in, and never meet a number that belongs to somebody else by then.
class AssetSocket {
 public:
  AssetSocket() = default;
  AssetSocket(AssetSocket const&) = delete;
  AssetSocket& operator=(AssetSocket const&) = delete;
  ~AssetSocket() { close(); }

  /// Takes a socket over; one that it has already is closed.
  void adopt(int aNumber);

  /// -1 when there is none, or none any more.
  int number() const { return mNumber; }

  /// Ends sending (1) or both ways (2). @return false, with errno set, when that failed; true also
  /// when there is no socket.
  bool shutdown(int aHow);

  void close();

  /// Lets go of it, without closing it.
  void release() { mNumber = -1; }

 private:
  PCMutex mLock;
  std::atomic<int> mNumber{-1};
};

}  // namespace Zelv
