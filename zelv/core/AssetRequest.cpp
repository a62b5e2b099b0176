#include "zelv/core/AssetRequest.h"

#include <stdexcept>
#include <utility>

#include "zelv/core/AssetFiles.h"
#include "zelv/core/AssetSteps.h"
#include "zelv/core/AssetTexts.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::MultiString;

namespace {

/// Empty, too, when there is no such thing.
std::string valueOf(HierarchicalDB& aDocument, std::string const& aPath) {
  std::string value;
  aDocument.getContent(aPath, value);
  return value;
}

bool loadQuestion(HierarchicalDB& aDocument, std::string const& aText) {
  if (aDocument.loadFromString(aText) == 0) {
    return true;
  }
  PCRealDebug::Print(
      PCRealDebug::Error,
      "AssetProvider::handleAssetRequest() parsing error, could not read asset request: %s\n",
      aText.c_str());
  return false;
}

/// @return false when there is neither of the two kinds.
bool readQuestions(HierarchicalDB& aRequest, std::list<std::string>& aPackages,
                   std::list<std::string>& aAssets) {
  std::string packages;
  std::string assets;
  bool const hasPackages = aRequest.getContent("AssetRequest/Package", packages) == 0;
  bool const hasAssets = aRequest.getContent("AssetRequest/Asset", assets) == 0;
  aPackages = MultiString::split(packages);
  aAssets = MultiString::split(assets);
  return hasPackages || hasAssets;
}

}  // namespace

/// A package that is asked for, as a whole or in parts.
struct AssetRequest::Thing {
  /// Reads the package that a question is about; false when it names none.
  bool identify(HierarchicalDB& aQuestion) {
    name = valueOf(aQuestion, "/Package/@name");
    if (!name.empty()) {
      path = AssetSteps::packageByName(name);
      tag = AssetTexts::packageByName(name);
      return true;
    }
    std::string const id = valueOf(aQuestion, "/Package/@ID");
    path = AssetSteps::packageByID(id);
    tag = AssetTexts::packageByID(id);
    return !id.empty();
  }

  std::string name;
  std::string path;
  std::string tag;
};

AssetRequest::AssetRequest(Read aRead, RemoveNamed aRemoveNamed, AssetParts& aParts)
    : mRead(std::move(aRead)), mRemoveNamed(std::move(aRemoveNamed)), mParts(aParts) {}

int AssetRequest::handle(std::string const& aRequest) {
  HierarchicalDB request;
  if (request.loadFromString(aRequest) != 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetProvider::handleAssetRequest() failed to read incoming message from "
                       "string!: %s\n",
                       aRequest.c_str());
    return -1;
  }
  if (request.getContent("/AssetRequest/@ID", mId) != 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetProvider::handleAssetRequest() failed to read request ID from HDB\n");
    return -1;
  }
  std::list<std::string> packages;
  std::list<std::string> assets;
  if (!readQuestions(request, packages, assets)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetProvider::handleAssetRequest() no packages or assests found!\n");
    return -1;
  }
  std::size_t left = packages.size() + assets.size();
  for (std::string const& package : packages) {
    if (!answerPackage(package, --left == 0)) {
      return -1;
    }
  }
  for (std::string const& asset : assets) {
    if (!answerAsset(asset, --left == 0)) {
      return -1;
    }
  }
  return 0;
}

bool AssetRequest::answerPackage(std::string const& aText, bool aLast) {
  HierarchicalDB question;
  if (!loadQuestion(question, aText)) {
    return false;
  }
  Thing package;
  if (!package.identify(question)) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "AssetProvider::handleAssetRequest() parsing error, could not read package "
                       "id or name\n");
    return false;
  }
  std::string const names = valueOf(question, "/Package/Asset/@name");
  std::string const ids = valueOf(question, "/Package/Asset/@ID");
  if (names.empty() && ids.empty()) {
    return answer(package.path, package.tag, aLast);
  }
  return answerAssetsByName(package, MultiString::split(names), aLast && ids.empty()) &&
         answerAssetsByID(package, MultiString::split(ids), aLast);
}

bool AssetRequest::answerAssetsByName(Thing const& aPackage, std::list<std::string> const& aNames,
                                      bool aLast) {
  std::size_t left = aNames.size();
  for (std::string const& name : aNames) {
    --left;
    if (!name.empty() &&
        !answer(AssetSteps::assetByName(aPackage.path, name),
                AssetTexts::assetByName(name, aPackage.name), aLast && left == 0)) {
      return false;
    }
  }
  return true;
}

