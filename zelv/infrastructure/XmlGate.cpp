#include "zelv/infrastructure/XmlGate.h"

#include <tinyxml.h>

#include <cctype>
#include <cstring>

#include "zelv/infrastructure/Utf8.h"
#include "zelv/infrastructure/XmlName.h"

namespace Zelv::Infrastructure {

namespace {

constexpr char const* cTooDeep = "elements nested too deep";
constexpr char const* cTooManyAttributes = "too many attributes in one element";
constexpr char const* cTooManyElements = "too many elements";
constexpr char const* cTooLong = "text too long";

bool isSpace(char aByte) {
  // What is a space beyond ASCII is up to the locale, for the library too.
  auto const byte = static_cast<unsigned char>(aByte);
  return (byte <= ' ' || byte >= 127) && std::isspace(byte) != 0;
}

bool beginsWith(char const* aAt, char const* aText) {
  return std::strncmp(aAt, aText, std::strlen(aText)) == 0;
}

/// The three characters that the library takes for white space in UTF-8.
bool isMark(char const* aAt) {
  return aAt[0] == '\xEF' && ((aAt[1] == '\xBB' && aAt[2] == '\xBF') ||
                              (aAt[1] == '\xBF' && (aAt[2] == '\xBE' || aAt[2] == '\xBF')));
}

/// True where the name of an encoding stands, in whatever case; more may follow.
bool names(char const* aEncoding, char const* aName) {
  for (; *aName != '\0'; ++aEncoding, ++aName) {
    if (std::tolower(static_cast<unsigned char>(*aEncoding)) != *aName) {
      return false;
    }
  }
  return true;
}

/// One look through a text. Each operation gets a position and gives the one behind what it passed,
/// or null where the library stops.
class Scanner {
 public:
  Scanner(char const* aText, std::size_t aSize, int aLevel)
      : mAt(aText), mEnd(aText + aSize), mBase(aLevel), mDepth(aLevel) {
    if (std::strncmp(aText, "\xEF\xBB\xBF", 3) == 0) {
      mEncoding = TIXML_ENCODING_UTF8;
    }
  }

  char const* objection() {
    while (mAt != nullptr && mObjection == nullptr) {
      mAt = piece(skipSpace(mAt));
    }
    return mObjection;
  }

 private:
  bool isOutermost() const { return mDepth == mBase; }

  char const* skipSpace(char const* aAt) const {
    for (;; ++aAt) {
      if (isSpace(*aAt)) {
        continue;
      }
      if (*aAt != '\xEF' || mEncoding != TIXML_ENCODING_UTF8 || !isMark(aAt)) {
        return aAt;
      }
      aAt += 2;
    }
  }

  char const* piece(char const* aAt) {
    if (*aAt == '\0') {
      return nullptr;
    }
    if (*aAt != '<') {
      return isOutermost() ? nullptr : find(aAt, '<');
    }
    if (XmlName::mayBegin(aAt[1])) {
      return element(aAt);
    }
    if (aAt[1] == '/' && !isOutermost()) {
      --mDepth;
      return behind(aAt, ">");
    }
    if (beginsWith(aAt, "<!--")) {
      return behind(aAt + 4, "-->");
    }
    if (beginsWith(aAt, "<![CDATA[")) {
      return behind(aAt + 9, "]]>");
    }
    if (aAt[1] == '?' && names(aAt + 2, "xml")) {
      return declaration(aAt);
    }
    return behind(aAt, ">");
  }

  /// The first aByte that is not part of a longer character or of a reference.
  char const* find(char const* aAt, char aByte) const {
    auto const* hit =
        static_cast<char const*>(std::memchr(aAt, aByte, static_cast<std::size_t>(mEnd - aAt)));
    if (hit == nullptr || (!mayBePart(aAt, hit) && !hasReference(aAt, hit))) {
      return hit;
    }
    while (aAt != nullptr && aAt < mEnd && *aAt != aByte) {
      aAt = behindCharacter(aAt);
    }
    return aAt != nullptr && aAt < mEnd ? aAt : nullptr;
  }

  bool mayBePart(char const* aFrom, char const* aHit) const {
    if (mEncoding != TIXML_ENCODING_UTF8) {
      return false;
    }
    for (int back = 1; back < 4 && aHit - back >= aFrom; ++back) {
      if (utf8Length(aHit[-back]) > back) {
        return true;
      }
    }
    return false;
  }

  static bool hasReference(char const* aFrom, char const* aHit) {
    while (aFrom < aHit) {
      aFrom =
          static_cast<char const*>(std::memchr(aFrom, '&', static_cast<std::size_t>(aHit - aFrom)));
      if (aFrom == nullptr) {
        return false;
      }
      if (*++aFrom == '#') {
        return true;
      }
    }
    return false;
  }

  char const* behindCharacter(char const* aAt) const {
    int const length = mEncoding == TIXML_ENCODING_UTF8 ? utf8Length(*aAt) : 1;
    if (length > 1 || aAt[0] != '&' || aAt[1] != '#' || aAt[2] == '\0') {
      return aAt + length;
    }
    return behindReference(aAt + 2);
  }

