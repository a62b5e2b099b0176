#pragma once

#include <cassert>
#include <cstddef>
#include <memory>

class TiXmlAttribute;
class TiXmlNode;

namespace Zelv::Infrastructure {

/// One match of an XPath expression: a node of the tree, or an attribute of one of its elements.
class XPathItem {
 public:
  XPathItem() = default;
  explicit XPathItem(TiXmlNode* aNode) : mNode(aNode) {}
  XPathItem(TiXmlNode* aElement, TiXmlAttribute* aAttribute)
      : mNode(aElement), mAttribute(aAttribute) {}

  bool isAttribute() const { return mAttribute != nullptr; }

  /// The node; null for an attribute, which is no node of the tree.
  TiXmlNode* node() const { return mAttribute ? nullptr : mNode; }

  /// The attribute, or null for a node.
  TiXmlAttribute* attribute() const { return mAttribute; }

  /// The node itself, or the element that has the attribute.
  TiXmlNode* place() const { return mNode; }

  bool operator==(XPathItem const&) const = default;

 private:
  TiXmlNode* mNode = nullptr;
  TiXmlAttribute* mAttribute = nullptr;
};

/// The matches of an expression in document order, each once. Owns nothing of the tree, and is
/// valid until the tree changes.
///
/// Kept in the object itself as long as they are few, so that the usual answer needs no allocation;
/// one that is reused keeps what it allocated.
class XPathResult {
 public:
  XPathResult() = default;
  XPathResult(XPathResult const&) = delete;
  XPathResult& operator=(XPathResult const&) = delete;

  bool empty() const { return mSize == 0; }
  std::size_t size() const { return mSize; }
  XPathItem const* begin() const { return mItems; }
  XPathItem const* end() const { return mItems + mSize; }
  XPathItem* begin() { return mItems; }
  XPathItem* end() { return mItems + mSize; }

  /// REQUIRES: aIndex < size().
  XPathItem const& operator[](std::size_t aIndex) const {
    assert(aIndex < mSize);
    return mItems[aIndex];
  }

  void clear() { mSize = 0; }

  void add(XPathItem const& aItem) {
    if (mSize == mCapacity) {
      grow();
    }
    mItems[mSize++] = aItem;
  }

 private:
  static constexpr std::size_t few = 8;

  void grow();

  XPathItem mFew[few];
  std::unique_ptr<XPathItem[]> mMany;
  XPathItem* mItems = mFew;
  std::size_t mSize = 0;
  std::size_t mCapacity = few;
};

}  // namespace Zelv::Infrastructure
