#pragma once

#include <cstddef>
#include <memory>

class TiXmlDocument;
class TiXmlElement;
class TiXmlNode;

namespace Zelv::Infrastructure {

class XmlText;

/// XML text that is to be linked into a document: any number of nodes.
///
/// What could not be printed and loaded again is left out: end tags without their element, which
/// would close the element that they are linked into, and declarations that do not survive being
/// printed.
class XmlFragment {
 public:
  /// Parses a text that has passed XmlGate. A text that the library leaves a rest of, and one
  /// without an element, gives no nodes; an error within it gives what stands before the error.
  explicit XmlFragment(XmlText const& aXml);
  XmlFragment(XmlFragment const&) = delete;
  XmlFragment& operator=(XmlFragment const&) = delete;
  ~XmlFragment();

  bool empty() const;

  /// What it takes of a document's room, see XmlRoom.
  std::size_t cost() const;

  /// Whether all of it reads the same in a document of UTF-8.
  bool isGoodUtf8() const;

  /// Links a copy of each node at the end of aParent's children.
  void linkInto(TiXmlElement& aParent) const;

 private:
  std::unique_ptr<TiXmlDocument> mDocument;
};

}  // namespace Zelv::Infrastructure
