#include "zelv/infrastructure/XNSp_xpath_node_list.h"

#include <tinyxml.h>

#include <memory>

#include "zelv/infrastructure/XPathExpression.h"
#include "zelv/infrastructure/XPathResult.h"

namespace TinyXPath {

namespace {

using Zelv::Infrastructure::XPathExpression;
using Zelv::Infrastructure::XPathItem;
using Zelv::Infrastructure::XPathResult;

bool isCallers(TiXmlNode const* aNode) {
  return !aNode->Parent() && aNode->ToText();
}

}  // namespace

void XNSp_xpath_node_list(std::vector<TiXmlNode*>* aNodes, TiXmlNode const* aContext,
                          char const* aXPath) {
  aNodes->clear();
  if (!aXPath) {
    return;
  }
  XPathResult result;
  XPathExpression(aXPath).evaluate(aContext, result);
  aNodes->reserve(result.size());
  for (XPathItem const& item : result) {
    aNodes->push_back(item.isAttribute() ? new TiXmlText(item.attribute()->ValueStr())
                                         : item.node());
  }
}

void XNSp_free_attribute_nodes(std::vector<TiXmlNode*>* aNodes) {
  for (TiXmlNode* const node : *aNodes) {
    std::unique_ptr<TiXmlNode> const owned(isCallers(node) ? node : nullptr);
  }
  aNodes->clear();
}

}  // namespace TinyXPath
