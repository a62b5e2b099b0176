#include "zelv/core/AssetFiles.h"

#include <stdexcept>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv {

using Infrastructure::HierarchicalDB;
using Infrastructure::MultiString;

namespace {

std::string read(HierarchicalDB& aAssets, std::string const& aPath, char const* aFailure) {
  std::string value;
  if (aAssets.getContent(aPath, value) != 0) {
    throw std::runtime_error(aFailure);
  }
  return value;
}

[[noreturn]] void refuse(HierarchicalDB& aAssets, std::string const& aElement,
                         std::string const& aSource, std::string const& aId) {
  std::string name;
  aAssets.getContent(aElement + "/name()", name);
  PCRealDebug::Print(PCRealDebug::Error, "Details were: name: %s src: %s id: %s\n", name.c_str(),
                     aSource.c_str(), aId.c_str());
  throw std::runtime_error("src or id was missing for element");
}

/// What is behind the last "/"; all of it when nothing is.
std::string lastStep(std::string const& aSource) {
  std::size_t const slash = aSource.rfind('/');
  return slash == std::string::npos || slash + 1 == aSource.size() ? aSource
                                                                   : aSource.substr(slash + 1);
}

/// @param aNumber  from 1 on.
AssetFileObject fileOf(HierarchicalDB& aAssets, std::size_t aNumber, std::string const& aRootPath) {
  std::string const element = "/Assets/*[" + std::to_string(aNumber) + "]";
  std::string const source = read(aAssets, element + "/@src",
                                  "could not read from HDB: try and get src from specific asset");
  std::string const id = read(aAssets, element + "/@ID",
                              "could not read from HDB: try and get id from specific asset");
  if (source.empty() || id.empty()) {
    refuse(aAssets, element, source, id);
  }
  return {lastStep(source), aRootPath + source, id};
}

}  // namespace

std::list<AssetFileObject> AssetFiles::of(std::string const& aElements,
                                          std::string const& aRootPath) {
  std::string text;
  std::size_t const count = m_ConcatMultiString(aElements, text);
  if (count > maximumFiles) {
    throw std::runtime_error("too many files for one answer");
  }
  HierarchicalDB assets;
  if (assets.loadFromString("<Assets>" + text + "</Assets>") != 0) {
    throw std::runtime_error("could not read xml data!");
  }
  std::list<AssetFileObject> files;
  for (std::size_t number = 1; number <= count; ++number) {
    files.push_back(fileOf(assets, number, aRootPath));
  }
  return files;
}

std::size_t AssetFiles::m_ConcatMultiString(std::string const& aMultiString, std::string& aText) {
  std::list<std::string> const items = MultiString::split(aMultiString);
  aText.clear();
  for (std::string const& item : items) {
    aText += item;
  }
  return items.size();
}

}  // namespace Zelv
