#pragma once

#include <string>
#include <string_view>

namespace Zelv::Infrastructure {

/// Rewrites paths of the system's dialect into the XPath that is evaluated: a predicate that
/// compares a child's value becomes a step down to the child, a comparison of its text, and a step
/// back up.
///
/// All of it works on plain text: a bracket, a "/" or a comparison between quotes counts like any
/// other, and paths are written with that in mind.
class XPathDialect {
 public:
  /// Rewrites the last predicate of a path, if it is one to be rewritten.
  /// @throws std::out_of_range  if it holds no comparison.
  static void translate(std::string& aPath);

  /// Cuts a predicate, given from its opening bracket on, before its first character of "!=<>".
  /// @throws std::out_of_range  when there is none.
  static void separate(std::string const& aPredicate, std::string& aName, std::string& aCondition);
};

}  // namespace Zelv::Infrastructure
