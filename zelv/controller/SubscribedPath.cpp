#include "zelv/controller/SubscribedPath.h"

#include "zelv/infrastructure/XPath.h"

namespace Zelv::Controller {

using Infrastructure::XPath;

namespace {

/// What XPath::getFirstPredicate() finds, as a part of the text itself.
std::string_view firstPredicateOf(std::string_view aText) {
  std::size_t const open = aText.find('[');
  std::size_t const close = open == std::string_view::npos ? open : aText.find(']', open);
  return close == std::string_view::npos ? std::string_view()
                                         : aText.substr(open + 1, close - open - 1);
}

}  // namespace

std::string SubscribedPath::normalise(std::string const& aXPath) {
  return XPath::removePredicates(XPath::removeAttributeStep(XPath::removeTextStep(aXPath)));
}

SubscribedPath::SubscribedPath(std::string const& aXPath, std::string const& aNormalised)
    : mText(aXPath),
      mNormalised(aNormalised),
      mPredicate(firstPredicateOf(mText)),
      mNamesId(mPredicate.starts_with("@ID")),
      mIsAttribute(XPath::getLastStep(aXPath).starts_with('@')) {}

/// Predicates other than "@ID" make no sibling: such changes are read again.
bool SubscribedPath::isInSibling(ChangedPath const& aChange) const {
  if (!mNamesId || !aChange.namesId() || mPredicate == aChange.predicate()) {
    return false;
  }
  auto const open = static_cast<std::size_t>(mPredicate.data() - mText.data()) - 1;
  return mText.substr(0, open) == aChange.prefix();
}

eDelivery SubscribedPath::deliveryOf(ChangedPath const& aChange) const {
  if (mText == aChange.text()) {
    return eDelivery::Direct;
  }
  if (isInSibling(aChange)) {
    return eDelivery::SkipSibling;
  }
  if (aChange.isText() && mPredicate.empty() && mIsAttribute) {
    return eDelivery::SkipAttribute;
  }
  return isNested(aChange) ? eDelivery::ReRead : eDelivery::SkipUnmatched;
}

}  // namespace Zelv::Controller
