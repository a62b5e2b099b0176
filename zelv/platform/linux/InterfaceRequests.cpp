#include "zelv/platform/linux/InterfaceRequests.h"

#include <netinet/in.h>
#include <sys/ioctl.h>

#include <cstring>

namespace Zelv::Platform {

namespace {

// The kernel's list grows between two questions by a few at most; this much room is asked for
// beyond.
constexpr std::size_t spareRequests = 8;

}  // namespace

bool InterfaceRequests::read(int aSocket) {
  ifconf question{};
  if (::ioctl(aSocket, SIOCGIFCONF, &question) < 0) {
    return false;
  }
  mRequests.resize(static_cast<std::size_t>(question.ifc_len) / sizeof(ifreq) + spareRequests);
  question.ifc_len = static_cast<int>(mRequests.size() * sizeof(ifreq));
  question.ifc_req = mRequests.data();
  if (::ioctl(aSocket, SIOCGIFCONF, &question) < 0) {
    return false;
  }
  mRequests.resize(static_cast<std::size_t>(question.ifc_len) / sizeof(ifreq));
  return true;
}

void InterfaceRequests::addressesOf(std::string const& aName,
                                    std::vector<SocketCommon::In_addr>& aAddresses) const {
  for (ifreq const& request : mRequests) {
    if (aName == std::string(request.ifr_name, ::strnlen(request.ifr_name, IFNAMSIZ))) {
      sockaddr_in address{};
      std::memcpy(&address, &request.ifr_addr, sizeof address);
      aAddresses.push_back({address.sin_addr.s_addr});
    }
  }
}

}  // namespace Zelv::Platform
