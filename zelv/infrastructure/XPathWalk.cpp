#include "zelv/infrastructure/XPathWalk.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "zelv/infrastructure/XPathNumber.h"

namespace Zelv::Infrastructure {

namespace {

using Axis = XPathStep::Axis;
using By = XPathTest::By;
using Of = XPathTest::Of;

bool isElement(TiXmlNode const* aNode) {
  return aNode->Type() == TiXmlNode::TINYXML_ELEMENT;
}

bool isText(TiXmlNode const* aNode) {
  return aNode->Type() == TiXmlNode::TINYXML_TEXT;
}

bool equal(std::string const& aText, std::string_view aOther) {
  return aText.size() == aOther.size() &&
         std::memcmp(aText.data(), aOther.data(), aOther.size()) == 0;
}

TiXmlAttribute* find(TiXmlNode* aElement, std::string_view aName) {
  TiXmlAttribute* attribute = static_cast<TiXmlElement*>(aElement)->FirstAttribute();
  while (attribute && !equal(attribute->NameTStr(), aName)) {
    attribute = attribute->Next();
  }
  return attribute;
}

bool compare(XPathTest const& aTest, std::string const& aValue) {
  switch (aTest.by) {
    case By::Presence:
      return true;
    case By::EqualText:
      return equal(aValue, aTest.literal);
    case By::UnequalText:
      return !equal(aValue, aTest.literal);
    case By::Equal:
      return XPathNumber::parse(aValue) == aTest.number;
    case By::Unequal:
      return XPathNumber::parse(aValue) != aTest.number;
    case By::Less:
      return XPathNumber::parse(aValue) < aTest.number;
    case By::Greater:
      return XPathNumber::parse(aValue) > aTest.number;
    case By::LessOrEqual:
      return XPathNumber::parse(aValue) <= aTest.number;
    case By::GreaterOrEqual:
      return XPathNumber::parse(aValue) >= aTest.number;
  }
  return false;
}

// The node behind aNode in document order, below aTop; null at the end.
TiXmlNode const* following(TiXmlNode const* aNode, TiXmlNode const* aTop) {
  if (aNode->FirstChild()) {
    return aNode->FirstChild();
  }
  while (aNode != aTop && !aNode->NextSibling()) {
    aNode = aNode->Parent();
  }
  return aNode == aTop ? nullptr : aNode->NextSibling();
}

}  // namespace

/// How many candidates under one node came as far as each test of a step.
struct XPathWalk::Counts {
  std::uint64_t seen[XPathPlan::maximumTests] = {};
  bool exhausted = false;  ///< no further candidate can pass
};

bool XPathWalk::run(TiXmlNode* aStart) {
  go(mPlan.steps.data(), aStart);
  if (mBudget < 0) {
    return false;
  }
  if (!mOrdered && mResult.size() > 1) {
    restoreDocumentOrder(aStart);
  }
  return true;
}

void XPathWalk::go(XPathStep const* aStep, TiXmlNode* aNode) {
  switch (aStep->axis) {
    case Axis::Child:
      return aStep->hasPosition ? countedChildren(aStep, aNode) : children(aStep, aNode);
    case Axis::Descendant:
      return descendants(aStep, aNode);
    case Axis::Parent:
      return parent(aStep, aNode);
    case Axis::Attribute:
      return attribute(aStep, aNode);
    case Axis::Text:
      return leaves(aNode, true);
    case Axis::Node:
      return leaves(aNode, false);
  }
}

void XPathWalk::match(XPathStep const* aStep, TiXmlNode* aNode) {
  if (isLast(aStep)) {
    mResult.add(XPathItem(aNode));
  } else {
    go(aStep + 1, aNode);
  }
}

void XPathWalk::children(XPathStep const* aStep, TiXmlNode* aNode) {
  for (TiXmlNode* child = aNode->FirstChild(); child && spend(); child = child->NextSibling()) {
    if (fits(aStep, child) && passes(aStep, child)) {
      match(aStep, child);
      if (aStep->firstSuffices) {
        return;
      }
    }
  }
}

void XPathWalk::countedChildren(XPathStep const* aStep, TiXmlNode* aNode) {
  Counts counts;
  for (TiXmlNode* child = aNode->FirstChild(); child && spend(); child = child->NextSibling()) {
    if (fits(aStep, child) && passesCounted(aStep, child, counts)) {
      match(aStep, child);
    }
    if (counts.exhausted) {
      return;
    }
  }
}

void XPathWalk::descendants(XPathStep const* aStep, TiXmlNode* aTop) {
  // What is found below a match that lies within another match may stand before what the outer one
  // still has to give. An attribute cannot: it stands before all that its element holds.
  bool const mayDisorder = !isLast(aStep) && (aStep + 1)->axis != Axis::Attribute;
  TiXmlNode* outer = nullptr;
  TiXmlNode* node = aTop;
  for (;;) {
    if (node->FirstChild()) {
      node = node->FirstChild();
    } else {
      while (node != aTop && !node->NextSibling()) {
        outer = node == outer ? nullptr : outer;
        node = node->Parent();
      }
      if (node == aTop) {
        return;
      }
      outer = node == outer ? nullptr : outer;
      node = node->NextSibling();
    }
    if (!spend()) {
      return;
    }
    if (fits(aStep, node) && passes(aStep, node)) {
      mOrdered = mOrdered && !(mayDisorder && outer);
      outer = outer ? outer : node;
      match(aStep, node);
    }
  }
}

void XPathWalk::parent(XPathStep const* aStep, TiXmlNode* aNode) {
  TiXmlNode* const up = aNode->Parent();
  TiXmlNode*& last = mLastParents[aStep - mPlan.steps.data()];
  if (!up || !isElement(up) || up == last) {
    return;
  }
  last = up;
  Counts counts;
  if (aStep->hasPosition ? passesCounted(aStep, up, counts) : passes(aStep, up)) {
    match(aStep, up);
  }
}

void XPathWalk::attribute(XPathStep const* aStep, TiXmlNode* aNode) {
  TiXmlAttribute* const found = isElement(aNode) ? find(aNode, aStep->name) : nullptr;
  if (found) {
    mResult.add(XPathItem(aNode, found));
  }
}

void XPathWalk::leaves(TiXmlNode* aNode, bool aTextOnly) {
  for (TiXmlNode* child = aNode->FirstChild(); child && spend(); child = child->NextSibling()) {
    if (!aTextOnly || isText(child)) {
      mResult.add(XPathItem(child));
    }
  }
}

bool XPathWalk::fits(XPathStep const* aStep, TiXmlNode const* aNode) const {
  return isElement(aNode) && (aStep->anyName || equal(aNode->ValueStr(), aStep->name));
}

bool XPathWalk::passes(XPathStep const* aStep, TiXmlNode* aNode) {
  XPathTest const* const first = mPlan.tests.data() + aStep->firstTest;
  return std::all_of(first, first + aStep->testCount,
                     [this, aNode](XPathTest const& aTest) { return holds(aTest, aNode); });
}

bool XPathWalk::passesCounted(XPathStep const* aStep, TiXmlNode* aNode, Counts& aCounts) {
  for (std::size_t index = 0; index < aStep->testCount; ++index) {
    XPathTest const& test = mPlan.tests[aStep->firstTest + index];
    if (test.of != Of::Position) {
      if (!holds(test, aNode)) {
        return false;
      }
      continue;
    }
    auto const position = static_cast<double>(++aCounts.seen[index]);
    aCounts.exhausted = aCounts.exhausted || position >= test.number;
    if (position != test.number) {
      return false;
    }
  }
  return true;
}

bool XPathWalk::holds(XPathTest const& aTest, TiXmlNode* aNode) {
  switch (aTest.of) {
    case Of::Attribute: {
      TiXmlAttribute const* const found = find(aNode, aTest.name);
      return found && compare(aTest, found->ValueStr());
    }
    case Of::Text:
      return holdsText(aTest, aNode);
    case Of::Child:
      return holdsChild(aTest, aNode);
    case Of::Position:
      break;
  }
  return false;
}

// Section 3.4: one node that compares true suffices, for "!=" too.
bool XPathWalk::holdsText(XPathTest const& aTest, TiXmlNode const* aNode) {
  TiXmlNode const* child = aNode->FirstChild();
  for (; child && spend(); child = child->NextSibling()) {
    if (isText(child) && compare(aTest, child->ValueStr())) {
      return true;
    }
  }
  return false;
}

bool XPathWalk::holdsChild(XPathTest const& aTest, TiXmlNode const* aNode) {
  TiXmlNode const* child = aNode->FirstChild();
  for (; child && spend(); child = child->NextSibling()) {
    if (isElement(child) && equal(child->ValueStr(), aTest.name) &&
        (aTest.by == By::Presence || compare(aTest, stringValue(child)))) {
      return true;
    }
  }
  return false;
}

// All text below an element; nearly always it is one node, which needs no copy.
std::string const& XPathWalk::stringValue(TiXmlNode const* aElement) {
  TiXmlNode const* const first = aElement->FirstChild();
  if (first && isText(first) && !first->NextSibling()) {
    return first->ValueStr();
  }
  mScratch.clear();
  for (TiXmlNode const* node = first; node && spend(); node = following(node, aElement)) {
    if (isText(node)) {
      mScratch += node->ValueStr();
    }
  }
  return mScratch;
}

void XPathWalk::restoreDocumentOrder(TiXmlNode* aTop) {
  auto const byPlace = [](XPathItem const& aLeft, XPathItem const& aRight) {
    return std::less<>()(aLeft.place(), aRight.place());
  };
  while (aTop->Parent()) {
    aTop = aTop->Parent();
  }
  std::sort(mResult.begin(), mResult.end(), byPlace);
  // One step gives one item for a place: the node, or one attribute of it.
  std::vector<XPathItem> ordered;
  ordered.reserve(mResult.size());
  for (TiXmlNode const* node = aTop; node; node = following(node, aTop)) {
    XPathItem const wanted(const_cast<TiXmlNode*>(node));
    auto const found = std::lower_bound(mResult.begin(), mResult.end(), wanted, byPlace);
    if (found != mResult.end() && found->place() == node) {
      ordered.push_back(*found);
    }
  }
  mResult.clear();
  for (XPathItem const& item : ordered) {
    mResult.add(item);
  }
}

}  // namespace Zelv::Infrastructure
