#include "apps/zelvctl/DevicesVerb.h"

#include <poll.h>

#include <array>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "apps/zelvctl/Gathering.h"
#include "apps/zelvctl/OwnIdentity.h"
#include "apps/zelvctl/Phone.h"

namespace ZelvCtl {

namespace {

using Seconds = std::chrono::duration<double>;

[[noreturn]] void failWithNobody(double aTimeout) {
  std::ostringstream text;
  text << "nobody answered within " << aTimeout << " s";
  throw std::runtime_error(text.str());
}

}  // namespace

DevicesVerb::DevicesVerb(Options const& aOptions, ZelvApps::StopSignal const& aStop)
    : mOptions(aOptions),
      mStop(aStop),
      mIdentity(OwnIdentity::of(aOptions)),
      mPrinter(std::cout, aOptions.json) {}

/// Waits for the signal, the bell or the end of the time. @return true when the signal has come.
bool DevicesVerb::isStoppedWithin(Clock::duration aTime) {
  std::array<pollfd, 2> descriptors{
      {{mStop.Descriptor(), POLLIN, 0}, {mBell.descriptor(), POLLIN, 0}}};
  auto const milliseconds = std::chrono::ceil<std::chrono::milliseconds>(aTime).count();
  ::poll(descriptors.data(), descriptors.size(), static_cast<int>(milliseconds));
  return descriptors[0].revents != 0;
}

void DevicesVerb::checkOutput() const {
  if (mPrinter.isBroken()) {
    throw std::runtime_error("cannot write to standard output");
  }
}

void DevicesVerb::list() {
  Gathering gathering(Clock::now(),
                      std::chrono::duration_cast<Clock::duration>(Seconds(mOptions.timeout)));
  Phone const phone(mIdentity, mOptions.group, [this](bool, Device const&) { mBell.ring(); });
  for (auto left = gathering.left(Clock::now()); left > Clock::duration::zero();
       left = gathering.left(Clock::now())) {
    if (isStoppedWithin(left)) {
      throw std::runtime_error("interrupted");
    }
    if (mBell.answer()) {
      gathering.heard(Clock::now());
    }
  }
  std::vector<Device> const devices = phone.devices();
  mPrinter.list(devices);
  checkOutput();
  if (devices.empty()) {
    failWithNobody(mOptions.timeout);
  }
}

void DevicesVerb::watch() {
  Phone phone(mIdentity, mOptions.group, [this](bool aArrived, Device const& aDevice) {
    mPrinter.change(aArrived, aDevice);
    mBell.ring();
  });
  auto const interval = std::chrono::duration_cast<Clock::duration>(Seconds(mOptions.interval));
  auto const silence =
      std::chrono::duration_cast<Clock::duration>(Seconds(mOptions.interval * Phone::Patience));
  Clock::time_point next = Clock::now() + interval;
  while (!isStoppedWithin(std::max(Clock::duration::zero(), next - Clock::now()))) {
    mBell.answer();
    checkOutput();
    if (Clock::now() >= next) {
      phone.tick(silence);
      next = Clock::now() + interval;
    }
  }
}

}  // namespace ZelvCtl
