#include "apps/zelvctl/AssetMessage.h"

#include <set>

#include "apps/zelvctl/Identifier.h"

namespace ZelvCtl {

namespace {

char const* const name = "name";
char const* const id = "ID";

/// "asset 'x'", "package with the ID 'y'"; the words for what others call by its element.
std::string words(std::string const& aElement, std::string const& aAttribute,
                  std::string const& aValue) {
  return std::string(aElement == "Asset" ? "asset" : "package") +
         (aAttribute == id ? " with the ID '" : " '") + aValue + "'";
}

std::string opening(std::string const& aElement, std::string const& aAttribute,
                    std::string const& aValue) {
  return "<" + aElement + " " + aAttribute + "='" + aValue + "'";
}

}  // namespace

// Names come before identifiers, as sets answer them within a package.
AssetMessage::AssetMessage(std::string const& aSenderId, Options const& aOptions)
    : mSenderId(aSenderId), mRequestId(Identifier::create()) {
  bool const wantsAssets = !aOptions.assets.empty() || !aOptions.assetIds.empty();
  if (wantsAssets && !aOptions.packages.empty()) {
    askInPackage(name, aOptions.packages.front(), words("Package", name, aOptions.packages.front()),
                 aOptions);
  } else if (wantsAssets && !aOptions.packageIds.empty()) {
    askInPackage(id, aOptions.packageIds.front(), words("Package", id, aOptions.packageIds.front()),
                 aOptions);
  } else {
    ask("Package", name, aOptions.packages, "");
    ask("Package", id, aOptions.packageIds, "");
    ask("Asset", name, aOptions.assets, "");
    ask("Asset", id, aOptions.assetIds, "");
  }
}

/// Each once, however often it was given.
void AssetMessage::ask(std::string const& aElement, std::string const& aAttribute,
                       std::vector<std::string> const& aValues, std::string const& aPlace) {
  std::set<std::string> asked;
  for (std::string const& value : aValues) {
    if (asked.insert(value).second) {
      mThings.push_back(words(aElement, aAttribute, value) + aPlace);
      mQuestions += opening(aElement, aAttribute, value) + " />";
    }
  }
}

void AssetMessage::askInPackage(std::string const& aAttribute, std::string const& aPackage,
                                std::string const& aWords, Options const& aOptions) {
  mQuestions += opening("Package", aAttribute, aPackage) + ">";
  ask("Asset", name, aOptions.assets, " in " + aWords);
  ask("Asset", id, aOptions.assetIds, " in " + aWords);
  mQuestions += "</Package>";
}

std::string AssetMessage::text() const {
  return "<Envelope><Header><MessageID>" + Identifier::create() + "</MessageID><SenderID>" +
         mSenderId + "</SenderID></Header><Body><AssetRequest ID='" + mRequestId + "'>" +
         mQuestions + "</AssetRequest></Body></Envelope>";
}

}  // namespace ZelvCtl
