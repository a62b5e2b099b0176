#pragma once

#include <atomic>
#include <vector>

#include "zelv/platform/PCMutex.h"

namespace Zelv::Adapter {

class NetworkConnection;

/// Lets one thread end the sends of others: handed to NetworkAdapter::send(), for one send after
/// another or for several at a time. Once cancelled it stays so.
///
/// MUST outlive the sends that it was handed to.
class SendCancel {
 public:
  SendCancel() = default;
  SendCancel(SendCancel const&) = delete;
  SendCancel& operator=(SendCancel const&) = delete;

  /// Ends the sends under way, whatever they wait in: connecting, writing or the acknowledgement.
  /// Later ones fail at once. Does not wait; may be called from any thread, under any lock.
  void cancel();

  bool isCancelled() const { return mCancelled; }

  /// Makes a connection known for a scope, so that cancel() reaches it. Of a cancel that came
  /// before, the connection hears at once.
  class Scope {
   public:
    Scope(SendCancel& aCancel, NetworkConnection& aConnection);
    Scope(Scope const&) = delete;
    Scope& operator=(Scope const&) = delete;
    ~Scope();

   private:
    SendCancel& mCancel;
    NetworkConnection& mConnection;
  };

 private:
  PCMutex mLock;
  std::vector<NetworkConnection*> mConnections ZELV_GUARDED_BY(mLock);
  std::atomic<bool> mCancelled{false};
};

}  // namespace Zelv::Adapter
