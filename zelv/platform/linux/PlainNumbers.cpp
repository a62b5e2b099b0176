#include "zelv/platform/PlainNumbers.h"

#include <clocale>

namespace Zelv::Platform {

namespace {

// The C locale is part of the C library: this allocates nothing and cannot fail.
locale_t plain() {
  static locale_t const made = newlocale(LC_ALL_MASK, "C", nullptr);
  return made;
}

}  // namespace

PlainNumbers::PlainNumbers() : mFormer(uselocale(plain())) {}

PlainNumbers::~PlainNumbers() {
  uselocale(static_cast<locale_t>(mFormer));
}

}  // namespace Zelv::Platform
