#include "apps/zelv-tv/Readiness.h"

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

namespace {

char const* const kIdPath = "/Zelv/Devices/LocalTV/@ID";
char const* const kAddressPath =
    "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()";

std::string fieldOf(std::string const* aValue) {
  return ValueText::ToField(aValue == nullptr ? "" : *aValue);
}

}  // namespace

// The data worker answers in the order of the requests, so the identifier is there when the address
// comes.
Readiness::Readiness(EventQueue& aEvents, Zelv::IAppData& aTree) : mEvents(aEvents) {
  mIdAnswer.Request(aTree, kIdPath, [this](std::string const* aValue) { mId = fieldOf(aValue); });
  mAddressAnswer.Request(aTree, kAddressPath,
                         [this](std::string const* aValue) { announce(fieldOf(aValue)); });
}

void Readiness::announce(std::string const& aAddress) {
  mReady = true;
  mEvents.Post("ready " + mId + " " + aAddress);
}

}  // namespace ZelvTv
