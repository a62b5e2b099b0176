#pragma once

#include <tinyxml.h>

#include <string>
#include <vector>

#include "zelv/infrastructure/XPathExpression.h"
#include "zelv/infrastructure/XPathMirror.h"
#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure::Testing {

/// Matches of XPath expressions in a form that tests can write down: elements by name, texts in
/// quotes, attributes as @name=value, comments as !value, all else as ?.
class XPathAnswers {
 public:
  using List = std::vector<std::string>;

  static std::string describe(XPathItem const& aItem) {
    if (aItem.isAttribute()) {
      return "@" + aItem.attribute()->NameTStr() + "=" + aItem.attribute()->ValueStr();
    }
    switch (aItem.node()->Type()) {
      case TiXmlNode::TINYXML_ELEMENT:
        return aItem.node()->ValueStr();
      case TiXmlNode::TINYXML_TEXT:
        return "'" + aItem.node()->ValueStr() + "'";
      case TiXmlNode::TINYXML_COMMENT:
        return "!" + aItem.node()->ValueStr();
      default:
        return "?";
    }
  }

  static List list(XPathResult const& aResult) {
    List answers;
    for (XPathItem const& item : aResult) {
      answers.push_back(describe(item));
    }
    return answers;
  }

  /// The document is made of the text; expressions begin at its first element.
  explicit XPathAnswers(std::string const& aXml) { mDocument.Parse(aXml.c_str()); }

  TiXmlDocument& document() { return mDocument; }

  List of(XPathExpression const& aExpression) {
    aExpression.evaluate(mDocument.FirstChildElement(), mResult);
    return list(mResult);
  }

  List of(std::string const& aExpression) { return of(XPathExpression(aExpression)); }

  /// What the general engine says, whatever the expression.
  List ofMirror(std::string const& aExpression) {
    XPathMirror(mDocument).select(aExpression.c_str(), mDocument.FirstChildElement(), mResult);
    return list(mResult);
  }

 private:
  TiXmlDocument mDocument;
  XPathResult mResult;
};

}  // namespace Zelv::Infrastructure::Testing
