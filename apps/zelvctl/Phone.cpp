#include "apps/zelvctl/Phone.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include "zelv/infrastructure/URL.h"
#include "zelv/infrastructure/XPathGate.h"

namespace ZelvCtl {

using Zelv::Infrastructure::HierarchicalDB;
using Zelv::Infrastructure::URL;
using Zelv::Infrastructure::XPathGate;

namespace {

std::string read(HierarchicalDB& aMessage, std::string const& aXPath) {
  std::string result;
  aMessage.getContent(aXPath, result);
  return result;
}

std::string hostOf(std::string const& aUrl) {
  try {
    return URL(aUrl).getDomainName();
  } catch (std::exception const&) {
    return "";
  }
}

/// Where the device has what this phone can make use of.
std::map<std::string, std::string> servicesOf(HierarchicalDB& aMessage, std::string const& aPath) {
  std::map<std::string, std::string> services;
  for (char const* name : {"DataControl", "CommandControl", "InputControl", "AssetManagement"}) {
    std::string const url =
        read(aMessage, aPath + "Services/Service[Name='" + name + "']/URL/text()");
    if (!url.empty()) {
      services[name] = url;
    }
  }
  return services;
}

/// What sets accept as an identifier; anything else could not stand in a message either.
bool isIdentifier(std::string const& aText) {
  return !aText.empty() && XPathGate::isQuotableLiteral(aText);
}

}  // namespace

Phone::Phone(Identity const& aIdentity, std::string const& aGroup, Watcher aWatcher,
             TimeSource aNow)
    : mIdentity(aIdentity),
      mMessages(mIdentity),
      mWatcher(std::move(aWatcher)),
      mNow(std::move(aNow)),
      mHome(URL("udp", aGroup, aIdentity.port, ""), aIdentity.address, this) {
  if (!mHome.tellAll(mMessages.probe()) || !mHome.tellAll(mMessages.hello())) {
    throw std::runtime_error("cannot send to the group " + aGroup + " from " + mIdentity.address);
  }
}

Phone::~Phone() {
  mHome.tellAll(mMessages.bye());
}

void Phone::onMessage(std::string const& aMessage, std::string const& /*aSender*/) {
  HierarchicalDB message;
  if (message.loadFromString(aMessage) == 0 &&
      !isCopy(read(message, "/Envelope/Header/MessageID/text()"))) {
    handle(message);
  }
}

bool Phone::isCopy(std::string const& aMessageId) {
  std::lock_guard const lock(mLock);
  return mSeen.check(aMessageId);
}

void Phone::handle(Message& aMessage) {
  std::string const type = read(aMessage, "/Envelope/Body/*[1]/name()");
  std::string const id = read(aMessage, "/Envelope/Body/*[1]/Device/@ID");
  if (id == mIdentity.id && type != "Resolve") {
    return;
  }
  if (type == "Hello" || type == "ProbeMatch" || type == "ResolveMatch") {
    onDescription(aMessage);
  } else if (type == "Bye") {
    onBye(id);
  } else if (type == "HeartBeat") {
    onHeartBeat(id);
  } else if (type == "Probe" || (type == "Resolve" && id == mIdentity.id)) {
    onQuestion(aMessage, type);
  }
}

void Phone::onDescription(Message& aMessage) {
  std::string const path = "/Envelope/Body/*[1]/Device/";
  Device const device{read(aMessage, path + "@ID"),
                      read(aMessage, path + "Type/text()"),
                      read(aMessage, path + "Name/text()"),
                      read(aMessage, path + "Model/text()"),
                      hostOf(read(aMessage, path + "Services/*[1]/URL/text()")),
                      servicesOf(aMessage, path)};
  bool const isKind = device.type == "TV" || device.type == "MOBILE";
  if (isKind && isIdentifier(device.id) && noteDevice(device)) {
    mWatcher(true, device);
  }
}

bool Phone::noteDevice(Device const& aDevice) {
  std::lock_guard const lock(mLock);
  return mDevices.add(aDevice, mNow());
}

void Phone::onBye(std::string const& aDeviceId) {
  std::optional<Device> gone;
  {
    std::lock_guard const lock(mLock);
    gone = mDevices.remove(aDeviceId);
  }
  if (gone) {
    mWatcher(false, *gone);
  }
}

void Phone::onHeartBeat(std::string const& aDeviceId) {
  if (mustAskFor(aDeviceId)) {
    mHome.tellAll(mMessages.resolve(aDeviceId));
  }
}

bool Phone::mustAskFor(std::string const& aDeviceId) {
  Clock::time_point const now = mNow();
  std::lock_guard const lock(mLock);
  return !mDevices.stamp(aDeviceId, now) && isIdentifier(aDeviceId) &&
         mQuestions.mayAsk(aDeviceId, now);
}

void Phone::onQuestion(Message& aMessage, std::string const& aType) {
  std::string const wanted = read(aMessage, "/Envelope/Body/Probe/Criteria/Device/Type/text()");
  if (aType == "Probe" && wanted != "MOBILE" && wanted != "ANY") {
    return;
  }
  std::string const id = read(aMessage, "/Envelope/Header/MessageID/text()");
  if (!id.empty() && !isIdentifier(id)) {
    return;
  }
  try {
    URL const url(read(aMessage, "/Envelope/Header/ReplyTo/text()"));
    mHome.tell(url, aType == "Probe" ? mMessages.probeMatch(id) : mMessages.resolveMatch(id));
  } catch (std::exception const&) {
    // no address, no answer
  }
}

void Phone::tick(Clock::duration aPatience) {
  mHome.tellAll(mMessages.heartBeat());
  std::vector<Device> silent;
  {
    std::lock_guard const lock(mLock);
    silent = mDevices.removeSilentSince(mNow() - aPatience);
  }
  for (Device const& device : silent) {
    mWatcher(false, device);
  }
}

std::vector<Device> Phone::devices() const {
  std::lock_guard const lock(mLock);
  return mDevices.sorted();
}

}  // namespace ZelvCtl
