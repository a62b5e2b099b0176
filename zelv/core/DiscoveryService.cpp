#include "zelv/core/DiscoveryService.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/NetworkConnection.h"
#include "zelv/core/MultiDevice.h"
#include "zelv/infrastructure/MultiString.h"
#include "zelv/infrastructure/XPathGate.h"
#include "zelv/interfaces/InterfaceFactory.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/PCTime.h"
#include "zelv/platform/TCAutoLock.h"
#include "zelv/platform/TraceScope.h"

namespace Zelv {

using Adapter::NetworkAdapter;
using Infrastructure::HierarchicalDB;
using Infrastructure::MultiString;
using Infrastructure::URL;

namespace {

char const* const timerName = "HeartBeatTimer";
/// Each message goes out so often; with one MessageID, so that receivers handle it once.
constexpr int copies = 3;
constexpr int patienceWithResolve = 10;
constexpr long longestInterval = 86400;

std::string read(HierarchicalDB& aDocument, std::string const& aXPath) {
  std::string result;
  aDocument.getContent(aXPath, result);
  return result;
}

/// Answers go to one host. Sent to a group or to nowhere in particular they would be multiplied.
bool isOneHost(URL const& aUrl) {
  std::string const domain = aUrl.getDomainName();
  return !Adapter::NetworkConnection::isMulticastAddress(domain) && domain != "255.255.255.255" &&
         domain != "0.0.0.0";
}

/// An interval out of a damaged file must neither stop the timer nor let everybody die at each
/// tick.
std::int32_t interval(std::string const& aText) {
  long const seconds = std::strtol(aText.c_str(), nullptr, 10);
  return seconds == 0 ? 0 : static_cast<std::int32_t>(std::clamp(seconds, 1L, longestInterval));
}

}  // namespace

Core::DiscoveryService::DiscoveryService(MultiDevice* aMultiDevice)
    : mMultiDevice(aMultiDevice), mMessages(mLocal) {}

Core::DiscoveryService::~DiscoveryService() {
  TraceScope trace("DiscoveryService::~DiscoveryService");
}

// Start and end

// The order is part of the protocol: the listener stands before the Probe, since the answers come
// to it, and the Probe before anything that looks whether it was sent.
void Core::DiscoveryService::initialize() {
  TraceScope trace("DiscoveryService::initialize");
  if (!obtainInterfaces()) {
    return;
  }
  mNetworkAdapter = NetworkAdapter::getInstance();
  readSettings();
  mMulticastSendUrl = std::make_unique<URL>("udp", mMulticastGroup, mLocal.mMulticastPort, "");
  mMulticastListenUrl = std::make_unique<URL>("udp", mMulticastGroup, mLocal.mMulticastPort, "");
  listen();
  PCTime::Sleep(2);
  SendProbe();
  mProbeSent = true;
  mCoreData->requestData("/Zelv/Devices/LocalTV/@ID", nullptr, this);
  startTimer();
}

bool Core::DiscoveryService::obtainInterfaces() {
  mCoreData = dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
  if (!mCoreData) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DiscoveryService::initialize: Failed to obtain ICoreData interface.");
    return false;
  }
  mCoreTimer = dynamic_cast<ICoreTimer*>(InterfaceFactory::getInterface(IID_ICoreTimer));
  if (!mCoreTimer) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DiscoveryService::initialize: Failed to obtain ICoreTimer interface.");
    return false;
  }
  return true;
}

void Core::DiscoveryService::readSettings() {
  mMulticastGroup = readSetting("/Zelv/Devices/MulticastGroup/text()");
  mLocal.mMulticastPort = readSetting("/Zelv/Devices/MulticastPort/text()");
  mLocal.mAddress =
      readSetting("/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()");
  mLocal.mId = readSetting("/Zelv/Devices/LocalTV/@ID");
  mLocal.mModel = readSetting("/Zelv/Devices/LocalTV/Model/text()");
  mLocal.mLocation = readSetting("/Zelv/Devices/LocalTV/Location/text()");
}

std::string Core::DiscoveryService::readSetting(char const* aXPath) {
  std::string value;
  mMultiDevice->getData(aXPath, value, GUID::createGUID());
  return value;
}

void Core::DiscoveryService::listen() {
  mServiceId = mNetworkAdapter->registerService(*mMulticastListenUrl, this, mLocal.mAddress);
}

void Core::DiscoveryService::startTimer() {
  mHeartBeatInterval = interval(readSetting("/Zelv/Devices/HeartBeatInterval/text()"));
  if (mHeartBeatInterval != 0) {
    mHeartBeatTimerId = mCoreTimer->createTimer(static_cast<unsigned>(mHeartBeatInterval) * 1000,
                                                -1, timerName, this);
  }
}

