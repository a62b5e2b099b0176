#include "zelv/infrastructure/XMLSerializer.h"

#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace Zelv::Infrastructure {

namespace {

constexpr int cCompact = -1;

void indent(std::string& aResult, int aDepth) {
  if (aDepth > 0) {
    aResult.append(static_cast<std::size_t>(aDepth), ' ');
  }
}

int childDepth(int aDepth) {
  return aDepth == cCompact ? cCompact : aDepth + 1;
}

bool isText(TiXmlNode const& aNode) {
  return aNode.Type() == TiXmlNode::TINYXML_TEXT;
}

void serializeChildren(TiXmlElement const& aElement, std::string& aResult, int aDepth) {
  for (auto const* child = aElement.FirstChild(); child != nullptr; child = child->NextSibling()) {
    if (!isText(*child) && aDepth != cCompact) {
      aResult += '\n';
    }
    XMLSerializer::serializeNode(child, aResult, childDepth(aDepth));
  }
  if (aDepth != cCompact) {
    aResult += '\n';
    indent(aResult, aDepth);
  }
}

constexpr std::array<bool, 256> makeSpecial() {
  std::array<bool, 256> special{};
  for (std::size_t i = 0; i < 0x20; ++i) {
    special[i] = true;
  }
  for (char const character : {'&', '<', '>', '"', '\''}) {
    special[static_cast<unsigned char>(character)] = true;
  }
  return special;
}

/// The bytes that do not stand for themselves.
constexpr std::array<bool, 256> cSpecial = makeSpecial();

void appendSpecial(std::string& aOut, unsigned char aByte) {
  switch (aByte) {
    case '&':
      aOut += "&amp;";
      break;
    case '<':
      aOut += "&lt;";
      break;
    case '>':
      aOut += "&gt;";
      break;
    case '"':
      aOut += "&quot;";
      break;
    case '\'':
      aOut += "&apos;";
      break;
    default:
      aOut += "&#x";
      aOut += "0123456789ABCDEF"[aByte >> 4];
      aOut += "0123456789ABCDEF"[aByte & 15];
      aOut += ';';
  }
}

/// Where the bytes end that pass as they are, when aFrom is the "&" of a reference: before its ";",
/// or, if none comes, before the last byte.
char const* endOfReference(char const* aFrom, char const* aEnd) {
  auto const size = static_cast<std::size_t>(aEnd - aFrom);
  auto const* end = static_cast<char const*>(std::memchr(aFrom, ';', size));
  return end != nullptr ? end : aEnd - 1;
}

bool isReference(char const* aFrom, char const* aEnd) {
  return aEnd - aFrom > 2 && aFrom[0] == '&' && aFrom[1] == '#' && aFrom[2] == 'x';
}

void appendEscaped(std::string const& aIn, std::string& aOut) {
  char const* const end = aIn.data() + aIn.size();
  char const* plain = aIn.data();
  for (char const* at = plain; at != end; ++at) {
    if (!cSpecial[static_cast<unsigned char>(*at)]) {
      continue;
    }
    if (isReference(at, end)) {
      // The byte that ends it is looked at next, as an ordinary one.
      at = endOfReference(at, end) - 1;
      continue;
    }
    aOut.append(plain, at);
    appendSpecial(aOut, static_cast<unsigned char>(*at));
    plain = at + 1;
  }
  aOut.append(plain, end);
}

struct Entity {
  std::string_view text;
  char character;
};

/// In the order of their turns when unescaping: it decides what comes of doubled entities.
constexpr Entity cEntities[] = {
    {"&quot;", '"'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}};

/// Where the first stretch may begin that is one of the entities or becomes one; aText.size() if
/// none does. No replacement is a letter, so a "&" that a letter does not follow now never begins
/// an entity. Texts joined by numeric references are thus passed over.
std::size_t firstCandidate(std::string const& aText) {
  std::size_t at = aText.find('&');
  while (at < aText.size()) {
    char const next = aText.c_str()[at + 1];
    if (next == 'q' || next == 'a' || next == 'l' || next == 'g') {
      return at;
    }
    at = aText.find('&', at + 1);
  }
  return aText.size();
}

/// Replaces aFind from aStart on until none is left.
///
/// What is finished stands at the front and holds no aFind; each byte put behind it can complete
/// one only at the very end. That is the occurrence that a search from the start would find first,
/// so one pass gives what replacing the first one over and over gives. REQUIRES: aReplacement does
/// not end as aFind does.
void replaceAll(std::string_view aFind, std::string_view aReplacement, std::string& aText,
                std::size_t aStart) {
  char* const front = aText.data() + aStart;
  char const* const end = aText.data() + aText.size();
  auto const size = static_cast<std::ptrdiff_t>(aFind.size());
  char* to = front;
  for (char const* from = front; from != end; ++from) {
    *to++ = *from;
    if (*from == aFind.back() && to - front >= size && to[-size] == aFind.front() &&
        std::memcmp(to - size, aFind.data(), aFind.size()) == 0) {
      to -= size;
      to = std::copy(aReplacement.begin(), aReplacement.end(), to);
    }
  }
  aText.resize(static_cast<std::size_t>(to - aText.data()));
}

}  // namespace

