#include "apps/zelvctl/AssetName.h"

#include <algorithm>

#include "apps/zelvctl/PrintableText.h"

namespace ZelvCtl {

namespace {

/// File systems have no longer ones.
constexpr std::size_t longestName = 255;

}  // namespace

std::optional<std::string> AssetName::of(std::string const& aSource) {
  std::string const name = aSource.substr(aSource.rfind('/') + 1);
  bool const isUsable = !name.empty() && name.front() != '.' && name.size() <= longestName &&
                        PrintableText::masked(name) == name;
  return isUsable ? std::optional(name) : std::nullopt;
}

std::string AssetName::numbered(std::string const& aName, unsigned aNumber) {
  std::size_t const dot = std::min(aName.rfind('.'), aName.size());
  return aName.substr(0, dot) + "-" + std::to_string(aNumber) + aName.substr(dot);
}

}  // namespace ZelvCtl
