#include "zelv/core/AssetSteps.h"

#include "zelv/infrastructure/XPathGate.h"

namespace Zelv {

using Infrastructure::XPathGate;

namespace {

char const* const nowhere = "";

bool isPath(std::string const& aName) {
  return aName.starts_with('/');
}

/// True with a "|" outside of quotes and predicates.
bool isUnion(std::string const& aName) {
  char quote = 0;
  int depth = 0;
  for (char const character : aName) {
    if (quote != 0) {
      quote = character == quote ? '\0' : quote;
    } else if (character == '\'' || character == '"') {
      quote = character;
    } else if (character == '|' && depth <= 0) {
      return true;
    } else {
      depth += character == '[' ? 1 : character == ']' ? -1 : 0;
    }
  }
  return false;
}

/// Whether a name may become steps of a path.
bool isStep(std::string const& aName) {
  return !isUnion(aName) && (isPath(aName) || XPathGate::isQuotableLiteral(aName));
}

std::string packageWith(char const* aAttribute, std::string const& aValue) {
  if (!XPathGate::isQuotableLiteral(aValue)) {
    return nowhere;
  }
  return AssetSteps::anyPackage() + "[" + aAttribute + "='" + aValue + "']";
}

}  // namespace

std::string AssetSteps::anyPackage() {
  return "/AssetPackage";
}

std::string AssetSteps::packageByName(std::string const& aName) {
  return packageWith("@name", aName);
}

std::string AssetSteps::packageByID(std::string const& aId) {
  return packageWith("@ID", aId);
}

std::string AssetSteps::assetByName(std::string const& aPackagePath, std::string const& aName) {
  if (aPackagePath.empty() || !isStep(aName)) {
    return nowhere;
  }
  return aPackagePath + m_ConstructAssetRequestByName(aName);
}

std::string AssetSteps::assetByID(std::string const& aPackagePath, std::string const& aId) {
  if (aPackagePath.empty() || !XPathGate::isQuotableLiteral(aId)) {
    return nowhere;
  }
  return aPackagePath + "//*[@ID='" + aId + "']";
}

std::string AssetSteps::m_ConstructAssetRequestByName(std::string const& aName) {
  return isPath(aName) ? aName : "//" + aName;
}

}  // namespace Zelv
