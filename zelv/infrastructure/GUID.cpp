#include "zelv/infrastructure/GUID.h"

#include <stdexcept>
#include <string_view>

#include "zelv/infrastructure/Base64.h"
#include "zelv/platform/Entropy.h"
#include "zelv/platform/PCMath.h"
#include "zelv/platform/PCTime.h"

namespace Zelv::Infrastructure {

namespace {

constexpr std::size_t cBase64Length = 22;
constexpr std::size_t cTextLength = 36;

char* putHex(char* aTo, std::uint64_t aValue, int aDigits) {
  for (int shift = 4 * (aDigits - 1); shift >= 0; shift -= 4) {
    *aTo++ = "0123456789abcdef"[aValue >> shift & 15];
  }
  return aTo;
}

void putBytes(std::string& aTo, std::uint64_t aValue, int aBytes) {
  for (int i = 0; i < aBytes; ++i) {
    aTo += static_cast<char>(aValue >> 8 * i & 255);
  }
}

template <typename Part>
void takeBytes(Part& aPart, std::string const& aBytes, std::size_t aFrom) {
  aPart = 0;
  for (std::size_t i = 0; i < sizeof(Part); ++i) {
    aPart |= static_cast<Part>(Part{static_cast<unsigned char>(aBytes[aFrom + i])} << 8 * i);
  }
}

int digitOf(char aCharacter) {
  if (aCharacter >= '0' && aCharacter <= '9') {
    return aCharacter - '0';
  }
  if (aCharacter >= 'a' && aCharacter <= 'f') {
    return aCharacter - 'a' + 10;
  }
  if (aCharacter >= 'A' && aCharacter <= 'F') {
    return aCharacter - 'A' + 10;
  }
  return -1;
}

/// Puts the digits at the front of a group behind those in aValue.
/// @return how many there were.
std::size_t appendDigits(std::string_view aGroup, std::uint64_t& aValue) {
  std::size_t count = 0;
  for (; count < aGroup.size() && digitOf(aGroup[count]) >= 0; ++count) {
    aValue = aValue << 4 | static_cast<std::uint64_t>(digitOf(aGroup[count]));
  }
  return count;
}

void require(bool aCondition) {
  if (!aCondition) {
    throw std::invalid_argument("Invalid GUID string");
  }
}

/// A group counts up to its first character that is no digit, and needs one digit at least: so
/// texts that peers and files hold have always been read.
template <typename Part>
void readGroup(Part& aPart, std::string_view aGroup) {
  std::uint64_t value = 0;
  require(appendDigits(aGroup, value) > 0);
  aPart = static_cast<Part>(value);
}

/// The last two groups are one number; the second counts only if all of the first are digits.
void readLastGroups(std::uint64_t& aPart, std::string_view aHigh, std::string_view aLow) {
  std::uint64_t value = 0;
  std::size_t const count = appendDigits(aHigh, value);
  require(count > 0);
  if (count == aHigh.size()) {
    appendDigits(aLow, value);
  }
  aPart = value;
}

}  // namespace

constinit GUID const GUID::nullGUID;
constinit std::atomic<bool> GUID::mSeeded{false};
constinit std::atomic<bool> GUID::mDevRandom{false};

GUID::GUID(char const* aText) {
  if (aText == nullptr) {
    throw std::invalid_argument("NULL GUID string");
  }
  createFromString(this, aText);
}

GUID::GUID(std::string const& aText) {
  createFromString(this, aText);
}

void GUID::seedRNG() {
  std::uint32_t probe = 0;
  if (Platform::Entropy::Fill(&probe, sizeof probe)) {
    mDevRandom.store(true, std::memory_order_relaxed);
  }
  if (!mDevRandom.load(std::memory_order_relaxed)) {
    PCMath::Random(static_cast<unsigned long>(PCTime::EpochTime()));
  }
  mSeeded.store(true, std::memory_order_release);
}

/// All draws of an identifier come by one call of the platform's source. A device kept open would
/// save no more, and would be one descriptor to share between threads, to lose and to inherit.
GUID::Draws GUID::RNG() {
  seedOnce();
  Draws draws{};
  if (mDevRandom.load(std::memory_order_relaxed) &&
      Platform::Entropy::Fill(draws.data(), sizeof draws)) {
    return draws;
  }
  for (std::uint32_t& draw : draws) {
    draw = fallbackRNG();
  }
  return draws;
}

/// Made for numbers of 15 bits; a number out of that range only costs quality.
std::uint32_t GUID::fallbackRNG() {
  std::int64_t const a = PCMath::Random(0);
  std::int64_t const b = PCMath::Random(0);
  std::int64_t const c = PCMath::Random(0);
  auto const high = static_cast<std::uint64_t>(a) << 15;
  auto const both = (high + static_cast<std::uint64_t>(b)) << 2;
  return static_cast<std::uint32_t>(both + static_cast<std::uint64_t>(c % 4));
}

GUID GUID::createGUID() {
  Draws const draws = RNG();
  GUID guid(nullGUID);
  guid.mFirstPart = draws[0];
  guid.mSecondPart = static_cast<std::uint16_t>(draws[1]);
  auto const third = static_cast<std::uint16_t>(draws[2]);
  guid.mThirdPart = static_cast<std::uint16_t>((third >> 4) + 0x4000);
  std::uint64_t const high = (draws[3] & 0xBFFFFFFFU) | 0x80000000U;
  guid.mFourthPart = high << 32 | draws[4];
  return guid;
}

void GUID::createFromString(GUID* aGuid, std::string const& aText) {
  if (aGuid == nullptr) {
    throw std::logic_error("NULL GUID Pointer in CreateFromString");
  }
  if (aText.empty()) {
    throw std::invalid_argument("Empty GUID string");
  }
  GUID read(nullGUID);
  if (aText.size() == cBase64Length) {
    std::string const bytes = base64Decode(aText + "==");
    takeBytes(read.mFirstPart, bytes, 0);
    takeBytes(read.mSecondPart, bytes, 4);
    takeBytes(read.mThirdPart, bytes, 6);
    takeBytes(read.mFourthPart, bytes, 8);
  } else {
    std::string_view const text(aText);
    std::size_t const o = text.front() == '{' && text.back() == '}' ? 1 : 0;
    std::string_view const first = text.substr(o, 8);
    std::string_view const second = text.substr(o + 9, 4);
    std::string_view const third = text.substr(o + 14, 4);
    std::string_view const high = text.substr(o + 19, 4);
    std::string_view const low = text.substr(o + 24, 12);
    readGroup(read.mFirstPart, first);
    readGroup(read.mSecondPart, second);
    readGroup(read.mThirdPart, third);
    readLastGroups(read.mFourthPart, high, low);
  }
  *aGuid = read;
}

std::string GUID::toString() const {
  std::string text(cTextLength, '-');
  char* at = putHex(text.data(), mFirstPart, 8) + 1;
  at = putHex(at, mSecondPart, 4) + 1;
  at = putHex(at, mThirdPart, 4) + 1;
  at = putHex(at, mFourthPart >> 48, 4) + 1;
  putHex(at, mFourthPart, 12);
  return text;
}

std::string GUID::toBase64() const {
  std::string bytes;
  bytes.reserve(16);
  putBytes(bytes, mFirstPart, 4);
  putBytes(bytes, mSecondPart, 2);
  putBytes(bytes, mThirdPart, 2);
  putBytes(bytes, mFourthPart, 8);
  std::string text = base64Encode(bytes);
  text.resize(cBase64Length);
  return text;
}

}  // namespace Zelv::Infrastructure
