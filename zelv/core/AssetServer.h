#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>

#include "zelv/core/Core.h"
#include "zelv/interfaces/IAssetProvider.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/platform/PCMutex.h"

namespace Zelv {

class AssetConnectionListener;

/// The port through which mobile devices fetch assets. It opens when the address of the set is
/// known, and anew with each change of it.
///
/// The owner of the provider owns it, and deletes it before anything that answers requests goes:
/// until its destructor has returned, threads of connections call the provider.
class Core::AssetServer : public virtual ICoreDataCallback {
 public:
  /// Where the tree is found; gives null when there is none.
  using FindInterface = IBase* (*)(GUID aInterfaceID);

  /// Listeners that were replaced and still serve somebody; when there are more, those that were
  /// replaced first end their connections.
  static constexpr std::size_t MaxReplaced = 4;

  AssetServer();
  explicit AssetServer(FindInterface aFindInterface);

  /// Ends everything, connections included, and waits for it.
  ~AssetServer() override;

  void onStatus(StatusInformation const& aStatus, GUID const& aTransactionID) override;

  /// Takes the address of the set, and starts the listener.
  void onData(std::string const& aXPath, std::string const& aValue,
              ContextInformation const* aContext, GUID const& aTransactionID) override;

  /// Asks for the address of the set.
  ///
  /// @param aProvider  answers the requests; not owned.
  /// @param aUrl       not looked at: the port is fixed.
  /// @return false without a provider or without a tree.
  bool initialize(IAssetProvider* aProvider, std::string const& aUrl);

  /// Accepts nobody any more, from now on whatever address comes. Connections go on; nothing is
  /// waited for.
  void terminate();

 private:
  using Listeners = std::list<std::unique_ptr<AssetConnectionListener>>;

  void closeListener() ZELV_REQUIRES(mLock);
  void startListener() ZELV_REQUIRES(mLock);
  void reapReplaced() ZELV_REQUIRES(mLock);

  IAssetProvider* mProvider = nullptr;
  std::unique_ptr<AssetConnectionListener> mListener ZELV_GUARDED_BY(mLock);
  GUID mSubscriptionId ZELV_GUARDED_BY(mLock);
  PCMutex mLock;
  /// Those whose connections are not done.
  Listeners mReplaced ZELV_GUARDED_BY(mLock);
  bool mTerminated ZELV_GUARDED_BY(mLock) = false;
  FindInterface const mFindInterface;
};

}  // namespace Zelv