void Core::DiscoveryService::terminate() {
  TraceScope trace("DiscoveryService::terminate");
  if (!mCoreTimer || !mMulticastSendUrl) {
    return;  // never started
  }
  mCoreTimer->destroyTimer(mHeartBeatTimerId, this);
  SendBye();
  mNetworkAdapter->unregisterService(mServiceId);
}

// What comes in

void Core::DiscoveryService::onMessage(std::string const& aMessage, std::string const&) {
  TraceScope trace("DiscoveryService::OnMessage");
  Answer answer;
  {
    TCAutoLock lock(mLock);
    answer = handle(aMessage);
  }
  if (answer) {
    send(*answer);
  }
}

Core::DiscoveryService::Answer Core::DiscoveryService::handle(std::string const& aMessage) {
  HierarchicalDB message;
  if (message.loadFromString(aMessage) != 0) {
    PCRealDebug::Print(PCRealDebug::Error, "DiscoveryService::OnMessage: Failed to load Message.");
    return {};
  }
  std::string const type = read(message, "/Envelope/Body/*[1]/name()");
  std::string const id = read(message, "/Envelope/Header/MessageID/text()");
  if (!id.empty() && checkDuplicateMessage(id)) {
    PCRealDebug::Print(
        PCRealDebug::Detail,
        "DiscoveryService::OnMessage: Received duplicate message and will skip processing.");
    return {};
  }
  return handleType(type, message, id);
}

Core::DiscoveryService::Answer Core::DiscoveryService::handleType(std::string const& aType,
                                                                  Message& aMessage,
                                                                  std::string const& aMessageId) {
  if (aType == "Probe") {
    return onProbe(aMessage, aMessageId);
  }
  if (aType == "ProbeMatch" || aType == "Hello") {
    onDescription(aMessage, read(aMessage, "/Envelope/Body/" + aType + "/Device/Type/text()"));
  } else if (aType == "Resolve") {
    return onResolve(aMessage);
  } else if (aType == "ResolveMatch") {
    onResolveMatch(aMessage);
  } else if (aType == "Bye") {
    onBye(aMessage);
  } else if (aType == "HeartBeat") {
    return onHeartBeat(aMessage);
  }
  return {};
}

Core::DiscoveryService::Answer Core::DiscoveryService::onProbe(Message& aMessage,
                                                               std::string const& aMessageId) {
  if (mLocal.mAddress.empty()) {
    return {};
  }
  std::string const type = read(aMessage, "/Envelope/Body/Probe/Criteria/Device/Type/text()");
  if (type != "TV" && type != "ANY") {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "DiscoveryService::OnMessage: Ignoring probe for device type '%s'.",
                       type.c_str());
    return {};
  }
  std::optional<URL> const url = replyUrl(aMessage, "Probe");
  return url ? SendProbeMatch(aMessageId, *url) : Answer();
}

Core::DiscoveryService::Answer Core::DiscoveryService::onResolve(Message& aMessage) {
  if (mLocal.mAddress.empty()) {
    return {};
  }
  std::string const id = read(aMessage, "/Envelope/Body/Resolve/Device/@ID");
  if (id != mLocal.mId) {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "DiscoveryService::OnMessage: Ignoring resolve for device ID '%s'.",
                       id.c_str());
    return {};
  }
  std::optional<URL> const url = replyUrl(aMessage, "Resolve");
  return url ? SendResolveMatch(read(aMessage, "/Envelope/Header/MessageID/text()"), *url)
             : Answer();
}

std::optional<URL> Core::DiscoveryService::replyUrl(Message& aMessage, char const* aQuestion) {
  std::string const text = read(aMessage, "/Envelope/Header/ReplyTo/text()");
  try {
    URL const url(text);
    if (isOneHost(url)) {
      return url;
    }
  } catch (std::exception const&) {
    // said below, with the same words
  }
  if (aQuestion == std::string("Probe")) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::OnMessage: (Probe) replyTo is not a URL '%s'.",
                       text.c_str());
  } else {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::OnMessage: (Resolve) replyTo is not a URL '%s'.",
                       text.c_str());
  }
  return {};
}

void Core::DiscoveryService::onDescription(Message& aMessage, std::string const& aType) {
  if (aType == "TV" || aType == "MOBILE") {
    AddDeviceToList(aMessage);
    notifyDataSubscribers(aType);
  }
}

