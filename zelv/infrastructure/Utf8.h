#pragma once

namespace Zelv::Infrastructure {

/// How many bytes the XML library takes for the character that begins with this byte, when it reads
/// UTF-8; 1 for a byte that begins none.
constexpr int utf8Length(char aByte) {
  auto const byte = static_cast<unsigned char>(aByte);
  if (byte < 0xC2 || byte > 0xF4) {
    return 1;
  }
  return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

}  // namespace Zelv::Infrastructure
