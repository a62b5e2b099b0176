#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "zelv/controller/ChangedPath.h"
#include "zelv/controller/eDelivery.h"

namespace Zelv::Controller {

/// The path of a subscription, prepared for being held against many changes. Views of texts that
/// MUST outlive it and stay where they are.
class SubscribedPath {
 public:
  /// The form of a path that normalised() wants.
  static std::string normalise(std::string const& aXPath);

  /// @param aNormalised  what normalise() made of aXPath.
  SubscribedPath(std::string const& aXPath, std::string const& aNormalised);

  /// False when it is certain, at a glance, that the change means nothing here.
  bool mayConcern(ChangedPath const& aChange) const {
    return mText.size() == aChange.text().size() || isNested(aChange);
  }

  /// What a change means by its path alone. The order of the tests decides which of several skips
  /// it is.
  eDelivery deliveryOf(ChangedPath const& aChange) const;

 private:
  /// True when one of the two normalised paths begins with the other, as plain text.
  bool isNested(ChangedPath const& aChange) const {
    std::string_view const other(aChange.normalised());
    return mNormalised.size() <= other.size() ? other.starts_with(mNormalised)
                                              : mNormalised.starts_with(other);
  }
  bool isInSibling(ChangedPath const& aChange) const;

  std::string_view mText;
  std::string_view mNormalised;
  std::string_view mPredicate;
  bool mNamesId;
  bool mIsAttribute;
};

}  // namespace Zelv::Controller
