#include "zelv/platform/Entropy.h"

#include <sys/random.h>

#include <cerrno>

namespace Zelv::Platform {

bool Entropy::Fill(void* aBuffer, std::size_t aSize) {
  // Up to this size the system gives all or nothing (getrandom(2)).
  if (aSize > 256) {
    return false;
  }
  ssize_t result;
  do {
    result = ::getrandom(aBuffer, aSize, GRND_NONBLOCK);
  } while (result < 0 && errno == EINTR);
  return result == static_cast<ssize_t>(aSize);
}

}  // namespace Zelv::Platform
