#include "zelv/infrastructure/XPathMirror.h"

#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "zelv/platform/PlainNumbers.h"

namespace Zelv::Infrastructure {

namespace {

std::string withoutNul(std::string const& aText) {
  std::string text;
  for (char const byte : aText) {
    if (byte == '\0') {
      text += "\xEF\xBF\xBD";
    } else {
      text += byte;
    }
  }
  return text;
}

template <typename Place>
void setValue(Place aPlace, std::string const& aValue) {
  if (aValue.find('\0') == std::string::npos) {
    aPlace.set_value(aValue.c_str(), aValue.size());
  } else {
    aPlace.set_value(withoutNul(aValue).c_str());
  }
}

void copyElement(TiXmlElement const& aElement, pugi::xml_node aCopy) {
  aCopy.set_name(aElement.Value());
  TiXmlAttribute const* attribute = aElement.FirstAttribute();
  for (; attribute; attribute = attribute->Next()) {
    setValue(aCopy.append_attribute(attribute->Name()), attribute->ValueStr());
  }
}

// Declarations and what TinyXML does not know (document types, processing instructions) stand for
// themselves in "node()" and nowhere else. The copy's own types for them may not stand inside of
// elements, where TinyXML has them.
pugi::xml_node_type typeOf(TiXmlNode const& aNode) {
  switch (aNode.Type()) {
    case TiXmlNode::TINYXML_ELEMENT:
      return pugi::node_element;
    case TiXmlNode::TINYXML_TEXT:
      return aNode.ToText()->CDATA() ? pugi::node_cdata : pugi::node_pcdata;
    case TiXmlNode::TINYXML_COMMENT:
      return pugi::node_comment;
    default:
      return pugi::node_pi;
  }
}

pugi::xml_node copyNode(TiXmlNode const& aNode, pugi::xml_node aParent) {
  pugi::xml_node const copy = aParent.append_child(typeOf(aNode));
  if (TiXmlElement const* const element = aNode.ToElement()) {
    copyElement(*element, copy);
  } else {
    setValue(copy, aNode.ValueStr());
  }
  return copy;
}

/// Goes through a document and its copy side by side.
class Pair {
 public:
  Pair(TiXmlNode const* aNode, pugi::xml_node aCopy) : mTop(aNode), mNode(aNode), mCopy(aCopy) {}

  TiXmlNode const* node() const { return mNode; }
  pugi::xml_node copy() const { return mCopy; }

  /// Goes on to the next node in document order; false at the end.
  bool advance() {
    if (mNode->FirstChild()) {
      mNode = mNode->FirstChild();
      mCopy = mCopy.first_child();
      return true;
    }
    while (mNode != mTop && !mNode->NextSibling()) {
      mNode = mNode->Parent();
      mCopy = mCopy.parent();
    }
    if (mNode == mTop) {
      return false;
    }
    mNode = mNode->NextSibling();
    mCopy = mCopy.next_sibling();
    return true;
  }

 private:
  TiXmlNode const* mTop;
  TiXmlNode const* mNode;
  pugi::xml_node mCopy;
};

pugi::xml_node placeOf(pugi::xpath_node const& aFound) {
  return aFound.attribute() ? aFound.parent() : aFound.node();
}

bool byPlace(pugi::xpath_node const& aLeft, pugi::xpath_node const& aRight) {
  pugi::xml_node const left = placeOf(aLeft);
  pugi::xml_node const right = placeOf(aRight);
  return left == right ? aLeft.attribute() < aRight.attribute() : left < right;
}

bool isBefore(pugi::xpath_node const& aFound, pugi::xml_node const& aPlace) {
  return placeOf(aFound) < aPlace;
}

bool isBeforeAttribute(pugi::xpath_node const& aFound, pugi::xml_attribute const& aAttribute) {
  return aFound.attribute() < aAttribute;
}

using Found = std::vector<pugi::xpath_node>::const_iterator;

void addAttributes(TiXmlNode const* aElement, pugi::xml_node aCopy, Found aFirst, Found aLast,
                   XPathResult& aResult) {
  auto* const element = const_cast<TiXmlElement*>(aElement->ToElement());
  pugi::xml_attribute copy = aCopy.first_attribute();
  TiXmlAttribute* attribute = element ? element->FirstAttribute() : nullptr;
  for (; attribute; attribute = attribute->Next(), copy = copy.next_attribute()) {
    Found const at = std::lower_bound(aFirst, aLast, copy, isBeforeAttribute);
    if (at != aLast && at->attribute() == copy) {
      aResult.add(XPathItem(element, attribute));
    }
  }
}

}  // namespace

XPathMirror::XPathMirror(TiXmlDocument const& aDocument) : mDocument(aDocument) {
  TiXmlNode const* node = &aDocument;
  pugi::xml_node copy = mCopy;
  for (;;) {
    if (node->FirstChild()) {
      node = node->FirstChild();
      copy = copyNode(*node, copy);
      continue;
    }
    while (node != &aDocument && !node->NextSibling()) {
      node = node->Parent();
      copy = copy.parent();
    }
    if (node == &aDocument) {
      return;
    }
    node = node->NextSibling();
    copy = copyNode(*node, copy.parent());
  }
}

void XPathMirror::select(char const* aExpression, TiXmlNode const* aContext,
                         XPathResult& aResult) const {
  aResult.clear();
  Platform::PlainNumbers const plain;
  try {
    pugi::xpath_query const query(aExpression);
    if (query.return_type() == pugi::xpath_type_node_set) {
      collect(query.evaluate_node_set(counterpart(aContext)), aResult);
    }
  } catch (std::exception const&) {
    // No expression, or one whose evaluation needs more memory than there is: no result.
    aResult.clear();
  }
}

pugi::xml_node XPathMirror::counterpart(TiXmlNode const* aNode) const {
  Pair pair(&mDocument, mCopy);
  while (pair.node() != aNode && pair.advance()) {
  }
  return pair.copy();
}

// The engine's own sorting compares nodes by their place among siblings, which takes long for many;
// one more pass over both documents does not.
void XPathMirror::collect(pugi::xpath_node_set const& aFound, XPathResult& aResult) const {
  std::vector<pugi::xpath_node> found(aFound.begin(), aFound.end());
  std::sort(found.begin(), found.end(), byPlace);
  found.erase(std::unique(found.begin(), found.end()), found.end());
  std::size_t left = found.size();
  Pair pair(&mDocument, mCopy);
  for (bool more = true; more && left > 0; more = pair.advance()) {
    Found const first = std::lower_bound(found.begin(), found.end(), pair.copy(), isBefore);
    Found last = first;
    while (last != found.end() && placeOf(*last) == pair.copy()) {
      ++last;
    }
    if (first != last && !first->attribute()) {
      aResult.add(XPathItem(const_cast<TiXmlNode*>(pair.node())));
    }
    addAttributes(pair.node(), pair.copy(), first, last, aResult);
    left -= static_cast<std::size_t>(last - first);
  }
}

}  // namespace Zelv::Infrastructure
