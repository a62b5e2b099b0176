#include "apps/zelvctl/Delivery.h"

#include <utility>

#include "zelv/adapter/NetworkConnection.h"

namespace ZelvCtl {

using Zelv::Adapter::NetworkConnection;
using Zelv::Adapter::SendCancel;
using Zelv::Infrastructure::URL;

bool Delivery::send(URL const& aAddress, std::string const& aText, SendCancel& aCancel) {
  NetworkConnection connection("tcp", aAddress.getDomainName(), "", aAddress.getPort(), nullptr,
                               Zelv::Adapter::OutgoingConnection);
  SendCancel::Scope const scope(aCancel, connection);
  return !aCancel.isCancelled() && connection.createTCPConnection() &&
         connection.sendMessage(aText, 1) && !aCancel.isCancelled();
}

Delivery::Delivery(URL const& aAddress, std::string aText, Bell& aBell)
    : mThread([this, aAddress, text = std::move(aText), &aBell] {
        mState = send(aAddress, text, mCancel) ? Acknowledged : Failed;
        aBell.ring();
      }) {}

Delivery::~Delivery() {
  mCancel.cancel();
  mThread.join();
}

}  // namespace ZelvCtl
