// The gate before the XML library against the tree that the library makes of the same text: it must
// never take a tree for flatter or leaner than it is, nor a well-formed one for deeper.

#include <tinyxml.h>

#include <algorithm>
#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/infrastructure/XmlGate.h"
#include "zelv/infrastructure/XmlText.h"

using Zelv::Fuzz::expect;
using Zelv::Infrastructure::XmlGate;
using Zelv::Infrastructure::XmlText;

namespace {

struct Extent {
  int depth = 0;
  int attributes = 0;
};

void measure(TiXmlNode const& aNode, int aDepth, Extent& aExtent) {
  if (TiXmlElement const* const element = aNode.ToElement()) {
    int attributes = 0;
    for (auto const* at = element->FirstAttribute(); at != nullptr; at = at->Next()) {
      ++attributes;
    }
    aExtent.depth = std::max(aExtent.depth, aDepth);
    aExtent.attributes = std::max(aExtent.attributes, attributes);
  }
  for (auto const* child = aNode.FirstChild(); child != nullptr; child = child->NextSibling()) {
    measure(*child, aDepth + 1, aExtent);
  }
}

bool passes(XmlText const& aText, int aLevel) {
  return XmlGate::objection(aText.data(), aText.size(), aLevel) == nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  constexpr std::size_t cLongest = 1 << 14;
  std::string const xml(reinterpret_cast<char const*>(aData), std::min(aSize, cLongest));
  XmlText const text(xml);
  TiXmlDocument document;
  document.Parse(text.data(), nullptr, TIXML_ENCODING_UNKNOWN);
  Extent extent;
  measure(document, 0, extent);
  bool const lean = extent.attributes <= XmlGate::MaxAttributes;
  if (extent.depth > 0) {
    // With so many levels around it the tree is one level too deep, or just not.
    int const around = XmlGate::MaxDepth - extent.depth;
    expect("a tree too deep is refused", !passes(text, around + 1));
    if (!document.Error() && lean) {
      expect("a tree deep enough is not refused", passes(text, around));
    }
  }
  if (!lean) {
    expect("an element with too many attributes is refused", !passes(text, 0));
  }
  return 0;
}
