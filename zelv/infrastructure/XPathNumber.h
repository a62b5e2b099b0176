#pragma once

#include <string_view>

namespace Zelv::Infrastructure {

/// The number of a text by the rules of XPath 1.0, section 4.4: blanks, a minus sign, digits with
/// or without a point, blanks. No exponent, no plus sign. Does not depend on the locale.
class XPathNumber {
 public:
  /// The number, or NaN for any other text.
  static double parse(std::string_view aText);
};

}  // namespace Zelv::Infrastructure
