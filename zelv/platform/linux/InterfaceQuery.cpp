#include "zelv/platform/InterfaceQuery.h"

#include <net/if.h>
#include <sys/ioctl.h>

#include <cstring>

#include "zelv/platform/linux/InterfaceRequests.h"

namespace Zelv::Platform {

std::vector<std::string> InterfaceQuery::Names() {
  std::vector<std::string> names;
  struct if_nameindex* const list = ::if_nameindex();
  if (list == nullptr) {
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
  aName.copy(request.ifr_name, IFNAMSIZ - 1);
  if (::ioctl(aSocket, SIOCGIFHWADDR, &request) < 0) {
    return false;
  }
  std::memcpy(aMac, request.ifr_hwaddr.sa_data, 6);
  return true;
}

bool InterfaceQuery::Addresses(int aSocket, std::string const& aName,
                               std::vector<SocketCommon::In_addr>& aAddresses) {
  InterfaceRequests requests;
  if (!requests.read(aSocket)) {
    return false;
  }
  requests.addressesOf(aName, aAddresses);
  return true;
}

}  // namespace Zelv::Platform
