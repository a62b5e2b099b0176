#pragma once

#include <tinyxml.h>

#include <pugixml.hpp>

#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure {

/// A copy of a TinyXML document, node by node, that the general XPath engine can evaluate on. Made
/// for one question and dropped: it does not follow changes.
///
/// Text and CDATA nodes stay as many as they are in TinyXML, also where they stand side by side. A
/// NUL in a value becomes U+FFFD, which keeps it different from every literal and number.
class XPathMirror {
 public:
  /// @param aDocument  outlives the mirror.
  explicit XPathMirror(TiXmlDocument const& aDocument);

  /// Clears aResult and fills it with the nodes of the TinyXML document that the expression gives,
  /// in document order, each once. It stays empty if the text is no expression, or gives no nodes.
  /// @param aContext  the document or a node of it.
  void select(char const* aExpression, TiXmlNode const* aContext, XPathResult& aResult) const;

 private:
  pugi::xml_node counterpart(TiXmlNode const* aNode) const;
  void collect(pugi::xpath_node_set const& aFound, XPathResult& aResult) const;

  TiXmlDocument const& mDocument;
  pugi::xml_document mCopy;
};

}  // namespace Zelv::Infrastructure
