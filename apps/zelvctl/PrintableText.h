#pragma once

#include <string>

namespace ZelvCtl {

/// What others send, made fit to be printed: none of it steers the terminal.
class PrintableText {
 public:
  /// On one line; "?" for each control character.
  static std::string masked(std::string const& aText);

  /// On one line, with nothing lost: a line feed is "\n", a backslash "\\", any other byte of a
  /// control character "\x" with two hexadecimal digits.
  static std::string line(std::string const& aText);

  /// As line(), for a text that others follow on the line: a blank is "\x20", and an empty text
  /// is "-".
  static std::string field(std::string const& aText);

  /// On as many lines as it has; "?" for each control character but line feeds and tabs.
  static std::string block(std::string const& aText);
};

}  // namespace ZelvCtl
