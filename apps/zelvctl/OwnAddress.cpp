#include "apps/zelvctl/OwnAddress.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include "zelv/adapter/NetworkInterface.h"

namespace ZelvCtl {

using Zelv::Adapter::NetworkInterface;

std::string OwnAddress::find() {
  std::vector<std::unique_ptr<NetworkInterface>> interfaces;
  for (NetworkInterface* snapshot : NetworkInterface::getInterfaces()) {
    interfaces.emplace_back(snapshot);
  }
  std::string address;
  for (auto const& snapshot : interfaces) {
    std::vector<std::string> const addresses = snapshot->getIPv4Addresses();
    if (snapshot->getName() != "lo" && !addresses.empty()) {
      address = addresses.back();
    }
  }
  if (address.empty()) {
    throw std::runtime_error("no network interface has an address; --address gives one by hand");
  }
  return address;
}

}  // namespace ZelvCtl
