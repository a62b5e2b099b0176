#include "zelv/platform/InterfaceQuery.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "zelv/platform/fake/FakeInterfaces.h"

namespace Zelv::Platform {

using Fake::FakeInterface;

namespace {

struct State {
  std::mutex lock;
  std::vector<FakeInterface> interfaces;
  int macError = 0;
  int addressError = 0;

  State() { reset(); }

  void reset() {
    interfaces = {{"lo", {}, {"127.0.0.1"}},
                  {"eth0", {0x02, 0x00, 0x5E, 0x00, 0x53, 0x01}, {"192.0.2.1"}}};
    macError = 0;
    addressError = 0;
  }

  /// Null, with errno set, for a name that there is not, and for a fault.
  FakeInterface const* find(std::string const& aName, int aError) {
    auto const found =
        std::find_if(interfaces.begin(), interfaces.end(),
                     [&](FakeInterface const& aInterface) { return aInterface.name == aName; });
    if (aError == 0 && found != interfaces.end()) {
      return &*found;
    }
    errno = aError != 0 ? aError : ENODEV;
    return nullptr;
  }
};

State& state() {
  static State theState;
  return theState;
}

}  // namespace

std::vector<std::string> InterfaceQuery::Names() {
  std::lock_guard lock(state().lock);
  std::vector<std::string> names;
  for (FakeInterface const& interface : state().interfaces) {
    names.push_back(interface.name);
  }
  return names;
}

bool InterfaceQuery::HardwareAddress(int /*aSocket*/, std::string const& aName,
                                     std::uint8_t* aMac) {
  std::lock_guard lock(state().lock);
  FakeInterface const* const interface = state().find(aName, state().macError);
  if (interface != nullptr) {
    std::copy(interface->mac.begin(), interface->mac.end(), aMac);
  }
  return interface != nullptr;
}

bool InterfaceQuery::Addresses(int /*aSocket*/, std::string const& aName,
                               std::vector<SocketCommon::In_addr>& aAddresses) {
  std::lock_guard lock(state().lock);
  if (state().addressError != 0) {
    errno = state().addressError;
    return false;
  }
  FakeInterface const* const interface = state().find(aName, 0);
  if (interface != nullptr) {
    for (std::string const& address : interface->addresses) {
      aAddresses.push_back({inet_addr(address.c_str())});
    }
  }
  return true;
}

namespace Fake {

void FakeInterfaces::Set(std::vector<FakeInterface> const& aInterfaces) {
  std::lock_guard lock(state().lock);
  state().interfaces = aInterfaces;
}

void FakeInterfaces::FailHardwareAddress(int aErrno) {
  std::lock_guard lock(state().lock);
  state().macError = aErrno;
}

void FakeInterfaces::FailAddresses(int aErrno) {
  std::lock_guard lock(state().lock);
  state().addressError = aErrno;
}

void FakeInterfaces::Reset() {
  std::lock_guard lock(state().lock);
  state().reset();
}

}  // namespace Fake
}  // namespace Zelv::Platform
