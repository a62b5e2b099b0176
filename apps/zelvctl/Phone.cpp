#include "apps/zelvctl/Phone.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "zelv/adapter/NetworkAdapter.h"

namespace ZelvCtl {

using Zelv::Adapter::NetworkAdapter;
using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::HierarchicalDB;
using Zelv::Infrastructure::URL;

namespace {

constexpr int copies = 3;
constexpr std::size_t rememberedMessages = 1000;

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

}  // namespace

Phone::Phone(Identity const& aIdentity, std::string const& aGroup, Watcher aWatcher)
    : mIdentity(aIdentity),
      mMessages(mIdentity),
      mGroup("udp", aGroup, aIdentity.port, ""),
      mWatcher(std::move(aWatcher)) {
  mService = NetworkAdapter::getInstance()->registerService(mGroup, this, mIdentity.address);
  if (mService == GUID::nullGUID) {
    throw std::runtime_error("cannot join the group " + aGroup + " at " + mIdentity.address);
  }
  multicast(mMessages.probe());
  multicast(mMessages.hello());
}

Phone::~Phone() {
  multicast(mMessages.bye());
  NetworkAdapter* const adapter = NetworkAdapter::getInstance();
  adapter->unregisterService(mService);
  adapter->terminate();
  delete adapter;  // waits for the thread that calls onMessage
}

void Phone::multicast(std::string const& aText) {
  NetworkAdapter::getInstance()->send(mGroup, aText, mIdentity.address, copies);
}

void Phone::onMessage(std::string const& aMessage, std::string const&) {
  HierarchicalDB message;
  if (message.loadFromString(aMessage) == 0 &&
      !isRepeated(read(message, "/Envelope/Header/MessageID/text()"))) {
    handle(message);
  }
}

bool Phone::isRepeated(std::string const& aMessageId) {
  std::lock_guard lock(mLock);
  if (std::find(mSeen.begin(), mSeen.end(), aMessageId) != mSeen.end()) {
    return true;
  }
  if (mSeen.size() == rememberedMessages) {
    mSeen.erase(mSeen.begin());
  }
  mSeen.push_back(aMessageId);
  return false;
}

void Phone::handle(Message& aMessage) {
  std::string const type = read(aMessage, "/Envelope/Body/*[1]/name()");
  std::string const id = read(aMessage, "/Envelope/Body/*[1]/Device/@ID");
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
  Device const device{read(aMessage, path + "@ID"), read(aMessage, path + "Type/text()"),
                      read(aMessage, path + "Name/text()"), read(aMessage, path + "Model/text()"),
                      hostOf(read(aMessage, path + "Services/*[1]/URL/text()"))};
  if (device.id == mIdentity.id || (device.type != "TV" && device.type != "MOBILE")) {
    return;
  }
  bool isNew;
  {
    std::lock_guard lock(mLock);
    isNew = mDevices.add(device);
  }
  if (isNew) {
    mWatcher(true, device);
  }
}

void Phone::onBye(std::string const& aDeviceId) {
  std::optional<Device> gone;
  {
    std::lock_guard lock(mLock);
    gone = mDevices.remove(aDeviceId);
  }
  if (gone) {
    mWatcher(false, *gone);
  }
}

void Phone::onHeartBeat(std::string const& aDeviceId) {
  bool known;
  {
    std::lock_guard lock(mLock);
    known = mDevices.stamp(aDeviceId);
  }
  if (!known && aDeviceId != mIdentity.id) {
    multicast(mMessages.resolve(aDeviceId));
  }
}

void Phone::onQuestion(Message& aMessage, std::string const& aType) {
  std::string const wanted = read(aMessage, "/Envelope/Body/Probe/Criteria/Device/Type/text()");
  if (aType == "Probe" && wanted != "MOBILE" && wanted != "ANY") {
    return;
  }
  std::string const id = read(aMessage, "/Envelope/Header/MessageID/text()");
  try {
    URL const url(read(aMessage, "/Envelope/Header/ReplyTo/text()"));
    NetworkAdapter::getInstance()->send(
        url, aType == "Probe" ? mMessages.probeMatch(id) : mMessages.resolveMatch(id), "", copies);
  } catch (std::exception const&) {
    // no address, no answer
  }
}

void Phone::tick(KnownDevices::Clock::duration aPatience) {
  multicast(mMessages.heartBeat());
  std::vector<Device> silent;
  {
    std::lock_guard lock(mLock);
    silent = mDevices.removeSilent(aPatience);
  }
  for (Device const& device : silent) {
    mWatcher(false, device);
  }
}

std::vector<Device> Phone::devices() const {
  std::lock_guard lock(mLock);
  return mDevices.sorted();
}

}  // namespace ZelvCtl
