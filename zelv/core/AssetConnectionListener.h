#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>

#include "zelv/adapter/RetryPause.h"
#include "zelv/core/AssetSocket.h"
#include "zelv/interfaces/IAssetProvider.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCThread.h"
#include "zelv/platform/SocketCommon.h"

namespace Zelv {

class AssetRequestHandler;
class MimeTypes;

/// Accepts connections on the asset port, and gives each a handler with a thread of its own.
///
/// The owner starts the thread with Create() after initialize(), ends it with
/// closeConnectionListener() and Destroy(), and deletes the object. Connections go on until they
/// are served, or until the object goes. While the thread runs, it alone closes the socket.
class AssetConnectionListener : public virtual PCThread {
 public:
  /// Most connections served at a time. Beyond it the one idle for longest gives way.
  static constexpr std::size_t MaxHandlers = 256;

  static constexpr int Port = 4450;

  AssetConnectionListener();
  ~AssetConnectionListener() override;

  /// Opens the port. @param aProvider  not owned; outlives this object, must not be null.
  bool initialize(IAssetProvider* aProvider);

  /// Opens, binds and listens. False on failure, which is logged; the socket is then closed.
  bool initializeListener();

  /// Ends the accepting of connections, and not those that there are. The thread, which is not
  /// waited for, ends.
  void closeConnectionListener();

  /// Ends all connections, waiting for none.
  void endConnections();

  /// True once the thread body is over, and those of all connections: deleting does not wait.
  bool isFinished() const;

  /// How many connections are kept, those included that are done and were not yet cleared away.
  std::size_t connections() const;

 private:
  using Handlers = std::list<std::unique_ptr<AssetRequestHandler>>;

  void t_Main() override;
  void startConnectionListener();
  void serve(int aSocket);
  void startHandler(int aSocket);
  bool mayRetry(int aErrno, Adapter::RetryPause& aPause);
  bool bindPort();
  void fail(char const* aFormat, int aErrno) __attribute__((format(printf, 2, 0)));
  void leaveThread();

  void reapHandlers();
  void makeRoom();
  bool closeLongestIdle();
  std::unique_ptr<AssetRequestHandler> takeLongestIdle();

  std::atomic<bool> mStop{false};
  IAssetProvider* mProvider = nullptr;
  AssetSocket mSocket;
  SocketCommon::SockAddr mLocalAddress;
  SocketCommon::SockAddr mPeerAddress;
  Handlers mHandlers ZELV_GUARDED_BY(mLock);
  /// Guards the list, not the handlers in it. No handler is waited for under it.
  mutable PCMutex mLock;
  bool mServing ZELV_GUARDED_BY(mLock) = false;
  /// Read once for all connections of this listener.
  std::shared_ptr<MimeTypes> const mMimeTypes;
  std::atomic<bool> mFinished{false};
};

}  // namespace Zelv
