#include "apps/zelvctl/PeerUrl.h"

#include <exception>

#include "apps/zelvctl/Ipv4.h"
#include "zelv/adapter/OneHost.h"

namespace ZelvCtl {

using Zelv::Infrastructure::URL;

std::optional<URL> PeerUrl::read(std::string const& aText, std::string const& aProtocol) {
  try {
    URL const url(aText);
    bool const isUsable = url.getProtocol() == aProtocol && Ipv4::isAddress(url.getDomainName()) &&
                          Zelv::Adapter::isOneHost(url) && url.getPort() > 0 &&
                          url.getPort() <= 0xffff;
    return isUsable ? std::optional(url) : std::nullopt;
  } catch (std::exception const&) {
    return std::nullopt;
  }
}

}  // namespace ZelvCtl
