#include "apps/zelvctl/Markup.h"

#include <pugixml.hpp>

namespace ZelvCtl {

namespace {

/// @return false when the text does not stay between the tags.
bool load(pugi::xml_document& aDocument, std::string const& aText) {
  std::string const element = "<x>" + aText + "</x>";
  auto const result = aDocument.load_buffer(element.data(), element.size());
  // A second element behind the first was begun by the text, which must have closed the first.
  return result && aDocument.first_child() == aDocument.last_child();
}

}  // namespace

bool Markup::isContent(std::string const& aText) {
  pugi::xml_document document;
  return load(document, aText);
}

bool Markup::isElement(std::string const& aText) {
  pugi::xml_document document;
  return aText.starts_with('<') && load(document, aText) &&
         document.first_child().first_child().type() == pugi::node_element;
}

}  // namespace ZelvCtl
