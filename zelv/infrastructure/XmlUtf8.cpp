#include "zelv/infrastructure/XmlUtf8.h"

#include <tinyxml.h>

#include <cctype>

#include "zelv/infrastructure/XmlText.h"

namespace Zelv::Infrastructure {

namespace {

bool beginsWithName(std::string const& aText, std::string const& aName) {
  if (aText.size() < aName.size()) {
    return false;
  }
  for (std::size_t at = 0; at < aName.size(); ++at) {
    if (std::tolower(static_cast<unsigned char>(aText[at])) != aName[at]) {
      return false;
    }
  }
  return true;
}

bool namesUtf8(TiXmlDeclaration const& aDeclaration) {
  std::string const encoding = aDeclaration.Encoding();
  return encoding.empty() || beginsWithName(encoding, "utf-8") || beginsWithName(encoding, "utf8");
}

bool isGoodElement(TiXmlElement const& aElement) {
  if (XmlUtf8::beginsWithMark(aElement.ValueStr())) {
    return false;
  }
  for (auto const* at = aElement.FirstAttribute(); at != nullptr; at = at->Next()) {
    if (XmlUtf8::beginsWithMark(at->NameTStr()) || !XmlUtf8::isGood(at->ValueStr())) {
      return false;
    }
  }
  return true;
}

bool isGoodAlone(TiXmlNode const& aNode) {
  if (TiXmlElement const* const element = aNode.ToElement()) {
    return isGoodElement(*element);
  }
  TiXmlText const* const text = aNode.ToText();
  return text == nullptr || text->CDATA() || XmlUtf8::isGood(text->ValueStr());
}

}  // namespace

bool XmlUtf8::isUsedBy(TiXmlDocument const& aDocument, bool aMark) {
  for (TiXmlNode const* node = aDocument.FirstChild(); node != nullptr && !aMark;
       node = node->NextSibling()) {
    // The first declaration decides for what follows.
    if (node->ToDeclaration() != nullptr) {
      return namesUtf8(*node->ToDeclaration());
    }
  }
  return aMark;
}

bool XmlUtf8::isGood(std::string const& aText) {
  if (!XmlText::mayEndWithinCharacter(aText)) {
    return true;
  }
  // What counts is where characters begin in the text as printed.
  std::string printed;
  TiXmlBase::EncodeString(aText, &printed);
  return !XmlText::endsWithinCharacter(printed);
}

bool XmlUtf8::isGood(TiXmlNode const& aNode) {
  if (!isGoodAlone(aNode)) {
    return false;
  }
  for (TiXmlNode const* child = aNode.FirstChild(); child != nullptr;
       child = child->NextSibling()) {
    if (!isGood(*child)) {
      return false;
    }
  }
  return true;
}

bool XmlUtf8::beginsWithMark(std::string const& aName) {
  return aName.starts_with("\xEF\xBB\xBF") || aName.starts_with("\xEF\xBF\xBE") ||
         aName.starts_with("\xEF\xBF\xBF");
}

}  // namespace Zelv::Infrastructure
