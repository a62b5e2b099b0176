#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <set>
#include <string>

#include "zelv/core/AssetProvider.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

/// One package of assets: a document with the root element "AssetPackage" and its attributes "ID",
/// "name" and "path", below which every element with an attribute "src" is an asset.
///
/// All operations may be called from any thread.
class Core::AssetProvider::AssetPackage {
 public:
  /// From a text.
  /// @param aRootPath  the directory of the files; empty for the one that the document names.
  /// @throws std::runtime_error when the text is no package, or lacks "ID", or lacks "path" where
  ///         it is needed.
  AssetPackage(std::string const& aXml, std::string const& aRootPath);

  /// From a file; otherwise as above.
  /// @param aPersist  whether changes are saved to that file.
  AssetPackage(std::string const& aFile, std::string const& aRootPath, bool aPersist);

  AssetPackage(AssetPackage const&) = delete;
  AssetPackage& operator=(AssetPackage const&) = delete;
  ~AssetPackage();

  /// As HierarchicalDB::getContent(), for a path that begins with "/AssetPackage".
  int getContent(std::string const& aXPath, std::string& aResult);

  /// As HierarchicalDB::setContent() with an attribute that has to be there.
  int setContent(std::string const& aXPath, std::string const& aData);

  /// False when the document could not be written to the storage; the file is then as it was.
  bool save();

  bool persists() const { return mPersist; }
  std::string const& getID() const { return mId; }

  /// About the bytes that the package takes: those that it was loaded from, and those of all values
  /// that were written since, whatever they replaced.
  std::size_t getSize() const { return mSize; }

  /// From here on the size is that of the document as it is.
  void measure();

  /// Removes the files of its assets from aPaths.
  void removeNamed(std::set<std::string>& aPaths);

  /// Where the package was loaded for. Requests go by the attribute of the document.
  std::string const& getRootPath() const { return mRootPath; }

 private:
  void describe(std::string const& aRootPath);
  void checkRootElement();
  void ensureID();

  /// Replaced never; all uses after construction are under the lock.
  std::unique_ptr<Infrastructure::HierarchicalDB> mStore;
  PCMutex mLock;
  std::string mRootPath;
  std::string mId;
  std::string mFile;
  bool mPersist;
  std::atomic<std::size_t> mSize{0};
};

}  // namespace Zelv
