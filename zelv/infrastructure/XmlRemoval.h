#pragma once

#include <vector>

class TiXmlNode;

namespace Zelv::Infrastructure {

class XPathResult;

/// Takes the matches of an expression out of their tree, each once: what stands within another
/// match goes with that one. The root stays, whatever the expression says, and so do attributes,
/// which are no nodes.
class XmlRemoval {
 public:
  /// @param aRoot  the element that paths begin with.
  XmlRemoval(XPathResult const& aMatches, TiXmlNode const* aRoot);

  /// Whether the node goes, by itself or within another.
  bool takes(TiXmlNode const* aNode) const;

  void run();

 private:
  bool isMatch(TiXmlNode const* aNode) const;

  /// Sorted by address.
  std::vector<TiXmlNode*> mNodes;
};

}  // namespace Zelv::Infrastructure
