#pragma once

#include <tinyxml.h>

#include <functional>
#include <string>
#include <vector>

#include "zelv/infrastructure/testing/XPathAnswers.h"

namespace Zelv::Infrastructure::Testing {

/// What paths along the axes mean, written down plainly: every step looks at every node of the
/// document and asks for each whether it stands on the axis of any node that the step before gave.
class XPathModel {
 public:
  struct Step {
    std::string axis;
    std::string name;  ///< "*" for any element
  };

  explicit XPathModel(TiXmlDocument& aDocument) { list(aDocument); }

  /// The elements that the steps lead to from the document.
  std::vector<TiXmlNode*> elements(std::vector<Step> const& aSteps) const {
    std::vector<TiXmlNode*> from = {mNodes.front()};
    for (Step const& step : aSteps) {
      from = next(from, step);
    }
    return from;
  }

  static std::string text(std::vector<Step> const& aSteps) {
    std::string path;
    for (Step const& step : aSteps) {
      path += "/" + step.axis + "::" + step.name;
    }
    return path;
  }

 private:
  void list(TiXmlNode& aNode) {
    mNodes.push_back(&aNode);
    for (TiXmlNode* child = aNode.FirstChild(); child; child = child->NextSibling()) {
      list(*child);
    }
  }

  std::vector<TiXmlNode*> next(std::vector<TiXmlNode*> const& aFrom, Step const& aStep) const {
    std::vector<TiXmlNode*> found;
    for (TiXmlNode* const node : mNodes) {
      bool const fits = node->ToElement() && (aStep.name == "*" || node->ValueStr() == aStep.name);
      bool reached = false;
      for (TiXmlNode* const from : aFrom) {
        reached = reached || isOn(aStep.axis, from, node);
      }
      if (fits && reached) {
        found.push_back(node);
      }
    }
    return found;
  }

  static bool isOn(std::string const& aAxis, TiXmlNode* aFrom, TiXmlNode* aNode) {
    if (aAxis == "child") {
      return aNode->Parent() == aFrom;
    }
    if (aAxis == "parent") {
      return aFrom->Parent() == aNode;
    }
    if (aAxis == "descendant") {
      return isAbove(aFrom, aNode);
    }
    if (aAxis == "descendant-or-self") {
      return aFrom == aNode || isAbove(aFrom, aNode);
    }
    if (aAxis == "ancestor-or-self") {
      return aFrom == aNode || isAbove(aNode, aFrom);
    }
    return aFrom == aNode;
  }

  static bool isAbove(TiXmlNode* aUpper, TiXmlNode* aLower) {
    for (TiXmlNode* up = aLower->Parent(); up; up = up->Parent()) {
      if (up == aUpper) {
        return true;
      }
    }
    return false;
  }

  std::vector<TiXmlNode*> mNodes;
};

}  // namespace Zelv::Infrastructure::Testing
