#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ZelvTv {

/// Values as they stand on one line: a line feed is "\n", a backslash "\\", any other control byte
/// "\x" with two hexadecimal digits. All other bytes stand as they are.
class ValueText {
 public:
  static std::string ToLine(std::string_view aValue);

  /// A value that is followed by others on its line: a blank is "\\x20" too, and one that is empty
  /// is "-".
  static std::string ToField(std::string_view aValue);

  /// The way back; nothing when a backslash begins none of the three forms.
  static std::optional<std::string> FromLine(std::string_view aText);
};

}  // namespace ZelvTv
