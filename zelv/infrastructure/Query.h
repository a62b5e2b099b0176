#pragma once

#include <memory>
#include <string>

#include "zelv/infrastructure/XPathExpression.h"

namespace Zelv::Infrastructure {

/// A path as HierarchicalDB::getContent() was given it, made ready for evaluation.
class Query {
 public:
  /// @throws std::out_of_range  as XPathDialect::translate().
  explicit Query(std::string const& aPath);

  /// The path as given.
  std::string const& path() const { return mPath; }

  /// What to evaluate.
  XPathExpression const& expression() const { return mExpression; }

  /// Whether the names of the matches are asked for.
  bool asksNames() const { return mAsksNames; }

  /// What to evaluate if there is no match, and whose matches make up for it: the parents of a last
  /// step "text()", since an element without text reads as an empty one. Null for any other step.
  XPathExpression const* parent();

 private:
  struct Form;
  Query(std::string const& aPath, Form const& aForm);

  std::string mPath;
  bool mAsksNames;
  XPathExpression mExpression;
  std::unique_ptr<XPathExpression> mParent;
};

}  // namespace Zelv::Infrastructure
