#pragma once

#include <unistd.h>

#include <utility>

namespace ZelvCtl {

/// Closes a file descriptor at its end.
class Descriptor {
 public:
  /// @param aNumber  -1 for none.
  explicit Descriptor(int aNumber = -1) : mNumber(aNumber) {}
  Descriptor(Descriptor&& aOther) noexcept : mNumber(std::exchange(aOther.mNumber, -1)) {}
  Descriptor& operator=(Descriptor&& aOther) noexcept {
    std::swap(mNumber, aOther.mNumber);
    return *this;
  }
  ~Descriptor() {
    if (mNumber >= 0) {
      ::close(mNumber);
    }
  }

  int number() const { return mNumber; }

 private:
  int mNumber;
};

}  // namespace ZelvCtl