bool AssetRequest::answerAssetsByID(Thing const& aPackage, std::list<std::string> const& aIds,
                                    bool aLast) {
  std::size_t left = aIds.size();
  for (std::string const& id : aIds) {
    --left;
    if (!id.empty() && !answer(AssetSteps::assetByID(aPackage.path, id),
                               AssetTexts::assetByID(id, aPackage.name), aLast && left == 0)) {
      return false;
    }
  }
  return true;
}

bool AssetRequest::answerAsset(std::string const& aText, bool aLast) {
  HierarchicalDB question;
  if (!loadQuestion(question, aText)) {
    return false;
  }
  std::string const name = valueOf(question, "/Asset/@name");
  if (!name.empty()) {
    return answer(AssetSteps::assetByName(AssetSteps::anyPackage(), name),
                  AssetTexts::assetAnywhereByName(name), aLast);
  }
  std::string const id = valueOf(question, "/Asset/@ID");
  if (!id.empty()) {
    return answer(AssetSteps::assetByID(AssetSteps::anyPackage(), id),
                  AssetTexts::assetAnywhereByID(id), aLast);
  }
  PCRealDebug::Print(PCRealDebug::Error,
                     "AssetProvider::handleAssetRequest() parsing error, asset request contained "
                     "no name or id");
  return false;
}

bool AssetRequest::answer(std::string const& aPath, std::string const& aTag, bool aLast) {
  if (++mThings > maximumThings) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "AssetRequest::answer: Request '%s' asks for more than %u things.",
                       mId.c_str(), static_cast<unsigned>(maximumThings));
  } else if (m_SendResponse(aPath, aTag, mId, aLast)) {
    return true;
  }
  m_SendFail(mId);
  return false;
}

bool AssetRequest::m_SendResponse(std::string const& aRequestPath,
                                  std::string const& aRequestString, std::string const& aRequestID,
                                  bool aLast) {
  try {
    send(aRequestPath, aRequestString, aRequestID, aLast);
    return true;
  } catch (std::exception const& error) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "KOR::AssetProvider::m_SendResponse() An error ocurred:");
    PCRealDebug::Print(PCRealDebug::Error, "Error: %s", error.what());
    return false;
  }
}

void AssetRequest::m_SendFail(std::string const& aRequestID) {
  mParts.sendText(AssetTexts::failure(aRequestID), true);
}

void AssetRequest::send(std::string const& aPath, std::string const& aTag,
                        std::string const& aRequestID, bool aLast) {
  std::string const assetChunk = read(aPath, "m_SendResponse: Failed get asset chunk data!");
  std::string xmlChunk;
  std::string paths;
  if (!assetChunk.empty()) {
    xmlChunk =
        read(aPath + "/descendant-or-self::*[@src]", "m_SendResponse: Failed get chunk data!");
    paths = read(aPath + "/ancestor-or-self::AssetPackage/@path",
                 "m_SendResponse: Failed get path data!");
  }
  if (xmlChunk.empty()) {
    mParts.sendText(AssetTexts::result(aRequestID, aTag, ""), aLast);
    return;
  }
  // What the document says of its directory, not what it was loaded for.
  std::string const rootPath = paths.substr(0, paths.find(MultiString::Separator));
  std::list<AssetFileObject> files = AssetFiles::of(xmlChunk, rootPath);
  refuseUnnamed(files);
  mParts.sendText(AssetTexts::result(aRequestID, aTag, assetChunk), false);
  mParts.sendFiles(files, aLast);
}

// The directory of one package before the sources of another makes paths that nobody has named, and
// whoever asks may choose both packages.
void AssetRequest::refuseUnnamed(std::list<AssetFileObject>& aFiles) const {
  std::set<std::string> unnamed;
  for (AssetFileObject const& file : aFiles) {
    unnamed.insert(file.getPath());
  }
  mRemoveNamed(unnamed);
  for (AssetFileObject& file : aFiles) {
    if (unnamed.contains(file.getPath())) {
      file.refuse();
    }
  }
}

std::string AssetRequest::read(std::string const& aPath, char const* aFailure) const {
  std::string result;
  if (mRead(aPath, result) != 0) {
    throw std::runtime_error(aFailure);
  }
  return result;
}

}  // namespace Zelv
