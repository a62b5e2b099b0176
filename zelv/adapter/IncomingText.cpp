#include "zelv/adapter/IncomingText.h"

#include <atomic>

namespace Zelv::Adapter {

namespace {

std::atomic<std::size_t> inFlightBytes{0};

}  // namespace

IncomingText::~IncomingText() {
  inFlightBytes -= mCounted;
}

bool IncomingText::append(char const* aText, std::size_t aSize) {
  if (mText.size() + aSize > MaxSize) {
    return false;
  }
  if (inFlightBytes.fetch_add(aSize) + aSize > MaxInFlight) {
    inFlightBytes -= aSize;
    return false;
  }
  mCounted += aSize;
  mText.append(aText, aSize);
  return true;
}

std::size_t IncomingText::inFlight() {
  return inFlightBytes;
}

}  // namespace Zelv::Adapter
