#include "zelv/core/AssetSocket.h"

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv {

void AssetSocket::adopt(int aNumber) {
  close();
  mNumber = aNumber;
}

bool AssetSocket::shutdown(int aHow) {
  TCAutoLock lock(mLock);
  int const number = mNumber;
  return number < 0 || CCmSocket::Shutdown(number, aHow) >= 0;
}

void AssetSocket::close() {
  TCAutoLock lock(mLock);
  int const number = mNumber.exchange(-1);
  if (number >= 0) {
    CCmSocket::Close(number);
  }
}

}  // namespace Zelv