void XMLSerializer::serializeDocument(TiXmlDocument const* aDocument, std::string& aResult,
                                      int aDepth) {
  for (auto const* node = aDocument->FirstChild(); node != nullptr; node = node->NextSibling()) {
    serializeNode(node, aResult, aDepth);
    if (aDepth != cCompact) {
      aResult += '\n';
    }
  }
}

void XMLSerializer::serializeNode(TiXmlNode const* aNode, std::string& aResult, int aDepth) {
  switch (aNode->Type()) {
    case TiXmlNode::TINYXML_DOCUMENT:
      return serializeDocument(aNode->ToDocument(), aResult, aDepth);
    case TiXmlNode::TINYXML_ELEMENT:
      return serializeElement(aNode->ToElement(), aResult, aDepth);
    case TiXmlNode::TINYXML_COMMENT:
      return serializeComment(aNode->ToComment(), aResult, aDepth);
    case TiXmlNode::TINYXML_TEXT:
      return serializeText(aNode->ToText(), aResult, aDepth);
    case TiXmlNode::TINYXML_DECLARATION:
      return serializeDeclaration(aNode->ToDeclaration(), aResult, aDepth);
    default:
      return;
  }
}

void XMLSerializer::serializeElement(TiXmlElement const* aElement, std::string& aResult,
                                     int aDepth) {
  std::string const& name = aElement->ValueStr();
  indent(aResult, aDepth);
  aResult += '<';
  aResult += name;
  for (auto const* attribute = aElement->FirstAttribute(); attribute != nullptr;
       attribute = attribute->Next()) {
    aResult += ' ';
    serializeAttribute(attribute, aResult, aDepth);
  }
  auto const* const child = aElement->FirstChild();
  if (child == nullptr) {
    aResult += "/>";
    return;
  }
  aResult += '>';
  if (child->NextSibling() == nullptr && isText(*child)) {
    serializeText(child->ToText(), aResult, childDepth(aDepth));
  } else {
    serializeChildren(*aElement, aResult, aDepth);
  }
  aResult += "</";
  aResult += name;
  aResult += '>';
}

/// The quotes follow the escaped value, not the value: "&apos;" within a reference that passes as
/// it is counts too.
void XMLSerializer::serializeAttribute(TiXmlAttribute const* aAttribute, std::string& aResult,
                                       int /*aDepth*/) {
  appendEscaped(aAttribute->NameTStr(), aResult);
  aResult += "='";
  std::size_t const value = aResult.size();
  appendEscaped(aAttribute->ValueStr(), aResult);
  bool const apostrophe = aResult.find("&apos;", value) != std::string::npos;
  char const quote = apostrophe ? '"' : '\'';
  aResult[value - 1] = quote;
  aResult += quote;
}

void XMLSerializer::serializeText(TiXmlText const* aText, std::string& aResult, int aDepth) {
  if (!aText->CDATA()) {
    appendEscaped(aText->ValueStr(), aResult);
    return;
  }
  aResult += '\n';
  indent(aResult, aDepth);
  aResult += "<![CDATA[";
  aResult += aText->ValueStr();
  aResult += "]]>\n";
}

void XMLSerializer::serializeComment(TiXmlComment const* aComment, std::string& aResult,
                                     int aDepth) {
  indent(aResult, aDepth);
  aResult += "<!--";
  aResult += aComment->ValueStr();
  aResult += "-->";
}

void XMLSerializer::serializeDeclaration(TiXmlDeclaration const* aDeclaration, std::string& aResult,
                                         int /*aDepth*/) {
  aResult += "<?xml version=\"";
  aResult += aDeclaration->Version();
  aResult += "\" encoding=\"";
  aResult += aDeclaration->Encoding();
  aResult += "\" standalone=\"";
  aResult += aDeclaration->Standalone();
  aResult += "\" ?>";
}

void XMLSerializer::escapeXMLEntities(std::string const& aIn, std::string& aOut) {
  aOut.clear();
  appendEscaped(aIn, aOut);
}

void XMLSerializer::unescapeXMLEntities(std::string const& aIn, std::string& aOut) {
  if (&aIn != &aOut) {
    aOut = aIn;
  }
  std::size_t const start = firstCandidate(aOut);
  if (start == aOut.size()) {
    return;
  }
  for (Entity const& entity : cEntities) {
    replaceAll(entity.text, {&entity.character, 1}, aOut, start);
  }
}

void XMLSerializer::unescapeOneXMLEntity(std::string const& aEntity, std::string& aText) {
  if (aEntity.empty() || aText.find(aEntity) == std::string::npos) {
    return;
  }
  std::string_view replacement;
  for (Entity const& entity : cEntities) {
    if (entity.text == aEntity) {
      replacement = {&entity.character, 1};
    }
  }
  replaceAll(aEntity, replacement, aText, 0);
}

}  // namespace Zelv::Infrastructure
