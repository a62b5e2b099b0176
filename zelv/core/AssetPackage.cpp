#include "zelv/core/AssetPackage.h"

#include <stdexcept>

#include "zelv/core/DocumentFile.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::MultiString;

Core::AssetProvider::AssetPackage::AssetPackage(std::string const& aXml,
                                                std::string const& aRootPath)
    : mStore(std::make_unique<HierarchicalDB>()), mPersist(false), mSize(aXml.size()) {
  if (mStore->loadFromString(aXml) != 0) {
    throw std::runtime_error("AssetPackage: Failed to Load string into HDB!");
  }
  describe(aRootPath);
}

Core::AssetProvider::AssetPackage::AssetPackage(std::string const& aFile,
                                                std::string const& aRootPath, bool aPersist)
    : mStore(std::make_unique<HierarchicalDB>()), mFile(aFile), mPersist(aPersist) {
  if (mStore->loadFromFile(aFile) != 0) {
    throw std::runtime_error("AssetPackage: Failed to Load HDB from File!");
  }
  describe(aRootPath);
  measure();
}

Core::AssetProvider::AssetPackage::~AssetPackage() {
  mStore.reset();
}

void Core::AssetProvider::AssetPackage::describe(std::string const& aRootPath) {
  checkRootElement();
  mRootPath = aRootPath;
  if (aRootPath.empty() && mStore->getContent("/AssetPackage/@path", mRootPath) != 0) {
    throw std::runtime_error("AssetPackage: Failed to read root path from HDB");
  }
  ensureID();
}

void Core::AssetProvider::AssetPackage::checkRootElement() {
  std::string name;
  if (mStore->getContent("/*[1]/name()", name) != 0) {
    throw std::runtime_error("AssetPackage: Failed to read root element name from HDB");
  }
  if (name != "AssetPackage") {
    throw std::runtime_error("AssetPackage: Root element is not AssetPackage!!");
  }
}

// A package without the attribute is refused: it is never created, only filled when it is empty.
// Those who write packages rely on being told.
void Core::AssetProvider::AssetPackage::ensureID() {
  if (mStore->getContent("/AssetPackage/@ID", mId) == 0 && !mId.empty()) {
    return;
  }
  mId = GUID::createGUID().toString();
  if (mStore->setContent("/AssetPackage/@ID", mId, false) != 0) {
    throw std::runtime_error("AssetPackage: Failed to set id for this store.");
  }
}

int Core::AssetProvider::AssetPackage::getContent(std::string const& aXPath, std::string& aResult) {
  TCAutoLock lock(mLock);
  return mStore->getContent(aXPath, aResult);
}

int Core::AssetProvider::AssetPackage::setContent(std::string const& aXPath,
                                                  std::string const& aData) {
  TCAutoLock lock(mLock);
  int const result = mStore->setContent(aXPath, aData, false);
  if (result == 0) {
    mSize += aData.size();
  }
  return result;
}

void Core::AssetProvider::AssetPackage::measure() {
  TCAutoLock lock(mLock);
  std::string text;
  mStore->serialize(text, -1);
  mSize = text.size();
}

void Core::AssetProvider::AssetPackage::removeNamed(std::set<std::string>& aPaths) {
  std::string rootPath;
  std::string sources;
  {
    TCAutoLock lock(mLock);
    mStore->getContent("/AssetPackage/@path", rootPath);
    mStore->getContent("/AssetPackage/descendant-or-self::*/@src", sources);
  }
  for (std::string const& source : MultiString::split(sources)) {
    aPaths.erase(rootPath + source);
  }
}

/// Through a temporary file, so that the package stays whole if the set goes down meanwhile.
bool Core::AssetProvider::AssetPackage::save() {
  TCAutoLock lock(mLock);
  return DocumentFile::save(*mStore, mFile, "AssetPackage::save");
}

}  // namespace Zelv
