#pragma once

#include <list>
#include <memory>
#include <string>

#include "zelv/core/AssetParts.h"
#include "zelv/core/Core.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/interfaces/IAssetProvider.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreLifetimeCallback.h"
#include "zelv/interfaces/IDataProvider.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

class AssetPackages;

/// The provider of "/Zelv/Storage/Assets": descriptions of files of this device, in the main store,
/// "Assets.xml", and in any number of packages, which are loaded and unloaded through the tree.
///
/// Paths whose first step is "AssetPackage" go to the packages; a write needs that step with an
/// "@name". All others go to the main store, which is never saved: changes to it last until the
/// next start.
///
/// getData() and setData() run on the data worker. handleAssetRequest() runs on the threads of
/// connections, many at a time, and reads as well.
class Core::AssetProvider : public virtual ICoreLifetimeCallback,
                            public virtual IAssetProvider,
                            public virtual IDataProvider {
 public:
  class AssetPackage;

  /// Where the tree is found; gives null when there is none.
  using FindInterface = IBase* (*)(GUID aInterfaceID);

  /// What the first step of a path asks for.
  enum TargetPackage {
    NAMED_PACKAGE,
    IDDEF_PACKAGE,
    NOSPEC_PACKAGE,
    NOT_A_PACKAGE,
    FAIL_READ_PACKAGE
  };

  AssetProvider();
  explicit AssetProvider(FindInterface aFindInterface);

  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;
  ~AssetProvider() override;

  /// @throws std::runtime_error when the assets file can be had from nowhere or is no XML, or when
  ///         there is no tree.
  void onLifetime(eLifetimeCommand aCommand, GUID aTransactionID) override;

  int handleAssetRequest(std::string const& aRequest, AssetRequestHandler* aHandler,
                         GUID aTransactionID) override;

  /// Reads a path below the branch, whose own text is not looked at. What is not there is an empty
  /// text; a path with one step alone, or none, leaves aData as it is. Throws nothing; always 0.
  int getData(std::string const& aXPath, std::string& aData, GUID aTransactionID) override;

  /// Writes a path below the branch, loads a package ("/AssetPackage[@name='x']" with its XML,
  /// which also holds the name that counts) or unloads one (any path that begins so, with an empty
  /// text). Throws nothing; -1 when nothing was done.
  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;

  /// As setData(), but always 0.
  int addData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override;
  int onSubscribe(std::string const& aXPath, GUID aSubscriptionID) override;
  int onUnsubscribe(std::string const& aXPath, GUID aSubscriptionID) override;

  /// The same for any response.
  int handleAssetRequest(std::string const& aRequest, AssetParts& aParts);

  /// Adds a package, under the name in its document. One of that name stays.
  /// @return false when the document has no name, or there are too many packages.
  bool addPackage(std::shared_ptr<AssetPackage> aPackage);

  /// 0 constructed, 1 initialised, 2 running, 3 terminated.
  int getLifetimeState() const { return mLifetimeState; }

  /// @param aPath  without the branch.
  /// @param aKey   receives the name, or the ID, that the first step asks for.
  static TargetPackage m_ExtractTargetPackageType(std::string const& aPath, std::string& aKey);

 private:
  void m_initialize();
  void m_terminate();
  void m_LoadDefaultPackages();
  bool m_LoadAssetPackage(std::string const& aXml, std::string const& aPath);
  bool m_UnloadAssetPackage(std::string const& aName);

  void loadMainStore();
  void findTree();

  void read(TargetPackage aTarget, std::string const& aKey, std::string const& aPath,
            std::string& aData);
  void readMain(std::string const& aPath, std::string& aData);
  static void readPackage(std::shared_ptr<AssetPackage> const& aPackage, std::string const& aPath,
                          std::string& aData);

  struct Change;
  int write(TargetPackage aTarget, std::string const& aKey, Change const& aChange);
  int writeMain(Change const& aChange);
  int writePackage(std::shared_ptr<AssetPackage> const& aPackage, std::string const& aKey,
                   Change const& aChange);
  bool hasRoomFor(Change const& aChange);
  int writeMissing(Change const& aChange);
  void notify(Change const& aChange);

  std::shared_ptr<AssetPackage> find(TargetPackage aTarget, std::string const& aKey);
  std::string withoutRoot(std::string const& aXPath) const;

  std::string const mBranchRoot;
  std::string const mAssetsFile;
  std::unique_ptr<Infrastructure::HierarchicalDB> mMainStore;
  /// For reads. A write is one step of the store, which locks itself.
  PCMutex mMainLock;
  std::unique_ptr<AssetPackages> mPackages;
  ICoreData* mCoreData = nullptr;
  std::unique_ptr<AssetServer> mAssetServer;
  int mLifetimeState = 0;
  FindInterface const mFindInterface;
};

}  // namespace Zelv
