#include "zelv/platform/Entropy.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>

namespace Zelv::Platform {

namespace {

/// Gives numbers also before the system's pool is filled, and on systems without the call.
bool fillFromDevice(void* aBuffer, std::size_t aSize) {
  int const device = ::open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (device < 0) {
    return false;
  }
  ssize_t const result = ::read(device, aBuffer, aSize);
  ::close(device);
  return result == static_cast<ssize_t>(aSize);
}

}  // namespace

bool Entropy::Fill(void* aBuffer, std::size_t aSize) {
  // Up to this size the system gives all or nothing (getrandom(2)).
  if (aSize > 256) {
    return false;
  }
  ssize_t result;
  do {
    result = ::getrandom(aBuffer, aSize, GRND_NONBLOCK);
  } while (result < 0 && errno == EINTR);
  return result == static_cast<ssize_t>(aSize) || fillFromDevice(aBuffer, aSize);
}

}  // namespace Zelv::Platform
