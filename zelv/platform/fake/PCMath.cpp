#include "zelv/platform/PCMath.h"

#include <cstdint>
#include <deque>
#include <mutex>

#include "zelv/platform/fake/FakeMath.h"

namespace {

std::mutex theLock;
// Guarded by theLock.
std::deque<long> theScript;
std::vector<unsigned long> theSeeds;
std::uint32_t theState = 1;
int theDraws = 0;

long nextNumber() {
  theState = theState * 1103515245U + 12345U;
  return static_cast<long>(theState >> 16 & 0x7fff);
}

}  // namespace

long PCMath::Random(unsigned long aSeed) {
  std::lock_guard lock(theLock);
  if (aSeed != 0) {
    theSeeds.push_back(aSeed);
    theState = static_cast<std::uint32_t>(aSeed);
    return nextNumber();
  }
  ++theDraws;
  if (theScript.empty()) {
    return nextNumber();
  }
  long const number = theScript.front();
  theScript.pop_front();
  return number;
}

namespace Zelv::Platform::Fake {

void FakeMath::Script(std::vector<long> const& aDraws) {
  std::lock_guard lock(theLock);
  theScript.assign(aDraws.begin(), aDraws.end());
}

std::vector<unsigned long> FakeMath::Seeds() {
  std::lock_guard lock(theLock);
  return theSeeds;
}

int FakeMath::Draws() {
  std::lock_guard lock(theLock);
  return theDraws;
}

void FakeMath::Reset() {
  std::lock_guard lock(theLock);
  theScript.clear();
  theSeeds.clear();
  theDraws = 0;
}

}  // namespace Zelv::Platform::Fake
