// An expression on a document, parted by the first line feed. What is walked directly must give
// what the general engine gives; every result must be in document order, each node once.

#include <tinyxml.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/XNSp_xpath_node_list.h"
#include "zelv/infrastructure/XPathExpression.h"
#include "zelv/infrastructure/XPathMirror.h"
#include "zelv/infrastructure/XPathResult.h"
#include "zelv/infrastructure/XmlGate.h"
#include "zelv/infrastructure/XmlText.h"

namespace {

using namespace Zelv::Infrastructure;
using Zelv::Fuzz::expect;

/// Goes through a document and ticks off the items of a result as it comes by.
class Order {
 public:
  explicit Order(XPathResult const& aResult) : mNext(aResult.begin()), mEnd(aResult.end()) {}

  void pass(TiXmlNode& aNode) {
    tick(XPathItem(&aNode));
    TiXmlElement* const element = aNode.ToElement();
    TiXmlAttribute* attribute = element ? element->FirstAttribute() : nullptr;
    for (; attribute; attribute = attribute->Next()) {
      tick(XPathItem(element, attribute));
    }
    for (TiXmlNode* child = aNode.FirstChild(); child; child = child->NextSibling()) {
      pass(*child);
    }
  }

  bool isComplete() const { return mNext == mEnd; }

 private:
  void tick(XPathItem const& aItem) { mNext += mNext != mEnd && *mNext == aItem ? 1 : 0; }

  XPathItem const* mNext;
  XPathItem const* mEnd;
};

bool isSame(XPathItem const& aItem, TiXmlNode const* aNode) {
  return aItem.isAttribute() ? aNode->ValueStr() == aItem.attribute()->ValueStr()
                             : aNode == aItem.node();
}

void checkList(TiXmlDocument& aDocument, std::string const& aText, XPathResult const& aResult) {
  std::vector<TiXmlNode*> nodes;
  TinyXPath::XNSp_xpath_node_list(&nodes, &aDocument, aText.c_str());
  bool const same = std::equal(aResult.begin(), aResult.end(), nodes.begin(), nodes.end(), isSame);
  TinyXPath::XNSp_free_attribute_nodes(&nodes);
  expect("the list of nodes", same || aText.find('\0') != std::string::npos);
}

void check(TiXmlDocument& aDocument, std::string const& aText) {
  XPathExpression const expression(aText);
  XPathResult result;
  expression.evaluate(&aDocument, result);
  Order order(result);
  order.pass(aDocument);
  expect("document order", order.isComplete());
  if (expression.isDirect()) {
    XPathResult other;
    XPathMirror(aDocument).select(aText.c_str(), &aDocument, other);
    expect("the engines agree",
           std::equal(result.begin(), result.end(), other.begin(), other.end()));
  }
  checkList(aDocument, aText, result);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::string const input(reinterpret_cast<char const*>(aData), aSize);
  std::size_t const line = input.find('\n');
  std::string const xml = line == std::string::npos ? "" : input.substr(line + 1);
  XmlText const text(xml);
  if (XmlGate::objection(text.data(), text.size())) {
    return 0;
  }
  TiXmlDocument document;
  document.SetTabSize(0);
  document.Parse(text.data(), nullptr, TIXML_ENCODING_UNKNOWN);
  check(document, input.substr(0, line));
  return 0;
}
