#include "zelv/core/AssetPackages.h"

#include <algorithm>
#include <utility>

#include "zelv/core/AssetPackage.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv {

using Infrastructure::MultiString;

bool AssetPackages::insert(std::string const& aName, Held aPackage) {
  bool const hasRoom = hasRoomFor(aPackage->getSize());
  TCAutoLock lock(mLock);
  if (mPackages.contains(aName)) {
    return true;
  }
  if (!hasRoom || mPackages.size() >= maximumPackages) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "AssetPackages::insert: Package '%s' is not taken, there are %u of %u bytes.",
        aName.c_str(), static_cast<unsigned>(mPackages.size()), static_cast<unsigned>(size()));
    return false;
  }
  mPackages.emplace(aName, std::move(aPackage));
  return true;
}

// Measuring takes as long as sending the packages would, so that values are only counted until they
// seem to be too many.
bool AssetPackages::hasRoomFor(std::size_t aSize) {
  if (aSize > maximumSize) {
    return false;
  }
  if (size() > maximumSize - aSize) {
    for (Held const& package : all()) {
      package->measure();
    }
  }
  return size() <= maximumSize - aSize;
}

std::size_t AssetPackages::size() {
  TCAutoLock lock(mLock);
  std::size_t size = 0;
  for (auto const& entry : mPackages) {
    size += entry.second->getSize();
  }
  return size;
}

AssetPackages::Held AssetPackages::find(std::string const& aName) {
  TCAutoLock lock(mLock);
  auto const entry = mPackages.find(aName);
  return entry == mPackages.end() ? nullptr : entry->second;
}

AssetPackages::Held AssetPackages::findByID(std::string const& aId) {
  TCAutoLock lock(mLock);
  auto const entry = std::find_if(mPackages.begin(), mPackages.end(), [&aId](auto const& aEntry) {
    return aEntry.second->getID() == aId;
  });
  return entry == mPackages.end() ? nullptr : entry->second;
}

bool AssetPackages::remove(std::string const& aName) {
  // Goes after the lock is released.
  Held removed;
  TCAutoLock lock(mLock);
  auto const entry = mPackages.find(aName);
  if (entry == mPackages.end()) {
    return false;
  }
  removed = std::move(entry->second);
  mPackages.erase(entry);
  return true;
}

void AssetPackages::read(std::string const& aXPath, std::string& aResult) {
  aResult.clear();
  for (Held const& package : all()) {
    std::string text;
    if (package->getContent(aXPath, text) != 0 || text.empty()) {
      continue;
    }
    if (aResult.size() + MultiString::Separator.size() + text.size() > maximumResult) {
      PCRealDebug::Print(PCRealDebug::Warning,
                         "AssetPackages::read: '%s' gives more than %u bytes.", aXPath.c_str(),
                         static_cast<unsigned>(maximumResult));
      aResult.clear();
      return;
    }
    if (!aResult.empty()) {
      aResult += MultiString::Separator;
    }
    aResult += text;
  }
}

void AssetPackages::removeNamed(std::set<std::string>& aPaths) {
  for (Held const& package : all()) {
    package->removeNamed(aPaths);
  }
}

std::vector<AssetPackages::Held> AssetPackages::all() {
  TCAutoLock lock(mLock);
  std::vector<Held> packages;
  packages.reserve(mPackages.size());
  for (auto const& entry : mPackages) {
    packages.push_back(entry.second);
  }
  return packages;
}

}  // namespace Zelv