void Core::DiscoveryService::onResolveMatch(Message& aMessage) {
  std::string const id = read(aMessage, "/Envelope/Body/ResolveMatch/Device/@ID");
  if (!mUnresolvedDevices.take(id)) {
    PCRealDebug::Print(
        PCRealDebug::Warning,
        "DiscoveryService::OnMessage: (ResolveMatch) deviceID '%s' not in unresolved "
        "list of devices.",
        id.c_str());
    return;
  }
  AddDeviceToList(aMessage);
  notifyDataSubscribers(read(aMessage, "/Envelope/Body/ResolveMatch/Device/Type/text()"));
}

void Core::DiscoveryService::onBye(Message& aMessage) {
  std::string const id = read(aMessage, "/Envelope/Body/Bye/Device/@ID");
  // Asked before the device goes; of one that is not there phones are told.
  std::string const type = mDevices.typeOf(id);
  RemoveDeviceFromList(id);
  notifyDataSubscribers(type);
}

Core::DiscoveryService::Answer Core::DiscoveryService::onHeartBeat(Message& aMessage) {
  std::string const id = read(aMessage, "/Envelope/Body/HeartBeat/Device/@ID");
  std::int64_t const now = PCTime::EpochTime();
  if (mDevices.stamp(id, now) || !mProbeSent) {
    return {};
  }
  PCRealDebug::Print(PCRealDebug::Detail,
                     "DiscoveryService::OnMessage: (HeartBeat) deviceID '%s' unresolved.",
                     id.c_str());
  if (!Infrastructure::XPathGate::isQuotableLiteral(id) || !mUnresolvedDevices.note(id, now)) {
    return {};
  }
  return SendResolve(id);
}

void Core::DiscoveryService::onData(std::string const&, std::string const&,
                                    ContextInformation const*, GUID const&) {
  TraceScope trace("DiscoveryService::onData");
  SendHello();
}

void Core::DiscoveryService::onStatus(StatusInformation const&, GUID const&) {
  TraceScope trace("DiscoveryService::onStatus");
}

void Core::DiscoveryService::onTimer(std::string const& aTimerName, GUID) {
  TraceScope trace("DiscoveryService::onTimer");
  if (aTimerName != timerName) {
    return;
  }
  followClock();
  if (mServiceId == GUID::nullGUID) {
    listen();  // no cable at start, perhaps; without this the set stays deaf
  }
  SendHeartBeat();
  CheckRemoteDeviceStatus();
  cleanExpiredMessages();
  cleanUnresolvedDevices();
}

// What goes out

void Core::DiscoveryService::send(Outgoing const& aOutgoing) {
  mNetworkAdapter->send(aOutgoing.mUrl, aOutgoing.mText, aOutgoing.mLocalInterface, copies);
}

void Core::DiscoveryService::multicast(std::string const& aText) {
  send({*mMulticastSendUrl, aText, mLocal.mAddress});
}

// Anew for each message: the name may be changed while the set runs.
std::string Core::DiscoveryService::localName() {
  return readSetting("/Zelv/Devices/LocalTV/Name/text()");
}

void Core::DiscoveryService::SendProbe() {
  if (mLocal.mAddress.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::SendProbe: Local network interface address not known.");
    return;
  }
  multicast(mMessages.probe());
}

Core::DiscoveryService::Answer Core::DiscoveryService::SendResolve(std::string const& aDeviceId) {
  if (mLocal.mAddress.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::SendResolve: Local network interface address not known.");
    return {};
  }
  return Outgoing{*mMulticastSendUrl, mMessages.resolve(aDeviceId), mLocal.mAddress};
}

Core::DiscoveryService::Answer Core::DiscoveryService::SendProbeMatch(std::string const& aMessageId,
                                                                      URL const& aReplyUrl) {
  return Outgoing{aReplyUrl, mMessages.probeMatch(localName(), aMessageId), ""};
}

Core::DiscoveryService::Answer Core::DiscoveryService::SendResolveMatch(
    std::string const& aMessageId, URL const& aReplyUrl) {
  return Outgoing{aReplyUrl, mMessages.resolveMatch(localName(), aMessageId), ""};
}

void Core::DiscoveryService::SendHello() {
  multicast(mMessages.hello(localName()));
}

void Core::DiscoveryService::SendBye() {
  multicast(mMessages.bye());
}

void Core::DiscoveryService::SendHeartBeat() {
  multicast(mMessages.heartBeat());
}

// The list

int Core::DiscoveryService::getData(std::string const& aXPath, std::string& aData, GUID) {
  TraceScope trace("DiscoveryService::getData");
  TCAutoLock lock(mLock);
  if (mDevices.getContent(aXPath.substr(std::min<std::size_t>(6, aXPath.size())), aData) != 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::getData: Data not found in HierarchicalDB.");
    return -1;
  }
  return 0;
}

