#include "zelv/adapter/NetworkInterface.h"

#include <cstdio>

#include "zelv/platform/CCmSocket.h"
#include "zelv/platform/InterfaceQuery.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Adapter {

using Platform::InterfaceQuery;

std::vector<NetworkInterface*> NetworkInterface::getInterfaces() {
  std::vector<NetworkInterface*> interfaces;
  for (std::string const& name : InterfaceQuery::Names()) {
    interfaces.push_back(new NetworkInterface(name));
  }
  return interfaces;
}

NetworkInterface::NetworkInterface(std::string const& aName)
    : mName(aName), mSocket(CCmSocket::Open(2, 1, 0)) {
  if (mSocket < 0) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "NetworkInterface::NetworkInterface: Failed to create socket.");
    return;
  }
  if (!InterfaceQuery::HardwareAddress(mSocket, mName, mMACAddress)) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkInterface::NetworkInterface: Failed to get SIOCGIFHWADDR using ioctl.");
    return;
  }
  readAddresses();
}

NetworkInterface::~NetworkInterface() {
  if (mSocket >= 0) {
    CCmSocket::Close(mSocket);
  }
}

void NetworkInterface::readAddresses() {
  std::vector<SocketCommon::In_addr> addresses;
  if (!InterfaceQuery::Addresses(mSocket, mName, addresses)) {
    PCRealDebug::Print(
        PCRealDebug::Error,
        "NetworkInterface::NetworkInterface: Failed to get SIOCGIFCONF using ioctl.");
    return;
  }
  for (SocketCommon::In_addr const address : addresses) {
    mIPv4Addresses.push_back(CCmSocket::AddressValueToString(address));
  }
}

std::string NetworkInterface::getMACAddress() const {
  char text[18];
  std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", mMACAddress[0], mMACAddress[1],
                mMACAddress[2], mMACAddress[3], mMACAddress[4], mMACAddress[5]);
  return text;
}

}  // namespace Zelv::Adapter
