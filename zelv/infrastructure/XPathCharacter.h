#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Zelv::Infrastructure {

/// The kinds of bytes that expressions are made of. Every byte of a longer UTF-8 sequence counts as
/// one of a name, as the general engine has it.
class XPathCharacter {
 public:
  static bool isBlank(char aByte) { return is(aByte, blankKind); }
  static bool isDigit(char aByte) { return is(aByte, digitKind); }
  static bool isNameStart(char aByte) { return is(aByte, startKind); }
  static bool isNamePart(char aByte) { return is(aByte, startKind | digitKind | partKind); }

  /// Whether the byte is a character by itself that may stand in an expression.
  static bool isPlain(char aByte) { return is(aByte, plainKind); }

 private:
  static constexpr unsigned blankKind = 1;
  static constexpr unsigned digitKind = 2;
  static constexpr unsigned startKind = 4;
  static constexpr unsigned partKind = 8;
  static constexpr unsigned plainKind = 16;

  static constexpr std::uint8_t kindOf(unsigned aByte) {
    bool const blank = aByte == ' ' || aByte == '\t' || aByte == '\n' || aByte == '\r';
    bool const letter = (aByte >= 'a' && aByte <= 'z') || (aByte >= 'A' && aByte <= 'Z');
    unsigned kind = 0;
    kind |= blank ? blankKind : 0;
    kind |= aByte >= '0' && aByte <= '9' ? digitKind : 0;
    kind |= letter || aByte == '_' || aByte >= 0x80 ? startKind : 0;
    kind |= aByte == '-' || aByte == '.' ? partKind : 0;
    kind |= aByte < 0x80 && (aByte >= 0x20 || blank) ? plainKind : 0;
    return static_cast<std::uint8_t>(kind);
  }

  static constexpr std::array<std::uint8_t, 256> table() {
    std::array<std::uint8_t, 256> kinds{};
    for (unsigned byte = 0; byte < kinds.size(); ++byte) {
      kinds[byte] = kindOf(byte);
    }
    return kinds;
  }

  static bool is(char aByte, unsigned aKinds) {
    return (sKinds[static_cast<unsigned char>(aByte)] & aKinds) != 0;
  }

  static std::array<std::uint8_t, 256> const sKinds;
};

inline constexpr std::array<std::uint8_t, 256> XPathCharacter::sKinds = XPathCharacter::table();

}  // namespace Zelv::Infrastructure
