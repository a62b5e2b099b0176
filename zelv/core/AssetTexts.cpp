#include "zelv/core/AssetTexts.h"

namespace Zelv {

std::string AssetTexts::result(std::string const& aRequestId, std::string const& aTag,
                               std::string const& aXml) {
  std::string text = "<RequestContents requestID='";
  text += aRequestId;
  text += "'>";
  text += aTag;
  text += aXml;
  text += "</AssetContents></RequestContents>";
  return text;
}

std::string AssetTexts::failure(std::string const& aRequestId) {
  return "<RequestContents error='true' requestID='" + aRequestId + "' />";
}

std::string AssetTexts::packageByName(std::string const& aName) {
  return "<AssetContents type='package' name='" + aName + "' >";
}

std::string AssetTexts::packageByID(std::string const& aId) {
  return "<AssetContents type='package' ID='" + aId + "' >";
}

std::string AssetTexts::assetByName(std::string const& aName, std::string const& aPackageName) {
  return "<AssetContents type='asset' name='" + aName + "' package='" + aPackageName + "' >";
}

// The one without a type; devices know it by that.
std::string AssetTexts::assetByID(std::string const& aId, std::string const& aPackageName) {
  return "<AssetContents ID='" + aId + "' package='" + aPackageName + "' >";
}

std::string AssetTexts::assetAnywhereByName(std::string const& aName) {
  return "<AssetContents type='asset' name='" + aName + "' >";
}

std::string AssetTexts::assetAnywhereByID(std::string const& aId) {
  return "<AssetContents type='asset' ID='" + aId + "' >";
}

}  // namespace Zelv
