#include "zelv/infrastructure/XmlRoom.h"

#include <tinyxml.h>

namespace Zelv::Infrastructure {

std::size_t XmlRoom::costOf(TiXmlNode const& aNode) {
  std::size_t cost = CostOfNode + aNode.ValueStr().size();
  if (TiXmlElement const* const element = aNode.ToElement()) {
    for (auto const* at = element->FirstAttribute(); at != nullptr; at = at->Next()) {
      cost += CostOfNode + at->NameTStr().size() + at->ValueStr().size();
    }
  }
  for (TiXmlNode const* child = aNode.FirstChild(); child != nullptr;
       child = child->NextSibling()) {
    cost += costOf(*child);
  }
  return cost;
}

bool XmlRoom::take(TiXmlDocument const& aDocument, std::size_t aCost) {
  if (aCost > mLeft) {
    std::size_t const used = costOf(aDocument);
    mLeft = used < Max ? Max - used : 0;
  }
  if (aCost > mLeft) {
    return false;
  }
  mLeft -= aCost;
  return true;
}

}  // namespace Zelv::Infrastructure
