#pragma once

#include <string>

namespace Zelv::Controller {

/// The path of a change, with the parts of it that decide who hears of it.
class ChangedPath {
 public:
  explicit ChangedPath(std::string const& aXPath);

  /// As it was reported.
  std::string const& text() const { return mText; }

  /// The first predicate without its brackets; empty if there is none.
  std::string const& predicate() const { return mPredicate; }

  /// The text before that predicate.
  std::string const& prefix() const { return mPrefix; }

  /// True when the predicate names an ID.
  bool namesId() const { return mNamesId; }

  /// True when the last step is "text()".
  bool isText() const { return mIsText; }

  /// Without text step and predicates.
  std::string const& normalised() const { return mNormalised; }

 private:
  std::string const& mText;
  std::string mPrefix;
  std::string const mPredicate;
  bool const mNamesId;
  bool const mIsText;
  std::string const mNormalised;
};

}  // namespace Zelv::Controller
