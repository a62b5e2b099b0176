#pragma once

#include <string>

namespace ZelvCtl {

/// Checks what is put into messages as it stands, since nothing is escaped there: text that is not
/// well-formed would be cut by the receiver, or change the message around it.
class Markup {
 public:
  /// Whether a text may stand between two tags: any mix of elements and text.
  static bool isContent(std::string const& aText);

  /// Whether it does, and begins with an element.
  static bool isElement(std::string const& aText);
};

}  // namespace ZelvCtl
