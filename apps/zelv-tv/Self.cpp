#include "apps/zelv-tv/Self.h"

namespace ZelvTv {

namespace {

constexpr std::size_t kId = 0;
constexpr std::size_t kName = 1;
constexpr std::size_t kAddress = 2;

constexpr std::array<char const*, 3> kPaths{
    "/Zelv/Devices/LocalTV/@ID", "/Zelv/Devices/LocalTV/Name/text()",
    "/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()"};

}  // namespace

void Self::Begin(Zelv::IAppData& aTree) {
  for (char const* path : kPaths) {
    aTree.subscribeData(path, nullptr, this);
  }
}

void Self::onData(std::string const& aXPath, std::string const& aValue,
                  Zelv::ContextInformation const* /*aContext*/,
                  Zelv::GUID const& /*aTransactionID*/) {
  std::lock_guard const lock(mMutex);
  for (std::size_t index = 0; index < kPaths.size(); ++index) {
    if (aXPath == kPaths[index]) {
      mValues[index] = aValue;
    }
  }
}

std::string Self::valueOf(std::size_t aIndex) const {
  std::lock_guard const lock(mMutex);
  return mValues[aIndex];
}

std::string Self::Id() const {
  return valueOf(kId);
}

std::string Self::Name() const {
  return valueOf(kName);
}

std::string Self::Address() const {
  return valueOf(kAddress);
}

}  // namespace ZelvTv
