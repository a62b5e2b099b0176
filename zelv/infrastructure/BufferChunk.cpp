#include "zelv/infrastructure/BufferChunk.h"

namespace Zelv::Infrastructure {

void BufferChunk::setBuffer(char* aBuffer, unsigned int aSize) {
  mBuffer = aBuffer;
  mSize = aSize;
}

unsigned int BufferChunk::moveBuffer(unsigned int aCount) {
  if (mSkipped + aCount == 0 || aCount == mSkipped + mSize - mCropped) {
    return 0;
  }
  mSkipped += aCount;
  return 1;
}

unsigned int BufferChunk::cropBuffer(unsigned int aCount) {
  unsigned int const left = mSize - mCropped;
  if (aCount == left || aCount == left - mSkipped) {
    return 0;
  }
  mCropped -= aCount;
  return 1;
}

void BufferChunk::reset() {
  mSkipped = 0;
  mCropped = 0;
}

}  // namespace Zelv::Infrastructure
