#pragma once

#include <cstddef>
#include <string>

namespace Zelv::Infrastructure {

class XPathResult;

/// Makes the text of the matches of a query, as callers of HierarchicalDB::getContent() get it.
class QueryAnswer {
 public:
  /// Bytes of an answer.
  static constexpr std::size_t MaxSize = std::size_t{8} << 20;

  /// Replaces aAnswer by the matches as a multi-string, entities unescaped.
  /// @param aNames  whether to give their names, or rather values: for anything but an element it
  ///                is its text.
  /// @return false if there is more than an answer may hold; aAnswer is of no use then.
  static bool make(XPathResult const& aMatches, bool aNames, std::string& aAnswer);
};

}  // namespace Zelv::Infrastructure
