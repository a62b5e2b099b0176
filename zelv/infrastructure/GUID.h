#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <type_traits>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// A 128-bit identifier: of transactions, subscriptions, timers, devices, handlers and interfaces.
///
/// Identifiers made by createGUID() have the form of a random one, version 4 (RFC 9562, 5.4). Text
/// and order are those of the four parts below. A value like any other: copying is cheap, and one
/// object is no more thread-safe than an int; all static operations may be called from any thread.
class ZELV_EXPORT GUID {
 public:
  /// All parts zero. Constant-initialised: other units may use it while they are being initialised.
  static GUID const nullGUID;

  /// All parts zero. The first one made in a process tries the source of random bytes.
  constexpr GUID() {
    if (!std::is_constant_evaluated()) {
      seedOnce();
    }
  }

  constexpr GUID(GUID const&) noexcept = default;

  /// Reads a text, see createFromString(). Implicit, so that a text serves wherever an identifier
  /// is asked for.
  /// @throws std::invalid_argument also for a null pointer.
  GUID(char const* aText);

  /// Reads a text, see createFromString().
  GUID(std::string const& aText);

  constexpr virtual ~GUID() = default;

  constexpr GUID& operator=(GUID const&) noexcept = default;

  /// A new random identifier.
  ///
  /// Never fails: while the set's source of random bytes gives none, the numbers come from
  /// PCMath::Random(), which are weak.
  static GUID createGUID();

  /// Reads one of the two text forms into *aGuid:
  ///   - 22 characters of Base64: accepted, but always read as the all-zero identifier;
  ///   - any other length: 8-4-4-4-12 hexadecimal digits, within braces or not. What separates the
  ///     five groups and what follows them is not looked at, and a group ends at its first
  ///     character that is no digit, so that "12x4" reads as 12.
  ///
  /// @throws std::logic_error for a null aGuid; std::invalid_argument for an empty text, a group
  /// without any digit, or 22 characters that are no Base64; std::out_of_range for a text that ends
  /// before its last group. *aGuid is then as it was.
  static void createFromString(GUID* aGuid, std::string const& aText);

  /// The 36 characters 8-4-4-4-12, hexadecimal digits in lower case, without braces.
  std::string toString() const;

  /// The 22 characters of base64Encode() over the parts' bytes, each part with its low byte first;
  /// the padding is cut off. Only for others to read: createFromString() does not bring it back.
  std::string toBase64() const;

  constexpr bool operator==(GUID const& aOther) const noexcept {
    return mFirstPart == aOther.mFirstPart && mSecondPart == aOther.mSecondPart &&
           mThirdPart == aOther.mThirdPart && mFourthPart == aOther.mFourthPart;
  }

  /// Orders by the first, second, third and fourth part, each as an unsigned number.
  constexpr bool operator<(GUID const& aOther) const noexcept {
    if (mFirstPart != aOther.mFirstPart) {
      return mFirstPart < aOther.mFirstPart;
    }
    if (mSecondPart != aOther.mSecondPart) {
      return mSecondPart < aOther.mSecondPart;
    }
    if (mThirdPart != aOther.mThirdPart) {
      return mThirdPart < aOther.mThirdPart;
    }
    return mFourthPart < aOther.mFourthPart;
  }

  constexpr bool operator>(GUID const& aOther) const noexcept {
    return !(*this < aOther) && !(*this == aOther);
  }

 private:
  friend class GUIDState;

  /// What one new identifier takes from the generator.
  using Draws = std::array<std::uint32_t, 5>;

  static void seedOnce() {
    if (!mSeeded.load(std::memory_order_acquire)) {
      seedRNG();
    }
  }

  static void seedRNG();
  static Draws RNG();
  static std::uint32_t fallbackRNG();

  std::uint32_t mFirstPart = 0;
  std::uint16_t mSecondPart = 0;
  /// Its top four bits are the version.
  std::uint16_t mThirdPart = 0;
  /// Its top two bits are the variant.
  std::uint64_t mFourthPart = 0;

  /// Two threads that race on the first identifier may both seed, which does no harm.
  static std::atomic<bool> mSeeded;
  /// True when the source of random bytes worked while seeding; it is then asked for each
  /// identifier anew, also after it has failed once.
  static std::atomic<bool> mDevRandom;
};

}  // namespace Zelv::Infrastructure
