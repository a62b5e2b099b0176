#pragma once

#include <list>
#include <string>
#include <string_view>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// The system's way of returning several values through one string: joined by the six characters
/// "&#x13;", which pass the escaping of XML unchanged.
class ZELV_EXPORT MultiString {
 public:
  /// The text itself, ampersand to semicolon; not a control character.
  static constexpr std::string_view Separator = "&#x13;";

  /// The items with the separator between them, nothing before the first or after the last.
  static std::string join(std::list<std::string> const& aItems);

  /// The items of a multi-string. An empty text has none, a doubled separator gives an empty item,
  /// and a separator at the end gives no item behind it.
  static std::list<std::string> split(std::string const& aText);
};

}  // namespace Zelv::Infrastructure
