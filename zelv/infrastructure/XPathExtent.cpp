#include "zelv/infrastructure/XPathExtent.h"

#include <tinyxml.h>

#include "zelv/infrastructure/XPathGate.h"

namespace Zelv::Infrastructure {

namespace {

constexpr std::uint64_t bytesPerUnit = 16;

std::uint64_t sizeOf(TiXmlNode const& aNode) {
  std::uint64_t size = 1 + aNode.ValueStr().size() / bytesPerUnit;
  TiXmlElement const* const element = aNode.ToElement();
  TiXmlAttribute const* attribute = element ? element->FirstAttribute() : nullptr;
  for (; attribute; attribute = attribute->Next()) {
    size += 1 + attribute->ValueStr().size() / bytesPerUnit;
  }
  return size;
}

}  // namespace

XPathExtent XPathExtent::of(TiXmlNode const& aTop) {
  XPathExtent extent;
  std::uint64_t level = 0;
  TiXmlNode const* node = &aTop;
  while (extent.size <= XPathGate::maximumCost) {
    extent.size += sizeOf(*node);
    extent.levels += level;
    if (node->FirstChild()) {
      node = node->FirstChild();
      ++level;
      continue;
    }
    while (node != &aTop && !node->NextSibling()) {
      node = node->Parent();
      --level;
    }
    if (node == &aTop) {
      break;
    }
    node = node->NextSibling();
  }
  return extent;
}

}  // namespace Zelv::Infrastructure
