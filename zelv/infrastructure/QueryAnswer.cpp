#include "zelv/infrastructure/QueryAnswer.h"

#include <tinyxml.h>

#include <algorithm>

#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure {

namespace {

constexpr int cCompact = -1;

/// Whether escaping and unescaping a text gives the text itself. Without an "&" all entities in the
/// escaped text are those of the escaping, and each is taken back; a control byte stays a
/// reference.
bool isPlain(std::string const& aText) {
  return std::none_of(aText.begin(), aText.end(), [](char aByte) {
    return aByte == '&' || static_cast<unsigned char>(aByte) < ' ';
  });
}

/// Unescapes what stands from aFrom on. The texts before it are unescaped already, and the
/// separator behind them keeps an entity from beginning there: so it comes to the same as
/// unescaping all.
void unescapeFrom(std::size_t aFrom, std::string& aAnswer) {
  if (aAnswer.find('&', aFrom) == std::string::npos) {
    return;
  }
  if (aFrom == 0) {
    XMLSerializer::unescapeXMLEntities(aAnswer, aAnswer);
    return;
  }
  std::string item = aAnswer.substr(aFrom);
  XMLSerializer::unescapeXMLEntities(item, item);
  aAnswer.replace(aFrom, std::string::npos, item);
}

void appendText(std::string const& aText, std::string& aAnswer) {
  if (isPlain(aText)) {
    aAnswer += aText;
    return;
  }
  std::string item;
  XMLSerializer::escapeXMLEntities(aText, item);
  XMLSerializer::unescapeXMLEntities(item, item);
  aAnswer += item;
}

void appendName(XPathItem const& aItem, std::string& aAnswer) {
  std::size_t const from = aAnswer.size();
  aAnswer += aItem.isAttribute() ? aItem.attribute()->Value() : aItem.node()->Value();
  unescapeFrom(from, aAnswer);
}

void appendValue(XPathItem const& aItem, std::string& aAnswer) {
  if (aItem.isAttribute()) {
    return appendText(aItem.attribute()->ValueStr(), aAnswer);
  }
  TiXmlText const* const text = aItem.node()->ToText();
  if (text != nullptr && !text->CDATA()) {
    return appendText(text->ValueStr(), aAnswer);
  }
  std::size_t const from = aAnswer.size();
  XMLSerializer::serializeNode(aItem.node(), aAnswer, cCompact);
  unescapeFrom(from, aAnswer);
}

}  // namespace

bool QueryAnswer::make(XPathResult const& aMatches, bool aNames, std::string& aAnswer) {
  aAnswer.clear();
  XPathItem const* const first = aMatches.begin();
  for (XPathItem const& item : aMatches) {
    if (&item != first) {
      aAnswer += MultiString::Separator;
    }
    if (aNames) {
      appendName(item, aAnswer);
    } else {
      appendValue(item, aAnswer);
    }
    if (aAnswer.size() > MaxSize) {
      return false;
    }
  }
  return true;
}

}  // namespace Zelv::Infrastructure
