#include "apps/zelvctl/Service.h"

#include <stdexcept>

#include "apps/zelvctl/PeerUrl.h"

namespace ZelvCtl {

using Zelv::Infrastructure::URL;

URL Service::of(Device const& aDevice) const {
  auto const announced = aDevice.services.find(name);
  if (announced == aDevice.services.end()) {
    throw std::runtime_error("'" + aDevice.name + "' has no " + name + " service");
  }
  auto const url = PeerUrl::read(announced->second, protocol);
  if (!url) {
    throw std::runtime_error("'" + aDevice.name + "' announces a " + name + " service at '" +
                             announced->second + "', which leads to no device");
  }
  return *url;
}

}  // namespace ZelvCtl
