#pragma once

#include <cstdint>

class TiXmlNode;

namespace Zelv::Infrastructure {

/// How much there is to look at in a document.
struct XPathExtent {
  std::uint64_t size = 0;    ///< nodes and attributes, and one for each 16 bytes of a value
  std::uint64_t levels = 0;  ///< sum, over all nodes, of the number of nodes above

  /// Counts once through the tree below aTop, and stops early where any further node would be too
  /// many for every expression.
  static XPathExtent of(TiXmlNode const& aTop);
};

}  // namespace Zelv::Infrastructure
