#pragma once

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// One piece of a body in memory that belongs to somebody else. Copies show the same memory.
class ZELV_EXPORT BufferChunk {
 public:
  void setBuffer(char* aBuffer, unsigned int aSize);

  /// The first byte that counts.
  char* getBuffer() const { return mBuffer + mSkipped; }

  /// Bytes that count: neither skipped at the front nor cropped at the end.
  unsigned int getSize() const { return mSize - mSkipped - mCropped; }

  /// Skips bytes at the front. @return 1; 0, with nothing changed, when the first byte would then
  /// be that of the buffer, or for exactly as many bytes as lie in front of the cropped ones with
  /// those that are skipped already.
  unsigned int moveBuffer(unsigned int aCount);

  /// Meant to shorten the end; its sign is the wrong one, so it lengthens it. @return 1; 0,
  /// with nothing changed, for exactly as many bytes as are left, counted with or without those
  /// skipped at the front.
  unsigned int cropBuffer(unsigned int aCount);

  /// Skips and crops nothing any more.
  void reset();

 private:
  unsigned int mSize = 0;
  unsigned int mSkipped = 0;
  char* mBuffer = nullptr;
  unsigned int mCropped = 0;
};

}  // namespace Zelv::Infrastructure
