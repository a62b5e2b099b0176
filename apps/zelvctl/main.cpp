#include <poll.h>

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>

#include "apps/StopSignal.h"
#include "apps/zelvctl/Options.h"
#include "apps/zelvctl/Phone.h"
#include "apps/zelvctl/Printer.h"
#include "zelv/adapter/NetworkInterface.h"

namespace {

using namespace ZelvCtl;
using Seconds = std::chrono::duration<double>;

std::string lastAddress() {
  std::string address;
  for (Zelv::Adapter::NetworkInterface* snapshot :
       Zelv::Adapter::NetworkInterface::getInterfaces()) {
    std::unique_ptr<Zelv::Adapter::NetworkInterface> const owned(snapshot);
    if (owned->getName() != "lo" && !owned->getIPv4Addresses().empty()) {
      address = owned->getIPv4Addresses().back();
    }
  }
  if (address.empty()) {
    throw std::runtime_error(
        "no network interface has an address; is there a network? (--address)");
  }
  return address;
}

Identity identity(Options const& aOptions) {
  return {aOptions.id.empty() ? Zelv::Infrastructure::GUID::createGUID().toString() : aOptions.id,
          aOptions.name, aOptions.address.empty() ? lastAddress() : aOptions.address,
          aOptions.port};
}

/// @return true when the stop signal came within the time.
bool waitForStop(ZelvApps::StopSignal const& aStop, Seconds aTime) {
  pollfd wait{aStop.Descriptor(), POLLIN, 0};
  return poll(&wait, 1, static_cast<int>(aTime.count() * 1000)) > 0;
}

void watch(Options const& aOptions, ZelvApps::StopSignal const& aStop) {
  Printer printer(aOptions.json);
  Phone phone(identity(aOptions), aOptions.group,
              [&](bool aArrived, Device const& aDevice) { printer.change(aArrived, aDevice); });
  Seconds const interval(aOptions.interval);
  while (!waitForStop(aStop, interval)) {
    phone.tick(std::chrono::duration_cast<KnownDevices::Clock::duration>(interval * 1.2));
  }
}

int list(Options const& aOptions, ZelvApps::StopSignal const& aStop) {
  Phone phone(identity(aOptions), aOptions.group, [](bool, Device const&) {});
  if (waitForStop(aStop, Seconds(aOptions.timeout))) {
    return 1;
  }
  std::vector<Device> const devices = phone.devices();
  Printer(aOptions.json).list(devices);
  if (devices.empty()) {
    std::cerr << "zelvctl: nobody answered within " << aOptions.timeout << " s\n";
    return 1;
  }
  return 0;
}

}  // namespace

int main(int aCount, char** aArguments) {
  Options options;
  int status = 0;
  if (!options.parse(aCount, aArguments, status)) {
    return status;
  }
  try {
    ZelvApps::StopSignal const stop;
    if (!options.watch) {
      return list(options, stop);
    }
    watch(options, stop);
  } catch (std::exception const& error) {
    std::cerr << "zelvctl: " << error.what() << "\n";
    return 1;
  }
  return 0;
}
