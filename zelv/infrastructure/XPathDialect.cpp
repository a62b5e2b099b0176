#include "zelv/infrastructure/XPathDialect.h"

#include <cstdlib>

namespace Zelv::Infrastructure {

namespace {

constexpr char const* cComparison = "!=<>";
constexpr char const* cBack = "/parent::*";
std::string const cAnd = " and ";

/// "[2]" and the like, which only "*" may have.
bool isPosition(std::string const& aPredicate) {
  return std::strtol(aPredicate.c_str() + 1, nullptr, 10) > 0;
}

std::string textTest(std::string const& aName, std::string const& aCondition) {
  return "/" + aName + "[text()" + aCondition;
}

std::string translateOne(std::string const& aPredicate) {
  std::string name;
  std::string condition;
  XPathDialect::separate(aPredicate, name, condition);
  return textTest(name, condition) + cBack;
}

std::string translateTwo(std::string const& aFirst, std::string const& aSecond) {
  std::string name;
  std::string condition;
  XPathDialect::separate(aFirst, name, condition);
  if (!aSecond.empty() && aSecond.front() == '@') {
    return "[" + aSecond + textTest(name, condition) + "]" + cBack;
  }
  std::string name2;
  std::string condition2;
  XPathDialect::separate("[" + aSecond, name2, condition2);
  return textTest(name, condition) + "]" + cBack + textTest(name2, condition2) + cBack;
}

}  // namespace

void XPathDialect::translate(std::string& aPath) {
  auto const open = aPath.rfind('[');
  if (open == std::string::npos || aPath.compare(open + 1, 1, "@") == 0) {
    return;
  }
  auto const close = aPath.rfind(']');
  if (close == std::string::npos || close < open) {
    // No predicate at all; it evaluates to nothing.
    return;
  }
  std::string const head = aPath.substr(0, open);
  std::string const tail = aPath.substr(close + 1);
  std::string const predicate = aPath.substr(open, close - open + 1);
  if (!head.empty() && head.back() == '*' && isPosition(predicate)) {
    return;
  }
  auto const conjunction = predicate.find(cAnd);
  if (conjunction == std::string::npos) {
    aPath = head + translateOne(predicate) + tail;
  } else {
    aPath = head +
            translateTwo(predicate.substr(0, conjunction),
                         predicate.substr(conjunction + cAnd.size())) +
            tail;
  }
}

void XPathDialect::separate(std::string const& aPredicate, std::string& aName,
                            std::string& aCondition) {
  auto const comparison = aPredicate.find_first_of(cComparison);
  std::string const name = aPredicate.substr(1, comparison - 1);
  // Without a comparison this throws, and callers of the store rely on the very error.
  aCondition = aPredicate.substr(comparison);
  aName = name;
}

}  // namespace Zelv::Infrastructure
