#include "zelv/platform/Entropy.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace Zelv::Platform {

namespace {

// Up to this size the system gives all or nothing (getrandom(2)).
constexpr std::size_t cMost = 256;

/// Raised in each child of the process, which must not give out what its parent does.
std::atomic<unsigned> theGeneration{0};

/// Bytes of the system that nobody has got yet. Asking takes much longer than the bytes do, so
/// several times as many as are wanted are asked for. Each thread has its own and takes no lock.
struct Reserve {
  std::array<unsigned char, cMost> bytes;
  std::size_t left = 0;
  unsigned generation = 0;
};

thread_local Reserve theReserve;

bool askSystem(void* aBuffer, std::size_t aSize) {
  ssize_t result;
  do {
    result = ::getrandom(aBuffer, aSize, GRND_NONBLOCK);
  } while (result < 0 && errno == EINTR);
  return result == static_cast<ssize_t>(aSize);
}

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

unsigned generation() {
  static int const watched = ::pthread_atfork(nullptr, nullptr, [] { theGeneration.fetch_add(1); });
  return watched == 0 ? theGeneration.load(std::memory_order_relaxed) : 0;
}

bool hasEnough(Reserve& aReserve, std::size_t aSize) {
  unsigned const now = generation();
  if (aReserve.generation == now && aReserve.left >= aSize) {
    return true;
  }
  aReserve.left = askSystem(aReserve.bytes.data(), cMost) ? cMost : 0;
  aReserve.generation = now;
  return aReserve.left >= aSize;
}

/// From the end. What was given is not kept, so that nobody finds it here later.
void take(Reserve& aReserve, void* aBuffer, std::size_t aSize) {
  aReserve.left -= aSize;
  unsigned char* const from = aReserve.bytes.data() + aReserve.left;
  std::memcpy(aBuffer, from, aSize);
  ::explicit_bzero(from, aSize);
}

}  // namespace

bool Entropy::Fill(void* aBuffer, std::size_t aSize) {
  if (aSize == 0 || aSize > cMost) {
    return aSize == 0;
  }
  if (!hasEnough(theReserve, aSize)) {
    return fillFromDevice(aBuffer, aSize);
  }
  take(theReserve, aBuffer, aSize);
  return true;
}

}  // namespace Zelv::Platform
