#include "apps/zelv-tv/ValueText.h"

#include <algorithm>
#include <charconv>

namespace ZelvTv {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

bool isControl(char aByte) {
  auto const value = static_cast<unsigned char>(aByte);
  return value < 0x20U || value == 0x7FU;
}

/// Reads the two digits of "\xHH" at the start of aText.
std::optional<char> byteOf(std::string_view aText) {
  unsigned value = 0;
  if (aText.size() < 2) {
    return std::nullopt;
  }
  auto const [end, error] = std::from_chars(aText.data(), aText.data() + 2, value, 16);
  if (error != std::errc() || end != aText.data() + 2) {
    return std::nullopt;
  }
  return static_cast<char>(value);
}

}  // namespace

std::string ValueText::ToLine(std::string_view aValue) {
  std::string line;
  line.reserve(aValue.size());
  for (char const byte : aValue) {
    if (byte == '\n') {
      line += "\\n";
    } else if (byte == '\\') {
      line += "\\\\";
    } else if (isControl(byte)) {
      auto const value = static_cast<unsigned char>(byte);
      line += {'\\', 'x', kDigits[value >> 4U], kDigits[value & 0xFU]};
    } else {
      line += byte;
    }
  }
  return line;
}

std::string ValueText::ToField(std::string_view aValue) {
  if (aValue.empty()) {
    return "-";
  }
  std::string field;
  for (char const byte : ToLine(aValue)) {
    field += byte == ' ' ? std::string("\\x20") : std::string(1, byte);
  }
  return field;
}

std::optional<std::string> ValueText::FromLine(std::string_view aText) {
  std::string value;
  value.reserve(aText.size());
  while (!aText.empty()) {
    if (aText.front() != '\\') {
      value += aText.front();
      aText.remove_prefix(1);
      continue;
    }
    char const kind = aText.size() > 1 ? aText[1] : '\0';
    aText.remove_prefix(std::min<std::size_t>(2, aText.size()));
    if (kind == 'n') {
      value += '\n';
    } else if (kind == '\\') {
      value += '\\';
    } else if (auto const byte = byteOf(aText); kind == 'x' && byte) {
      value += *byte;
      aText.remove_prefix(2);
    } else {
      return std::nullopt;
    }
  }
  return value;
}

}  // namespace ZelvTv
