#include "zelv/infrastructure/XmlRemoval.h"

#include <tinyxml.h>

#include <algorithm>
#include <functional>

#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure {

XmlRemoval::XmlRemoval(XPathResult const& aMatches, TiXmlNode const* aRoot) {
  for (XPathItem const& match : aMatches) {
    TiXmlNode* const node = match.node();
    if (node != nullptr && node != aRoot && node->Parent() != nullptr) {
      mNodes.push_back(node);
    }
  }
  std::sort(mNodes.begin(), mNodes.end(), std::less<>());
  mNodes.erase(std::unique(mNodes.begin(), mNodes.end()), mNodes.end());
}

bool XmlRemoval::takes(TiXmlNode const* aNode) const {
  while (aNode != nullptr && !isMatch(aNode)) {
    aNode = aNode->Parent();
  }
  return aNode != nullptr;
}

void XmlRemoval::run() {
  std::vector<TiXmlNode*> outermost;
  for (TiXmlNode* node : mNodes) {
    if (!takes(node->Parent())) {
      outermost.push_back(node);
    }
  }
  for (TiXmlNode* node : outermost) {
    node->Parent()->RemoveChild(node);
  }
  mNodes.clear();
}

bool XmlRemoval::isMatch(TiXmlNode const* aNode) const {
  return std::binary_search(mNodes.begin(), mNodes.end(), aNode, std::less<>());
}

}  // namespace Zelv::Infrastructure
