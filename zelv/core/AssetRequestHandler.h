#pragma once

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "zelv/core/AssetConnection.h"
#include "zelv/core/AssetFileObject.h"
#include "zelv/core/AssetParts.h"
#include "zelv/infrastructure/GUID.h"
#include "zelv/interfaces/IAssetProvider.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/PCThread.h"

namespace Zelv {

class AssetRequestReader;
class MimeTypes;

/// Serves one connection on a thread of its own: one request in, one answer of several parts out,
/// and the connection is closed.
///
/// The owner starts the thread with Create() after initialize(), and may end it at any time with
/// giveUp() and Destroy().
class AssetRequestHandler : public virtual PCThread, public AssetParts {
 public:
  /// With types of its own, or with those that it shares.
  AssetRequestHandler();
  explicit AssetRequestHandler(std::shared_ptr<MimeTypes> aMimeTypes);
  ~AssetRequestHandler() override;

  /// Takes over the socket of an accepted connection.
  ///
  /// @param aProvider  not owned; outlives this object.
  /// @return false, with the socket left to the caller, for a null provider or a negative number,
  ///         and when the types of files cannot be had.
  bool initialize(int aSocket, IAssetProvider* aProvider);

  /// Sends a text as a part. @param aLast has no effect. @return whether it was sent.
  /// @throws std::runtime_error when the connection was given up, so that what is left of a long
  ///         request is not worked through for nobody.
  bool sendText(std::string const& aText, bool aLast) override;

  /// Sends each file as a part, in order, up to the first that cannot be sent.
  /// @param aLast  whether no part follows. @return whether all were sent.
  /// @throws std::runtime_error as sendText().
  bool sendFiles(std::list<AssetFileObject> const& aFiles, bool aLast) override;

  /// The type of a file by what stands behind the last "." of its path; "" when there is none.
  std::string getMimeType(std::string const& aPath);

  /// From any thread: ends the connection, whatever is being sent.
  void giveUp() { mConnection.giveUp(); }

  /// True once the exchange is over: Destroy() does not wait.
  bool isFinished() const { return mFinished; }

  /// When bytes last came or went, by PCTime::CoarseMs().
  std::int64_t lastActivity() const { return mConnection.lastActivity(); }

 private:
  void t_Main() override;
  void startListener();
  void answer(AssetRequestReader const& aReader);
  void respond(std::string const& aStatus, std::string const& aRequest);
  bool sendBytes(std::string const& aBytes, AssetConnection::Follow aFollow);
  bool sendFile(AssetFileObject const& aFile, bool aLast);
  void throwIfGivenUp() const;

  IAssetProvider* mProvider = nullptr;
  std::shared_ptr<MimeTypes> const mMimeTypes;
  AssetConnection mConnection;
  /// Held by the thread during the whole exchange; nobody else waits for it.
  PCMutex mLock;
  Infrastructure::GUID mBoundary;
  std::string mBoundaryText;
  std::atomic<bool> mFinished{false};
};

}  // namespace Zelv
