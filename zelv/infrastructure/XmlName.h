#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Zelv::Infrastructure {

/// Names of elements and attributes as the XML library reads them: it takes every byte beyond ASCII
/// for a letter.
class XmlName {
 public:
  static constexpr bool mayBegin(char aByte) { return kind(aByte) == Letter; }
  static constexpr bool mayHold(char aByte) { return kind(aByte) != None; }

  /// Whether a whole text is a name.
  static constexpr bool is(std::string_view aText) {
    if (aText.empty() || !mayBegin(aText.front())) {
      return false;
    }
    for (char const byte : aText) {
      if (!mayHold(byte)) {
        return false;
      }
    }
    return true;
  }

 private:
  enum Kind : unsigned char { None, Letter, Other };

  static constexpr Kind kind(char aByte) { return cKinds[static_cast<unsigned char>(aByte)]; }

  static constexpr std::array<Kind, 256> cKinds = [] {
    std::array<Kind, 256> kinds{};
    for (std::size_t byte = 0; byte < 256; ++byte) {
      bool const letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
      bool const digit = byte >= '0' && byte <= '9';
      if (letter || byte == '_' || byte >= 127) {
        kinds[byte] = Letter;
      } else if (digit || byte == '-' || byte == '.' || byte == ':') {
        kinds[byte] = Other;
      }
    }
    return kinds;
  }();
};

}  // namespace Zelv::Infrastructure
