#include "apps/zelvctl/Errand.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "apps/zelvctl/Delivery.h"
#include "apps/zelvctl/DeviceChoice.h"
#include "apps/zelvctl/Gathering.h"
#include "apps/zelvctl/Interrupted.h"
#include "apps/zelvctl/Ipv4.h"
#include "apps/zelvctl/OwnIdentity.h"

namespace ZelvCtl {

namespace {

using Clock = Loop::Clock;

Clock::duration seconds(double aSeconds) {
  return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(aSeconds));
}

}  // namespace

Errand::Errand(Options const& aOptions, int aStopDescriptor)
    : mOptions(aOptions),
      mIdentity(OwnIdentity::of(aOptions)),
      mLoop(aStopDescriptor),
      mDeadline(Clock::now() + seconds(aOptions.timeout)) {}

std::string Errand::openMailbox(std::uint16_t aPort, Mailbox::Receiver aReceiver) {
  mMailbox = std::make_unique<Mailbox>(aPort, std::move(aReceiver));
  mLoop.serve(mMailbox->descriptor(), [this] { mMailbox->serve(); });
  return "tcp://" + mIdentity.address + ":" + std::to_string(mMailbox->port()) + "/";
}

void Errand::join() {
  if (mPhone) {
    return;
  }
  mPhone = std::make_unique<Phone>(mIdentity, mOptions.group,
                                   [this](bool aArrived, Device const& aDevice) {
                                     mPresence.note(aArrived, aDevice);
                                     mLoop.bell().ring();
                                   });
  mLoop.every(seconds(mOptions.interval),
              [this] { mPhone->tick(seconds(mOptions.interval * Phone::Patience)); });
}

Target Errand::find(Service const& aService) {
  if (Ipv4::isAddress(mOptions.device)) {
    return {mOptions.device, "", aService.at(mOptions.device)};
  }
  join();
  Device const device = search();
  return {device.name, device.id, aService.of(device)};
}

/// Waits for another device. @return false when none has come.
bool Errand::hasNewsWithin(Loop::Clock::duration aTime, std::vector<Device>& aDevices) {
  std::size_t const known = aDevices.size();
  Loop::End const end =
      mLoop.run(Clock::now() + aTime, [&] { return mPhone->devices().size() != known; });
  if (end == Loop::Stopped) {
    throw Interrupted();
  }
  aDevices = mPhone->devices();
  return end == Loop::Done;
}

// An identifier is sure at once; others may have the same name, so those are waited for a moment.
Device Errand::search() {
  DeviceChoice const choice(mOptions.device);
  Gathering gathering(Clock::now(), std::max(Clock::duration::zero(), mDeadline - Clock::now()));
  std::vector<Device> devices;
  for (auto left = gathering.left(Clock::now());
       left > Clock::duration::zero() && !choice.byId(devices);
       left = gathering.left(Clock::now())) {
    if (hasNewsWithin(left, devices) && !choice.byName(devices).empty()) {
      gathering.heard(Clock::now());
    }
  }
  if (devices.empty()) {
    throw std::runtime_error("nobody answered " + timeAsText());
  }
  return choice.among(devices);
}

bool Errand::await(std::function<bool()> const& aDone) {
  Loop::End const end = mLoop.run(mDeadline, aDone);
  if (end == Loop::Stopped) {
    throw Interrupted();
  }
  return end == Loop::Done;
}

void Errand::deliver(Target const& aTarget, std::string const& aText) {
  Delivery const delivery(aTarget.url, aText, mLoop.bell());
  if (!await([&] { return delivery.isOver(); }) || !delivery.wasAcknowledged()) {
    throw std::runtime_error("'" + aTarget.name + "' does not take messages at " +
                             aTarget.url.toString());
  }
}

void Errand::renewTime() {
  mDeadline = Clock::now() + seconds(mOptions.timeout);
}

std::string Errand::timeAsText() const {
  std::ostringstream text;
  text << "within " << mOptions.timeout << " s";
  return text.str();
}

}  // namespace ZelvCtl
