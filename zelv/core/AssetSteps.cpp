#include "zelv/core/AssetSteps.h"

#include "zelv/infrastructure/XPathGate.h"

namespace Zelv {

using Infrastructure::XPathGate;

namespace {

char const* const nowhere = "";

bool isPath(std::string const& aName) {
  return aName.starts_with('/');
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
  if (aPackagePath.empty() || (!isPath(aName) && !XPathGate::isQuotableLiteral(aName))) {
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
