#pragma once

#include <string>

class TiXmlDocument;
class TiXmlNode;

namespace Zelv::Infrastructure {

/// What the XML library makes of broken UTF-8 when it loads what it has printed: a text that ends
/// within a character takes the tag behind it for a part of itself, and a name that begins with a
/// byte order mark loses it. One such value and the file loads no more.
class XmlUtf8 {
 public:
  /// Whether any part of a document's file would be read as UTF-8.
  /// @param aMark  whether it begins with the mark of UTF-8.
  static bool isUsedBy(TiXmlDocument const& aDocument, bool aMark);

  /// Whether a text or the value of an attribute can be printed and loaded.
  static bool isGood(std::string const& aText);

  /// The same for a node with all that it holds.
  static bool isGood(TiXmlNode const& aNode);

  /// Whether a name begins with a character that the library takes for white space.
  static bool beginsWithMark(std::string const& aName);
};

}  // namespace Zelv::Infrastructure