int Core::DiscoveryService::setData(std::string const& aXPath, std::string const& aData, GUID) {
  TraceScope trace("DiscoveryService::setData");
  TCAutoLock lock(mLock);
  if (mDevices.setContent(aXPath.substr(std::min<std::size_t>(6, aXPath.size())), aData) != 0) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::setData: Failed to set data in HierarchicalDB.");
    return -1;
  }
  return 0;
}

int Core::DiscoveryService::addData(std::string const&, std::string const&, GUID) {
  TraceScope trace("DiscoveryService::addData");
  return 0;
}

int Core::DiscoveryService::onSubscribe(std::string const&, GUID) {
  TraceScope trace("DiscoveryService::onSubscribe");
  return 0;
}

int Core::DiscoveryService::onUnsubscribe(std::string const&, GUID) {
  TraceScope trace("DiscoveryService::onUnsubscribe");
  return 0;
}

void Core::DiscoveryService::AddDeviceToList(Message& aMessage) {
  mDevices.add(aMessage, PCTime::EpochTime());
}

void Core::DiscoveryService::RemoveDeviceFromList(std::string aDeviceId) {
  mDevices.remove(aDeviceId);
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DiscoveryService::RemoveDeviceFromList: Removed device with ID='%s'",
                     aDeviceId.c_str());
}

void Core::DiscoveryService::notifyDataSubscribers(std::string const& aDeviceType) {
  if (!mCoreData) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DiscoveryService::notifyDataSubscribers: IDataController is NULL!");
    return;
  }
  if (aDeviceType == "TV") {
    notifyList("RemoteTV");
  } else if (aDeviceType == "MOBILE") {
    notifyList("Mobile");
  }
}

// The whole list each time, so that a subscriber learns the new set and not a change. The null
// identifier keeps the change on this device.
void Core::DiscoveryService::notifyList(char const* aElement) {
  mCoreData->notifyDataSubscribers(std::string("/Zelv/Devices/") + aElement + "/@ID",
                                   mDevices.ids(aElement), GUID::nullGUID);
}

void Core::DiscoveryService::CheckRemoteDeviceStatus() {
  auto const cutOff = static_cast<std::int64_t>(static_cast<double>(PCTime::EpochTime()) +
                                                mHeartBeatInterval * -1.2);
  std::string const silent = mDevices.silentSince(cutOff);
  for (std::string const& id : MultiString::split(silent)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::CheckRemoteDeviceStatus: Device '%s' not sending "
                       "heartbeat, assuming it's dead.",
                       id.c_str());
    RemoveDeviceFromList(id);
  }
  if (!silent.empty() && mCoreData) {
    notifyList("RemoteTV");
    notifyList("Mobile");
  }
}

// Upkeep

bool Core::DiscoveryService::checkDuplicateMessage(std::string aMessageId) {
  if (!mReceivedMessages.check(aMessageId, PCTime::EpochTime())) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DiscoveryService::checkDuplicateMessage: Message '%s' is duplicate.",
                     aMessageId.c_str());
  return true;
}

void Core::DiscoveryService::cleanExpiredMessages() {
  TCAutoLock lock(mLock);
  std::int64_t const limit = PCTime::EpochTime() - 3LL * mHeartBeatInterval;
  mReceivedMessages.forgetBefore(limit, [&](std::string const& aId, std::int64_t aTime) {
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "DiscoveryService::cleanExpiredMessages: Discarding msg '%s', received: %d, now: %d.",
        aId.c_str(), static_cast<int>(aTime), static_cast<int>(limit));
  });
}

void Core::DiscoveryService::cleanUnresolvedDevices() {
  TCAutoLock lock(mLock);
  std::int64_t const now = PCTime::EpochTime();
  mUnresolvedDevices.forgetBefore(
      now - patienceWithResolve, [&](std::string const& aId, std::int64_t aTime) {
        PCRealDebug::Print(PCRealDebug::Notable,
                           "DiscoveryService::cleanUnresolvedDevices: Discard device '%s', resolve "
                           "sent at '%d', now '%d'",
                           aId.c_str(), static_cast<int>(aTime), static_cast<int>(now));
      });
}

void Core::DiscoveryService::followClock() {
  TCAutoLock lock(mLock);
  std::int64_t const jump = mClock.takeJump();
  if (jump == 0) {
    return;
  }
  mDevices.shiftStamps(jump);
  mReceivedMessages.shift(jump);
  mUnresolvedDevices.shift(jump);
}

}  // namespace Zelv