  /// The library looks for the end of a numeric reference first and then goes back over its digits,
  /// to the nearest "x" or "#". So whatever stands before that, tags included, is swallowed.
  static char const* behindReference(char const* aAt) {
    char const begin = *aAt == 'x' ? 'x' : '#';
    char const* const end = aAt[1] != '\0' || begin == '#' ? std::strchr(aAt, ';') : nullptr;
    if (end == nullptr) {
      return nullptr;
    }
    for (char const* digit = end - 1; *digit != begin; --digit) {
      if (!isDigit(*digit, begin == 'x')) {
        return nullptr;
      }
    }
    return end + 1;
  }

  static bool isDigit(char aByte, bool aHexadecimal) {
    return (aByte >= '0' && aByte <= '9') ||
           (aHexadecimal && ((aByte >= 'a' && aByte <= 'f') || (aByte >= 'A' && aByte <= 'F')));
  }

  char const* behind(char const* aAt, char const* aText) const {
    if (aAt >= mEnd) {
      return nullptr;
    }
    char const* const hit = std::strstr(aAt, aText);
    return hit != nullptr ? hit + std::strlen(aText) : nullptr;
  }

  /// The declaration decides how the rest is read, so the library itself reads it.
  char const* declaration(char const* aAt) {
    TiXmlDeclaration declaration;
    char const* const next = declaration.Parse(aAt, nullptr, mEncoding);
    if (isOutermost() && mEncoding == TIXML_ENCODING_UNKNOWN) {
      char const* const encoding = declaration.Encoding();
      bool const utf8 = *encoding == '\0' || names(encoding, "utf-8") || names(encoding, "utf8");
      mEncoding = utf8 ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY;
    }
    return next;
  }

  char const* element(char const* aAt) {
    if (mDepth >= XmlGate::MaxDepth) {
      return object(cTooDeep);
    }
    if (++mElements > XmlGate::MaxElements) {
      return object(cTooManyElements);
    }
    char const* at = name(skipSpace(aAt + 1));
    for (int attributes = 0; at != nullptr; ++attributes) {
      at = skipSpace(at);
      if (*at == '>') {
        ++mDepth;
        return at + 1;
      }
      if (*at == '/') {
        return at[1] == '>' ? at + 2 : nullptr;
      }
      if (attributes == XmlGate::MaxAttributes && XmlName::mayBegin(*at)) {
        return object(cTooManyAttributes);
      }
      at = attribute(at);
    }
    return nullptr;
  }

  static char const* name(char const* aAt) {
    if (!XmlName::mayBegin(*aAt)) {
      return nullptr;
    }
    while (XmlName::mayHold(*aAt)) {
      ++aAt;
    }
    return aAt;
  }

  char const* attribute(char const* aAt) const {
    char const* at = name(aAt);
    if (at == nullptr || *(at = skipSpace(at)) != '=') {
      return nullptr;
    }
    at = skipSpace(at + 1);
    if (*at == '"' || *at == '\'') {
      char const* const end = find(at + 1, *at);
      return end != nullptr ? end + 1 : nullptr;
    }
    return bareValue(at);
  }

  /// A value without quotes, which the library forgives.
  static char const* bareValue(char const* aAt) {
    while (*aAt != '\0' && !isSpace(*aAt) && *aAt != '/' && *aAt != '>') {
      if (*aAt == '"' || *aAt == '\'') {
        return nullptr;
      }
      ++aAt;
    }
    return aAt;
  }

  char const* object(char const* aObjection) {
    mObjection = aObjection;
    return nullptr;
  }

  char const* mAt;
  char const* const mEnd;
  int const mBase;
  int mDepth;
  int mElements = 0;
  TiXmlEncoding mEncoding = TIXML_ENCODING_UNKNOWN;
  char const* mObjection = nullptr;
};

/// True if a text is so small that nothing in it can be too much: an element takes a "<" and an
/// attribute a "=".
bool isHarmless(char const* aText, std::size_t aSize, int aLevel) {
  constexpr std::size_t cSmall = 4096;
  if (aSize > cSmall) {
    return false;
  }
  int elements = aLevel;
  int attributes = 0;
  for (std::size_t at = 0; at < aSize; ++at) {
    elements += aText[at] == '<' ? 1 : 0;
    attributes += aText[at] == '=' ? 1 : 0;
  }
  return elements <= XmlGate::MaxDepth && attributes <= XmlGate::MaxAttributes;
}

}  // namespace

char const* XmlGate::objection(char const* aText, std::size_t aSize, int aLevel) {
  if (aSize > MaxText) {
    return cTooLong;
  }
  if (isHarmless(aText, aSize, aLevel)) {
    return nullptr;
  }
  return Scanner(aText, aSize, aLevel).objection();
}

}  // namespace Zelv::Infrastructure
