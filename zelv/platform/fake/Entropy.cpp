#include "zelv/platform/Entropy.h"

#include <cstdint>
#include <mutex>

#include "zelv/platform/fake/FakeEntropy.h"

namespace Zelv::Platform {
namespace {

std::mutex theLock;
// Guarded by theLock.
std::string theScript;
std::uint64_t theSequence = 0;
int theFailing = 0;
bool theFailsAll = false;

// splitmix64 (https://prng.di.unimi.it/splitmix64.c): every number once before any comes again.
std::uint64_t nextNumber() {
  std::uint64_t number = theSequence += 0x9e3779b97f4a7c15;
  number = (number ^ (number >> 30)) * 0xbf58476d1ce4e5b9;
  number = (number ^ (number >> 27)) * 0x94d049bb133111eb;
  return number ^ (number >> 31);
}

char nextByte() {
  static std::uint64_t rest = 0;
  static int left = 0;
  if (!theScript.empty()) {
    char const byte = theScript.front();
    theScript.erase(0, 1);
    return byte;
  }
  if (left == 0) {
    rest = nextNumber();
    left = 8;
  }
  --left;
  return static_cast<char>(rest >> (8 * left) & 0xff);
}

}  // namespace

bool Entropy::Fill(void* aBuffer, std::size_t aSize) {
  std::lock_guard lock(theLock);
  if (theFailing > 0) {
    --theFailing;
    return false;
  }
  if (theFailsAll || aSize > 256) {
    return false;
  }
  for (std::size_t i = 0; i < aSize; ++i) {
    static_cast<char*>(aBuffer)[i] = nextByte();
  }
  return true;
}

namespace Fake {

void FakeEntropy::FailNext(int aCount) {
  std::lock_guard lock(theLock);
  theFailing = aCount;
}

void FakeEntropy::FailAll() {
  std::lock_guard lock(theLock);
  theFailsAll = true;
}

void FakeEntropy::Script(std::string const& aBytes) {
  std::lock_guard lock(theLock);
  theScript = aBytes;
}

void FakeEntropy::Reset() {
  std::lock_guard lock(theLock);
  theScript.clear();
  theFailing = 0;
  theFailsAll = false;
}

}  // namespace Fake
}  // namespace Zelv::Platform
