#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Zelv::Infrastructure {

/// A text as the XML library may have it: up to its first NUL, and with more NULs behind that one
/// if the text ends within a character. There the library goes on by the length that the character
/// should have, beyond the end.
class XmlText {
 public:
  /// aText MUST outlive the object, unchanged.
  explicit XmlText(std::string const& aText);
  XmlText(XmlText const&) = delete;
  XmlText& operator=(XmlText const&) = delete;

  char const* data() const { return mData; }
  std::size_t size() const { return mSize; }

  /// True if one of the last bytes of a text announces more than there are; it may be part of a
  /// longer character itself. Cheap.
  static bool mayEndWithinCharacter(std::string_view aText);

  /// True if the last character of a text announces more bytes than there are, so that a reader of
  /// UTF-8 takes what stands behind the text for a part of it.
  static bool endsWithinCharacter(std::string_view aText);

 private:
  char const* mData;
  std::size_t mSize;
  std::string mPadded;
};

}  // namespace Zelv::Infrastructure
