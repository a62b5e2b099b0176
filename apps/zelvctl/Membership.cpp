#include "apps/zelvctl/Membership.h"

#include <stdexcept>

#include "zelv/adapter/NetworkAdapter.h"

namespace ZelvCtl {

using Zelv::Adapter::NetworkAdapter;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::URL;

namespace {

/// Datagrams get lost, so each message goes out as several.
constexpr int copies = 3;

/// Ends all services and waits for the thread that calls the listener.
void leave() {
  NetworkAdapter* const adapter = NetworkAdapter::getInstance();
  adapter->terminate();
  delete adapter;
}

}  // namespace

Membership::Membership(URL const& aGroup, std::string const& aLocalAddress,
                       Zelv::NetworkMessageCallback* aListener)
    : mGroup(aGroup), mLocalAddress(aLocalAddress) {
  GUID const service =
      NetworkAdapter::getInstance()->registerService(mGroup, aListener, mLocalAddress);
  if (service == GUID::nullGUID) {
    leave();
    throw std::runtime_error("cannot join the group " + mGroup.getDomainName() + ", port " +
                             std::to_string(mGroup.getPort()) + ", at " + mLocalAddress);
  }
}

Membership::~Membership() {
  leave();
}

bool Membership::tellAll(std::string const& aText) {
  return NetworkAdapter::getInstance()->send(mGroup, aText, mLocalAddress, copies) !=
         GUID::nullGUID;
}

bool Membership::tell(URL const& aAddress, std::string const& aText) {
  return aAddress.getProtocol() == "udp" &&
         NetworkAdapter::getInstance()->send(aAddress, aText, "", copies) != GUID::nullGUID;
}

}  // namespace ZelvCtl
