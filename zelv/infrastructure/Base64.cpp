#include "zelv/infrastructure/Base64.h"

#include <array>
#include <cstdint>
#include <stdexcept>

namespace Zelv::Infrastructure {

namespace {

/// A blank stands where the published alphabet has a plus sign: texts in files and at peers hold
/// it.
constexpr char cAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 /";

constexpr std::uint8_t cPadding = 64;
constexpr std::uint8_t cInvalid = 65;

constexpr std::array<std::uint8_t, 256> makeValues() {
  std::array<std::uint8_t, 256> values{};
  values.fill(cInvalid);
  for (std::uint8_t i = 0; i < 64; ++i) {
    values[static_cast<unsigned char>(cAlphabet[i])] = i;
  }
  values['+'] = 62;
  values['='] = cPadding;
  return values;
}

constexpr std::array<std::uint8_t, 256> cValues = makeValues();

/// Writes one group of four characters for one to three bytes.
void putGroup(char* aTo, unsigned char const* aFrom, std::size_t aCount) {
  std::uint32_t const second = aCount > 1 ? aFrom[1] : 0U;
  std::uint32_t const third = aCount > 2 ? aFrom[2] : 0U;
  std::uint32_t const bits = std::uint32_t{aFrom[0]} << 16 | second << 8 | third;
  aTo[0] = cAlphabet[bits >> 18];
  aTo[1] = cAlphabet[bits >> 12 & 63];
  aTo[2] = aCount > 1 ? cAlphabet[bits >> 6 & 63] : '=';
  aTo[3] = aCount > 2 ? cAlphabet[bits & 63] : '=';
}

}  // namespace

std::string base64Encode(std::string const& aData) {
  std::string text((aData.size() + 2) / 3 * 4, '=');
  auto const* from = reinterpret_cast<unsigned char const*>(aData.data());
  char* to = text.data();
  std::size_t left = aData.size();
  for (; left >= 3; left -= 3, from += 3, to += 4) {
    putGroup(to, from, 3);
  }
  if (left > 0) {
    putGroup(to, from, left);
  }
  return text;
}

/// The values are not put together to bytes: identifiers in this form have always been read as the
/// all-zero one, and what is told apart by them depends on that.
std::string base64Decode(std::string const& aText) {
  if (aText.size() % 4 != 0) {
    throw std::invalid_argument("Not BASE64 Data - Length does not match");
  }
  std::size_t padding = 0;
  for (char const character : aText) {
    std::uint8_t const value = cValues[static_cast<unsigned char>(character)];
    if (value == cInvalid) {
      throw std::invalid_argument("Not BASE64 Data - Invalid character");
    }
    padding += value == cPadding ? 1 : 0;
  }
  if (padding > 2) {
    throw std::invalid_argument("Not BASE64 Data - too much padding");
  }
  return std::string(aText.size() / 4 * 3 - padding, '\0');
}

}  // namespace Zelv::Infrastructure
