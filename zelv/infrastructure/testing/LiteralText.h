#pragma once

#include <cstdint>
#include <cstdio>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>

namespace Zelv::Infrastructure::Testing {

/// The text operations once more, as plainly as they can be told and without regard for speed: the
/// oracle that tests and fuzz targets hold the real ones against.
class LiteralText {
 public:
  /// Reads an identifier as GUID::createFromString() does; the result is what toString() makes of
  /// it. Streams read the groups, in the classic locale.
  static std::string readIdentifier(std::string const& aText) {
    if (aText.empty()) {
      throw std::invalid_argument("Empty GUID string");
    }
    if (aText.size() == 22) {
      base64Decode(aText + "==");
      return "00000000-0000-0000-0000-000000000000";
    }
    bool const braces = aText[0] == '{' && aText[aText.size() - 1] == '}';
    std::size_t const o = braces ? 1 : 0;
    std::string const first = "0x" + aText.substr(o, 8);
    std::string const second = "0x" + aText.substr(o + 9, 4);
    std::string const third = "0x" + aText.substr(o + 14, 4);
    std::string const fourth = aText.substr(o + 19, 4);
    std::string const fifth = aText.substr(o + 24, 12);
    auto const p1 = readHex<std::uint32_t>(first);
    auto const p2 = readHex<std::uint16_t>(second);
    auto const p3 = readHex<std::uint16_t>(third);
    auto const p4 = readHex<std::uint64_t>("0x" + fourth + fifth);
    char digits[33];
    std::snprintf(digits, sizeof digits, "%08lx%04lx%04lx%016llx", static_cast<unsigned long>(p1),
                  static_cast<unsigned long>(p2), static_cast<unsigned long>(p3),
                  static_cast<unsigned long long>(p4));
    std::string text = digits;
    for (std::size_t const at : {8U, 13U, 18U, 23U}) {
      text.insert(at, "-");
    }
    return text;
  }

  static std::string base64Encode(std::string const& aData) {
    std::string bits;
    for (char const byte : aData) {
      for (int bit = 7; bit >= 0; --bit) {
        bits += (static_cast<unsigned char>(byte) >> bit & 1) != 0 ? '1' : '0';
      }
    }
    std::string text;
    for (std::size_t at = 0; at < bits.size(); at += 6) {
      std::string six = bits.substr(at, 6);
      six.resize(6, '0');
      text += alphabet()[std::stoul(six, nullptr, 2)];
    }
    while (text.size() % 4 != 0) {
      text += '=';
    }
    return text;
  }

  static std::string base64Decode(std::string const& aText) {
    if (aText.size() % 4 != 0) {
      throw std::invalid_argument("Not BASE64 Data - Length does not match");
    }
    std::string result;
    std::size_t padding = 0;
    for (std::size_t group = 0; group < aText.size(); group += 4) {
      for (char const character : aText.substr(group, 4)) {
        if (character == '=') {
          ++padding;
        } else if (character != '+' && alphabet().find(character) == std::string::npos) {
          throw std::invalid_argument("Not BASE64 Data - Invalid character");
        }
      }
      result += std::string(3, '\0');
    }
    if (padding > 2) {
      throw std::invalid_argument("Not BASE64 Data - too much padding");
    }
    return result.substr(0, result.size() - padding);
  }

  /// Erases the first predicate over and over.
  static std::string removePredicates(std::string aXPath) {
    for (;;) {
      std::size_t const open = aXPath.find('[');
      if (open == std::string::npos) {
        return aXPath;
      }
      std::size_t const close = aXPath.find(']', open);
      if (close == std::string::npos) {
        return aXPath;
      }
      aXPath.erase(open, close - open + 1);
    }
  }

  static std::string before(std::string const& aXPath, std::string const& aMark) {
    std::string text;
    for (std::size_t i = 0; i < aXPath.size(); ++i) {
      if (aXPath.compare(i, aMark.size(), aMark) == 0) {
        return text;
      }
      text += aXPath[i];
    }
    return text;
  }

  static std::string firstPredicate(std::string const& aXPath, std::string& aPrefix) {
    aPrefix = "";
    std::string prefix;
    std::string predicate;
    bool open = false;
    for (char const character : aXPath) {
      if (open && character == ']') {
        aPrefix = prefix;
        return predicate;
      }
      if (open) {
        predicate += character;
      } else if (character == '[') {
        open = true;
      } else {
        prefix += character;
      }
    }
    return "";
  }

  static std::string lastStep(std::string const& aXPath) {
    std::string step;
    bool slash = false;
    for (char const character : aXPath) {
      if (character == '/') {
        slash = true;
        step = "";
      } else {
        step += character;
      }
    }
    return slash ? step : "";
  }

  static bool isLocalXPath(std::string const& aXPath, std::string const& aDeviceId) {
    for (std::string const& head : {std::string("/Zelv/"), "/Zelv[@DeviceId='" + aDeviceId + "']/",
                                    "/Zelv[@DeviceId=\"" + aDeviceId + "\"]/"}) {
      if (aXPath.substr(0, head.size()) == head) {
        return true;
      }
    }
    return false;
  }

  static std::string escape(std::string const& aIn) {
    std::string out;
    std::size_t i = 0;
    while (i < aIn.size()) {
      if (aIn.substr(i, 3) == "&#x" && i + 2 < aIn.size()) {
        while (i < aIn.size() - 1 && aIn[i] != ';') {
          out += aIn[i++];
        }
      }
      out += escapeOne(static_cast<unsigned char>(aIn[i++]));
    }
    return out;
  }

  static std::string unescape(std::string aText) {
    for (char const* entity : {"&quot;", "&amp;", "&apos;", "&lt;", "&gt;"}) {
      aText = unescapeOne(entity, aText);
    }
    return aText;
  }

  /// Replaces the first occurrence and searches from the start again.
  static std::string unescapeOne(std::string const& aEntity, std::string aText) {
    std::string replacement;
    if (aEntity == "&quot;") {
      replacement = "\"";
    } else if (aEntity == "&amp;") {
      replacement = "&";
    } else if (aEntity == "&apos;") {
      replacement = "'";
    } else if (aEntity == "&lt;") {
      replacement = "<";
    } else if (aEntity == "&gt;") {
      replacement = ">";
    }
    for (std::size_t at = aText.find(aEntity); at != std::string::npos; at = aText.find(aEntity)) {
      aText.replace(at, aEntity.size(), replacement);
    }
    return aText;
  }

 private:
  static std::string const& alphabet() {
    static std::string const text =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 /";
    return text;
  }

  template <typename Part>
  static Part readHex(std::string const& aText) {
    std::istringstream stream(aText);
    stream.imbue(std::locale::classic());
    Part part = 0;
    if (!(stream >> std::hex >> part)) {
      throw std::invalid_argument("Invalid GUID string");
    }
    return part;
  }

  static std::string escapeOne(unsigned char aByte) {
    switch (aByte) {
      case '&':
        return "&amp;";
      case '<':
        return "&lt;";
      case '>':
        return "&gt;";
      case '"':
        return "&quot;";
      case '\'':
        return "&apos;";
      default:
        break;
    }
    if (aByte < 0x20) {
      char buffer[32];
      std::snprintf(buffer, sizeof buffer, "&#x%02X;", static_cast<unsigned>(aByte));
      return buffer;
    }
    return std::string(1, static_cast<char>(aByte));
  }
};

}  // namespace Zelv::Infrastructure::Testing
