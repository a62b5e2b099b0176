#include "zelv/infrastructure/XmlFragment.h"

#include <tinyxml.h>

#include "zelv/infrastructure/XmlRoom.h"
#include "zelv/infrastructure/XmlText.h"
#include "zelv/infrastructure/XmlUtf8.h"

namespace Zelv::Infrastructure {

namespace {

/// Declarations are printed as they are, between double quotes.
bool isPrintable(std::string const& aPart) {
  return aPart.find_first_of("\"&") == std::string::npos && !XmlText::endsWithinCharacter(aPart);
}

bool mayBeLinked(TiXmlNode const& aNode) {
  if (aNode.ToUnknown() != nullptr) {
    return aNode.ValueStr().empty() || aNode.ValueStr().front() != '/';
  }
  TiXmlDeclaration const* const declaration = aNode.ToDeclaration();
  return declaration == nullptr ||
         (isPrintable(declaration->Version()) && isPrintable(declaration->Encoding()) &&
          isPrintable(declaration->Standalone()));
}

void leaveOut(TiXmlNode& aParent) {
  TiXmlNode* child = aParent.FirstChild();
  while (child != nullptr) {
    TiXmlNode* const next = child->NextSibling();
    if (mayBeLinked(*child)) {
      leaveOut(*child);
    } else {
      aParent.RemoveChild(child);
    }
    child = next;
  }
}

}  // namespace

XmlFragment::XmlFragment(XmlText const& aXml) : mDocument(std::make_unique<TiXmlDocument>()) {
  mDocument->SetTabSize(0);
  // The library gives null both when it came to the end and when it met an error.
  if (mDocument->Parse(aXml.data(), nullptr, TIXML_ENCODING_UNKNOWN) != nullptr ||
      mDocument->FirstChildElement() == nullptr) {
    mDocument->Clear();
  }
  leaveOut(*mDocument);
}

XmlFragment::~XmlFragment() = default;

bool XmlFragment::empty() const {
  return mDocument->NoChildren();
}

std::size_t XmlFragment::cost() const {
  return XmlRoom::costOf(*mDocument);
}

bool XmlFragment::isGoodUtf8() const {
  return XmlUtf8::isGood(*mDocument);
}

void XmlFragment::linkInto(TiXmlElement& aParent) const {
  for (TiXmlNode const* node = mDocument->FirstChild(); node != nullptr;
       node = node->NextSibling()) {
    aParent.LinkEndChild(node->Clone());
  }
}

}  // namespace Zelv::Infrastructure
