#include "apps/zelvctl/OwnIdentity.h"

#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/Ipv4.h"
#include "apps/zelvctl/OwnAddress.h"

namespace ZelvCtl {

namespace {

std::string addressOf(Options const& aOptions) {
  if (!aOptions.address.empty()) {
    return aOptions.address;
  }
  return Ipv4::isAddress(aOptions.device) ? OwnAddress::towards(aOptions.device)
                                          : OwnAddress::find();
}

}  // namespace

Identity OwnIdentity::of(Options const& aOptions) {
  return {aOptions.id.empty() ? Identifier::create() : aOptions.id, aOptions.name,
          addressOf(aOptions), aOptions.port};
}

}  // namespace ZelvCtl
