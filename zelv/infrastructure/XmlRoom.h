#pragma once

#include <cstddef>

class TiXmlDocument;
class TiXmlNode;

namespace Zelv::Infrastructure {

/// Bounds what writes may make of a document in memory, since no failed save takes them back.
///
/// Keeps a lower bound of the room that is left, and measures the document only when that is used
/// up: what is removed gives its room back then.
class XmlRoom {
 public:
  /// What a document may cost: all that its texts, names and values hold, and CostOfNode for each
  /// node. Eight times a file of the greatest size.
  static constexpr std::size_t Max = std::size_t{32} << 20;
  static constexpr std::size_t CostOfNode = 16;

  static std::size_t costOf(TiXmlNode const& aNode);

  /// For a document that was loaded anew.
  void reset() { mLeft = 0; }

  /// Takes room for aCost more. @return false if there is none, and none is taken then.
  bool take(TiXmlDocument const& aDocument, std::size_t aCost);

 private:
  std::size_t mLeft = 0;
};

}  // namespace Zelv::Infrastructure
