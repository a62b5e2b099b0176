#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "zelv/infrastructure/testing/XPathAnswers.h"

namespace Zelv::Infrastructure::Testing {

/// Both engines on one expression, node by node.
class XPathComparison {
 public:
  /// @param aContext  a node of the document, or the document.
  XPathComparison(XPathExpression const& aExpression, XPathMirror const& aMirror,
                  TiXmlNode const* aContext) {
    aExpression.evaluate(aContext, mWalked);
    aMirror.select(std::string(aExpression.text()).c_str(), aContext, mMirrored);
  }

  bool agrees() const {
    return std::equal(mWalked.begin(), mWalked.end(), mMirrored.begin(), mMirrored.end());
  }

  std::size_t matches() const { return mWalked.size(); }

  std::string message() const {
    return "walked:" + joined(mWalked) + "\nmirrored:" + joined(mMirrored);
  }

 private:
  static std::string joined(XPathResult const& aResult) {
    std::string text;
    for (std::string const& answer : XPathAnswers::list(aResult)) {
      text += " " + answer;
    }
    return text;
  }

  XPathResult mWalked;
  XPathResult mMirrored;
};

}  // namespace Zelv::Infrastructure::Testing
