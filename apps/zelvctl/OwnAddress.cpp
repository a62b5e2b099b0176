#include "apps/zelvctl/OwnAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

#include "apps/zelvctl/Descriptor.h"
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

// Connecting a socket for datagrams sends nothing: it asks the kernel for the way.
std::string OwnAddress::towards(std::string const& aPeer) {
  Descriptor const probe(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(9);
  socklen_t size = sizeof address;
  std::array<char, INET_ADDRSTRLEN> text{};
  if (::inet_pton(AF_INET, aPeer.c_str(), &address.sin_addr) != 1 ||
      ::connect(probe.number(), reinterpret_cast<sockaddr const*>(&address), size) != 0 ||
      ::getsockname(probe.number(), reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
      !::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size())) {
    throw std::runtime_error("there is no way to " + aPeer);
  }
  return text.data();
}

}  // namespace ZelvCtl
