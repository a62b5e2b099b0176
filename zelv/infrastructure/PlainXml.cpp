#include "zelv/infrastructure/PlainXml.h"

#include <algorithm>

namespace Zelv::Infrastructure {

namespace {

struct Entity {
  std::string_view text;
  char character;
};

/// Without that of "&": once it stands in a text, other entities may be made of what is around it.
constexpr Entity cEntities[] = {{"&apos;", '\''}, {"&quot;", '"'}, {"&lt;", '<'}, {"&gt;", '>'}};

constexpr std::string_view cTextStep = "/text()";
constexpr std::string_view cNodeStep = "/node()";
constexpr std::string_view cFirstName = "/*[1]/name()";

bool isLetter(char aByte) {
  return (aByte >= 'a' && aByte <= 'z') || (aByte >= 'A' && aByte <= 'Z');
}

bool isLetterOrDigit(char aByte) {
  return isLetter(aByte) || (aByte >= '0' && aByte <= '9');
}

bool isName(std::string_view aText) {
  return !aText.empty() && isLetter(aText.front()) &&
         std::all_of(aText.begin(), aText.end(), isLetterOrDigit);
}

/// The name at the front, which is cut off.
std::string_view takeName(std::string_view& aRest) {
  std::size_t size = 0;
  while (size < aRest.size() && isLetterOrDigit(aRest[size])) {
    ++size;
  }
  std::string_view const name = aRest.substr(0, size);
  aRest.remove_prefix(size);
  return name;
}

bool takeByte(std::string_view& aRest, char aByte) {
  if (aRest.empty() || aRest.front() != aByte) {
    return false;
  }
  aRest.remove_prefix(1);
  return true;
}

/// Null when none of them stands at the front.
Entity const* entityAt(std::string_view aRest) {
  for (Entity const& entity : cEntities) {
    if (aRest.starts_with(entity.text)) {
      return &entity;
    }
  }
  return nullptr;
}

/// Whether a parser gives the text as it stands, but for entities. It drops blanks at the ends and
/// makes one of several.
bool isPlainText(std::string_view aText) {
  char before = ' ';
  for (std::size_t at = 0; at < aText.size(); ++at) {
    char const byte = aText[at];
    bool const plain = byte == ' '   ? before != ' '
                       : byte == '&' ? entityAt(aText.substr(at)) != nullptr
                                     : byte > ' ' && byte <= '~' && byte != '>';
    if (!plain) {
      return false;
    }
    before = byte;
  }
  return before != ' ';
}

void decode(std::string_view aText, std::string& aResult) {
  aResult.clear();
  std::size_t at = 0;
  for (std::size_t next = aText.find('&'); next != std::string_view::npos;
       next = aText.find('&', at)) {
    aResult.append(aText, at, next - at);
    Entity const* const entity = entityAt(aText.substr(next));
    aResult += entity->character;
    at = next + entity->text.size();
  }
  aResult.append(aText, at);
}

}  // namespace

PlainXml::PlainXml(std::string const& aText)
    : mText(aText), mPlain(mText.size() <= MaxText && read()) {}

bool PlainXml::read() {
  std::string_view rest(mText);
  if (!begin(rest)) {
    return false;
  }
  while (mOpen != cNone) {
    bool const good = rest.starts_with("</")  ? end(rest)
                      : rest.starts_with("<") ? begin(rest)
                                              : take(rest);
    if (!good) {
      return false;
    }
  }
  return rest.empty() || rest == "\n";
}

bool PlainXml::begin(std::string_view& aRest) {
  if (!takeByte(aRest, '<') || aRest.empty() || !isLetter(aRest.front())) {
    return false;
  }
  std::string_view const name = takeName(aRest);
  if (!takeByte(aRest, '>') || name.size() > MaxName || mCount == MaxElements ||
      child(mOpen, name) != cNone) {
    return false;
  }
  if (mOpen != cNone) {
    if (mElements[mOpen].textSize > 0) {
      return false;
    }
    mElements[mOpen].hasElements = true;
  }
  mElements[mCount] = {
      at(name), 0, 0, static_cast<std::uint8_t>(name.size()), static_cast<std::uint8_t>(mOpen),
      false};
  mOpen = mCount++;
  return true;
}

bool PlainXml::end(std::string_view& aRest) {
  Element const& element = mElements[mOpen];
  aRest.remove_prefix(2);
  if (takeName(aRest) != nameOf(element) || !takeByte(aRest, '>')) {
    return false;
  }
  mOpen = element.parent;
  return true;
}

bool PlainXml::take(std::string_view& aRest) {
  Element& element = mElements[mOpen];
  std::size_t const size = aRest.find('<');
  if (size == std::string_view::npos || element.hasElements ||
      !isPlainText(aRest.substr(0, size))) {
    return false;
  }
  element.textAt = at(aRest);
  element.textSize = static_cast<std::uint32_t>(size);
  aRest.remove_prefix(size);
  return true;
}

std::string_view PlainXml::nameOf(Element const& aElement) const {
  return std::string_view(mText).substr(aElement.nameAt, aElement.nameSize);
}

std::string_view PlainXml::textOf(Element const& aElement) const {
  return std::string_view(mText).substr(aElement.textAt, aElement.textSize);
}

std::uint32_t PlainXml::at(std::string_view aPlace) const {
  return static_cast<std::uint32_t>(aPlace.data() - mText.data());
}

std::size_t PlainXml::child(std::size_t aParent, std::string_view aName) const {
  for (std::size_t index = 0; index < mCount; ++index) {
    if (mElements[index].parent == aParent && nameOf(mElements[index]) == aName) {
      return index;
    }
  }
  return cNone;
}

bool PlainXml::walk(std::string_view aPath, std::size_t& aElement) const {
  aElement = cNone;
  bool there = true;
  do {
    if (!takeByte(aPath, '/')) {
      return false;
    }
    std::string_view const step = aPath.substr(0, aPath.find('/'));
    if (!isName(step)) {
      return false;
    }
    aPath.remove_prefix(step.size());
    aElement = there ? child(aElement, step) : cNone;
    there = aElement != cNone;
  } while (!aPath.empty());
  return true;
}

PlainXml::Found PlainXml::content(std::string_view aXPath, std::string& aResult) const {
  if (aXPath.ends_with(cTextStep)) {
    return valueOf(aXPath.substr(0, aXPath.size() - cTextStep.size()), true, aResult);
  }
  if (aXPath.ends_with(cNodeStep)) {
    return valueOf(aXPath.substr(0, aXPath.size() - cNodeStep.size()), false, aResult);
  }
  if (aXPath.ends_with(cFirstName)) {
    return firstNameIn(aXPath.substr(0, aXPath.size() - cFirstName.size()), aResult);
  }
  return Found::Unasked;
}

/// @param aMayBeEmpty  an element without the node that is asked for reads as an empty one; of one
///                     with elements in it, nothing else than that is known here.
PlainXml::Found PlainXml::valueOf(std::string_view aPath, bool aMayBeEmpty,
                                  std::string& aResult) const {
  std::size_t index = cNone;
  if (!walk(aPath, index)) {
    return Found::Unasked;
  }
  if (index == cNone) {
    return Found::No;
  }
  Element const& element = mElements[index];
  if (element.hasElements && !aMayBeEmpty) {
    return Found::Unasked;
  }
  if (element.textSize == 0 && !aMayBeEmpty) {
    return Found::No;
  }
  decode(textOf(element), aResult);
  return Found::Yes;
}

PlainXml::Found PlainXml::firstNameIn(std::string_view aPath, std::string& aResult) const {
  std::size_t index = cNone;
  if (!walk(aPath, index)) {
    return Found::Unasked;
  }
  if (index == cNone || !mElements[index].hasElements) {
    return Found::No;
  }
  // Elements stand in the order of their beginnings.
  aResult = nameOf(mElements[index + 1]);
  return Found::Yes;
}

}  // namespace Zelv::Infrastructure
