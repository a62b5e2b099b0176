#include "zelv/platform/InterfaceQuery.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>

#include <cstring>

namespace Zelv::Platform {

namespace {

// The kernel's list grows between two questions at most by a few; this much room is asked for
// beyond.
constexpr int spareRequests = 8;

bool fill(int aSocket, std::vector<ifreq>& aRequests) {
  ifconf question{};
  if (ioctl(aSocket, SIOCGIFCONF, &question) < 0) {
    return false;
  }
  aRequests.resize(static_cast<std::size_t>(question.ifc_len) / sizeof(ifreq) + spareRequests);
  question.ifc_len = static_cast<int>(aRequests.size() * sizeof(ifreq));
  question.ifc_req = aRequests.data();
  if (ioctl(aSocket, SIOCGIFCONF, &question) < 0) {
    return false;
  }
  aRequests.resize(static_cast<std::size_t>(question.ifc_len) / sizeof(ifreq));
  return true;
}

}  // namespace

std::vector<std::string> InterfaceQuery::Names() {
  std::vector<std::string> names;
  struct if_nameindex* const list = ::if_nameindex();
  if (!list) {
    return names;
  }
  for (struct if_nameindex* entry = list; entry->if_index != 0; ++entry) {
    names.emplace_back(entry->if_name);
  }
  ::if_freenameindex(list);
  return names;
}

bool InterfaceQuery::HardwareAddress(int aSocket, std::string const& aName, std::uint8_t* aMac) {
  ifreq request{};
  std::strncpy(request.ifr_name, aName.c_str(), IFNAMSIZ - 1);
  if (ioctl(aSocket, SIOCGIFHWADDR, &request) < 0) {
    return false;
  }
  std::memcpy(aMac, request.ifr_hwaddr.sa_data, 6);
  return true;
}

bool InterfaceQuery::Addresses(int aSocket, std::string const& aName,
                               std::vector<SocketCommon::In_addr>& aAddresses) {
  std::vector<ifreq> requests;
  if (!fill(aSocket, requests)) {
    return false;
  }
  for (ifreq const& request : requests) {
    if (aName.compare(0, std::string::npos, request.ifr_name,
                      strnlen(request.ifr_name, IFNAMSIZ)) == 0) {
      sockaddr_in address{};
      std::memcpy(&address, &request.ifr_addr, sizeof address);
      aAddresses.push_back({address.sin_addr.s_addr});
    }
  }
  return true;
}

}  // namespace Zelv::Platform
