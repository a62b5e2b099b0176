#include "zelv/infrastructure/XPath.h"

#include <string_view>

namespace Zelv::Infrastructure {

namespace {

std::string before(std::string const& aText, char const* aMark) {
  return aText.substr(0, aText.find(aMark));
}

/// Takes aHead off the front of aText; false if it does not stand there.
bool take(std::string_view& aText, std::string_view aHead) {
  if (!aText.starts_with(aHead)) {
    return false;
  }
  aText.remove_prefix(aHead.size());
  return true;
}

}  // namespace

std::string XPath::removeAttributeStep(std::string const& aXPath) {
  return before(aXPath, "/@");
}

std::string XPath::removeTextStep(std::string const& aXPath) {
  return before(aXPath, "/text()");
}

/// Erasing a stretch brings no "[" in front of it, so one pass gives what erasing the first stretch
/// over and over would give.
std::string XPath::removePredicates(std::string const& aXPath) {
  std::size_t open = aXPath.find('[');
  if (open == std::string::npos) {
    return aXPath;
  }
  std::string result;
  result.reserve(aXPath.size());
  std::size_t kept = 0;
  while (open != std::string::npos) {
    std::size_t const close = aXPath.find(']', open);
    if (close == std::string::npos) {
      break;
    }
    result.append(aXPath, kept, open - kept);
    kept = close + 1;
    open = aXPath.find('[', kept);
  }
  result.append(aXPath, kept);
  return result;
}

std::string XPath::getFirstPredicate(std::string const& aXPath, std::string& aPrefix) {
  std::size_t const open = aXPath.find('[');
  std::size_t const close = open == std::string::npos ? open : aXPath.find(']', open);
  if (close == std::string::npos) {
    aPrefix.clear();
    return "";
  }
  std::string predicate = aXPath.substr(open + 1, close - open - 1);
  aPrefix.assign(aXPath, 0, open);
  return predicate;
}

std::string XPath::getLastStep(std::string const& aXPath) {
  std::size_t const slash = aXPath.rfind('/');
  return slash == std::string::npos ? "" : aXPath.substr(slash + 1);
}

bool XPath::isLocalXPath(std::string const& aXPath, GUID const& aDeviceId) {
  std::string_view rest(aXPath);
  if (take(rest, "/Zelv/")) {
    return true;
  }
  if (!take(rest, "/Zelv[@DeviceId=") || rest.empty()) {
    return false;
  }
  char const quote = rest.front();
  if (quote != '\'' && quote != '"') {
    return false;
  }
  rest.remove_prefix(1);
  return take(rest, aDeviceId.toString()) && take(rest, {&quote, 1}) && take(rest, "]/");
}

}  // namespace Zelv::Infrastructure
