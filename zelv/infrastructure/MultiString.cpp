#include "zelv/infrastructure/MultiString.h"

namespace Zelv::Infrastructure {

std::string MultiString::join(std::list<std::string> const& aItems) {
  std::string text;
  bool first = true;
  for (std::string const& item : aItems) {
    if (!first) {
      text += Separator;
    }
    text += item;
    first = false;
  }
  return text;
}

std::list<std::string> MultiString::split(std::string const& aText) {
  std::list<std::string> items;
  std::string_view rest = aText;
  while (!rest.empty()) {
    auto const end = rest.find(Separator);
    items.emplace_back(rest.substr(0, end));
    if (end == std::string_view::npos) {
      break;
    }
    rest.remove_prefix(end + Separator.size());
  }
  return items;
}

}  // namespace Zelv::Infrastructure
