#include "zelv/controller/ChangedPath.h"

#include "zelv/infrastructure/XPath.h"

namespace Zelv::Controller {

using Infrastructure::XPath;

ChangedPath::ChangedPath(std::string const& aXPath)
    : mText(aXPath),
      mPredicate(XPath::getFirstPredicate(aXPath, mPrefix)),
      mNamesId(mPredicate.starts_with("@ID")),
      mIsText(XPath::getLastStep(aXPath) == "text()"),
      mNormalised(XPath::removePredicates(XPath::removeTextStep(aXPath))) {}

}  // namespace Zelv::Controller
