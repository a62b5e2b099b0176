#include "zelv/adapter/SendCancel.h"

#include "zelv/adapter/NetworkConnection.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv::Adapter {

void SendCancel::cancel() {
  TCAutoLock lock(mLock);
  mCancelled = true;
  for (NetworkConnection* connection : mConnections) {
    connection->interrupt();
  }
}

SendCancel::Scope::Scope(SendCancel& aCancel, NetworkConnection& aConnection)
    : mCancel(aCancel), mConnection(aConnection) {
  TCAutoLock lock(mCancel.mLock);
  mCancel.mConnections.push_back(&mConnection);
  if (mCancel.mCancelled) {
    mConnection.interrupt();
  }
}

SendCancel::Scope::~Scope() {
  TCAutoLock lock(mCancel.mLock);
  std::erase(mCancel.mConnections, &mConnection);
}

}  // namespace Zelv::Adapter
