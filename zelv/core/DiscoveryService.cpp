#include "zelv/core/DiscoveryService.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "zelv/adapter/NetworkAdapter.h"
#include "zelv/adapter/OneHost.h"
#include "zelv/core/DiscoveryMessages.h"
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
constexpr long longestInterval = 86400;

std::string read(HierarchicalDB& aDocument, std::string const& aXPath) {
  std::string result;
  aDocument.getContent(aXPath, result);
  return result;
}

std::optional<URL> addressOfOneHost(std::string const& aText) {
  try {
    URL const url(aText);
    return Adapter::isOneHost(url) ? std::optional(url) : std::nullopt;
  } catch (std::exception const&) {
    return {};
  }
}

/// An interval out of a damaged file must neither stop the timer nor let everybody die at each
/// tick.
std::int32_t interval(std::string const& aText) {
  long const seconds = std::strtol(aText.c_str(), nullptr, 10);
  return seconds == 0 ? 0 : static_cast<std::int32_t>(std::clamp(seconds, 1L, longestInterval));
}

}  // namespace

Core::DiscoveryService::DiscoveryService(MultiDevice* aMultiDevice)
    : mMultiDevice(aMultiDevice),
      mSettings(std::make_shared<DiscoverySettings const>()),
      mAnswerSender([this](OutgoingMessage const& aAnswer) { send(aAnswer); }) {}

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
  readSettings();
  mAnswerSender.begin();
  listen();
  PCTime::Sleep(2);
  SendProbe();
  mProbeSent = true;
  mCoreData->requestData("/Zelv/Devices/LocalTV/@ID", nullptr, this);
  startTimer();
}

// A second start finds the same ones, and other threads read the pointers by then.
bool Core::DiscoveryService::obtainInterfaces() {
  auto* const data = dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
  if (!data) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DiscoveryService::initialize: Failed to obtain ICoreData interface.");
    return false;
  }
  auto* const timer = dynamic_cast<ICoreTimer*>(InterfaceFactory::getInterface(IID_ICoreTimer));
  if (!timer) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "DiscoveryService::initialize: Failed to obtain ICoreTimer interface.");
    return false;
  }
  if (!mNetworkAdapter) {
    mCoreData = data;
    mCoreTimer = timer;
    mNetworkAdapter = NetworkAdapter::getInstance();
  }
  return true;
}

void Core::DiscoveryService::readSettings() {
  DiscoverySettings read;
  read.mMulticastGroup = readSetting("/Zelv/Devices/MulticastGroup/text()");
  read.mMulticastPort = readSetting("/Zelv/Devices/MulticastPort/text()");
  read.mLocalInterfaceAddress =
      readSetting("/Zelv/Devices/LocalTV/Interfaces/NetworkInterface/IPv4/Address/text()");
  read.mLocalTvDeviceId = readSetting("/Zelv/Devices/LocalTV/@ID");
  read.mLocalTvModel = readSetting("/Zelv/Devices/LocalTV/Model/text()");
  read.mLocalTvLocation = readSetting("/Zelv/Devices/LocalTV/Location/text()");
  read.mMulticastSendUrl = URL("udp", read.mMulticastGroup, read.mMulticastPort, "");
  read.mMulticastListenUrl = URL("udp", read.mMulticastGroup, read.mMulticastPort, "");
  auto settings = std::make_shared<DiscoverySettings const>(std::move(read));
  TCAutoLock lock(mLock);
  mSettings = std::move(settings);
}

std::string Core::DiscoveryService::readSetting(char const* aXPath) {
  std::string value;
  mMultiDevice->getData(aXPath, value, GUID::createGUID());
  return value;
}

Core::DiscoveryService::Settings Core::DiscoveryService::settings() {
  TCAutoLock lock(mLock);
  return mSettings;
}

// A failure may be this service's own listener at the same place, from an earlier start: it stays.
void Core::DiscoveryService::listen() {
  TCAutoLock lock(mLock);
  mListening = true;
  GUID const handle = mNetworkAdapter->registerService(mSettings->mMulticastListenUrl, this,
                                                       mSettings->mLocalInterfaceAddress);
  if (handle == GUID::nullGUID) {
    return;
  }
  if (!(mServiceId == GUID::nullGUID)) {
    mNetworkAdapter->unregisterService(mServiceId);
  }
  mServiceId = handle;
}

// There was no cable at the start, perhaps; without this the set would stay deaf.
void Core::DiscoveryService::listenIfDeaf() {
  TCAutoLock lock(mLock);
  if (mListening && mServiceId == GUID::nullGUID) {
    listen();
  }
}

void Core::DiscoveryService::startTimer() {
  std::int32_t const seconds = interval(readSetting("/Zelv/Devices/HeartBeatInterval/text()"));
  stopTimer();
  mHeartBeatInterval = seconds;
  if (seconds == 0) {
    return;
  }
  GUID const timer =
      mCoreTimer->createTimer(static_cast<unsigned>(seconds) * 1000, -1, timerName, this);
  TCAutoLock lock(mLock);
  mHeartBeatTimerId = timer;
}

/// Ends the timer of an earlier start, if there is one.
void Core::DiscoveryService::stopTimer() {
  GUID timer;
  {
    TCAutoLock lock(mLock);
    std::swap(timer, mHeartBeatTimerId);
  }
  if (!(timer == GUID::nullGUID)) {
    mCoreTimer->destroyTimer(timer, this);
  }
}

bool Core::DiscoveryService::wasStarted() {
  return mNetworkAdapter != nullptr && !settings()->mMulticastSendUrl.getProtocol().empty();
}

void Core::DiscoveryService::terminate() {
  TraceScope trace("DiscoveryService::terminate");
  if (!wasStarted()) {
    return;
  }
  GUID timer;
  GUID service;
  {
    TCAutoLock lock(mLock);
    mListening = false;
    std::swap(timer, mHeartBeatTimerId);
    std::swap(service, mServiceId);
  }
  mCoreTimer->destroyTimer(timer, this);
  SendBye();
  mNetworkAdapter->unregisterService(service);
  mAnswerSender.end();
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
    sendAnswer(std::move(*answer));
  }
}

Core::DiscoveryService::Answer Core::DiscoveryService::handle(std::string const& aMessage) {
  HierarchicalDB& message = mMessage;
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
  if (mSettings->mLocalInterfaceAddress.empty()) {
    return {};
  }
  std::string const type = read(aMessage, "/Envelope/Body/Probe/Criteria/Device/Type/text()");
  if (type != "TV" && type != "ANY") {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "DiscoveryService::OnMessage: Ignoring probe for device type '%s'.",
                       type.c_str());
    return {};
  }
  std::string const replyTo = read(aMessage, "/Envelope/Header/ReplyTo/text()");
  std::optional<URL> const url = addressOfOneHost(replyTo);
  if (!url) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::OnMessage: (Probe) replyTo is not a URL '%s'.",
                       replyTo.c_str());
    return {};
  }
  return SendProbeMatch(aMessageId, *url);
}

Core::DiscoveryService::Answer Core::DiscoveryService::onResolve(Message& aMessage) {
  if (mSettings->mLocalInterfaceAddress.empty()) {
    return {};
  }
  std::string const id = read(aMessage, "/Envelope/Body/Resolve/Device/@ID");
  if (id != mSettings->mLocalTvDeviceId) {
    PCRealDebug::Print(PCRealDebug::Notable,
                       "DiscoveryService::OnMessage: Ignoring resolve for device ID '%s'.",
                       id.c_str());
    return {};
  }
  std::string const replyTo = read(aMessage, "/Envelope/Header/ReplyTo/text()");
  std::optional<URL> const url = addressOfOneHost(replyTo);
  if (!url) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::OnMessage: (Resolve) replyTo is not a URL '%s'.",
                       replyTo.c_str());
    return {};
  }
  return SendResolveMatch(read(aMessage, "/Envelope/Header/MessageID/text()"), *url);
}

void Core::DiscoveryService::onDescription(Message& aMessage, std::string const& aType) {
  if ((aType == "TV" || aType == "MOBILE") && AddDeviceToList(aMessage)) {
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
  if (AddDeviceToList(aMessage)) {
    notifyDataSubscribers(read(aMessage, "/Envelope/Body/ResolveMatch/Device/Type/text()"));
  }
}

void Core::DiscoveryService::onBye(Message& aMessage) {
  std::string const id = read(aMessage, "/Envelope/Body/Bye/Device/@ID");
  // Asked before the device goes; of one that is not there phones are told.
  std::string const type = mDevices.typeOf(id);
  noteDeparture(id, DepartedDevices::Reason::Bye);
  RemoveDeviceFromList(id);
  notifyDataSubscribers(type);
}

Core::DiscoveryService::Answer Core::DiscoveryService::onHeartBeat(Message& aMessage) {
  std::string const id = read(aMessage, "/Envelope/Body/HeartBeat/Device/@ID");
  std::int64_t const time = now();
  // Nearly always a device that is known: one look at the list, then.
  if (mDevices.stamp(id, time) || !mProbeSent || mDevices.contains(id)) {
    return {};
  }
  PCRealDebug::Print(PCRealDebug::Detail,
                     "DiscoveryService::OnMessage: (HeartBeat) deviceID '%s' unresolved.",
                     id.c_str());
  if (!RemoteDeviceList::isUsableId(id) || !mUnresolvedDevices.note(id, time)) {
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
  listenIfDeaf();
  SendHeartBeat();
  CheckRemoteDeviceStatus();
  cleanExpiredMessages();
  cleanUnresolvedDevices();
}

// What goes out

void Core::DiscoveryService::send(OutgoingMessage const& aMessage) {
  mNetworkAdapter->send(aMessage.mUrl, aMessage.mText, aMessage.mLocalInterface, copies);
}

// A datagram is sent at once. Over TCP a host that is not there costs seconds.
void Core::DiscoveryService::sendAnswer(OutgoingMessage aAnswer) {
  if (aAnswer.mUrl.getProtocol() == "tcp") {
    mAnswerSender.offer(std::move(aAnswer));
  } else {
    send(aAnswer);
  }
}

OutgoingMessage Core::DiscoveryService::toGroup(DiscoverySettings const& aSettings,
                                                std::string const& aText) {
  return {aSettings.mMulticastSendUrl, aText, aSettings.mLocalInterfaceAddress};
}

// Anew for each message: the name may be changed while the set runs.
std::string Core::DiscoveryService::localName() {
  return readSetting("/Zelv/Devices/LocalTV/Name/text()");
}

void Core::DiscoveryService::SendProbe() {
  Settings const settings = this->settings();
  if (settings->mLocalInterfaceAddress.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::SendProbe: Local network interface address not known.");
    return;
  }
  send(toGroup(*settings, DiscoveryMessages(*settings).probe()));
}

Core::DiscoveryService::Answer Core::DiscoveryService::SendResolve(std::string const& aDeviceId) {
  Settings const settings = this->settings();
  if (settings->mLocalInterfaceAddress.empty()) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::SendResolve: Local network interface address not known.");
    return {};
  }
  return toGroup(*settings, DiscoveryMessages(*settings).resolve(aDeviceId));
}

Core::DiscoveryService::Answer Core::DiscoveryService::SendProbeMatch(std::string const& aMessageId,
                                                                      URL const& aReplyUrl) {
  Settings const settings = this->settings();
  return OutgoingMessage{aReplyUrl,
                         DiscoveryMessages(*settings).probeMatch(localName(), aMessageId), ""};
}

Core::DiscoveryService::Answer Core::DiscoveryService::SendResolveMatch(
    std::string const& aMessageId, URL const& aReplyUrl) {
  Settings const settings = this->settings();
  return OutgoingMessage{aReplyUrl,
                         DiscoveryMessages(*settings).resolveMatch(localName(), aMessageId), ""};
}

void Core::DiscoveryService::SendHello() {
  Settings const settings = this->settings();
  send(toGroup(*settings, DiscoveryMessages(*settings).hello(localName())));
}

void Core::DiscoveryService::SendBye() {
  Settings const settings = this->settings();
  send(toGroup(*settings, DiscoveryMessages(*settings).bye()));
}

void Core::DiscoveryService::SendHeartBeat() {
  Settings const settings = this->settings();
  send(toGroup(*settings, DiscoveryMessages(*settings).heartBeat()));
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

bool Core::DiscoveryService::AddDeviceToList(Message& aMessage) {
  return mDevices.add(aMessage, now());
}

void Core::DiscoveryService::RemoveDeviceFromList(std::string aDeviceId) {
  mDevices.remove(aDeviceId);
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DiscoveryService::RemoveDeviceFromList: Removed device with ID='%s'",
                     aDeviceId.c_str());
}

void Core::DiscoveryService::noteDeparture(std::string const& aDeviceId,
                                           DepartedDevices::Reason aReason) {
  if (std::optional<RemoteDevice> const device = mDevices.find(aDeviceId)) {
    mDeparted.note({device->type, device->id, device->name, aReason, PCTime::MonotonicMs()});
  }
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
  auto const cutOff =
      static_cast<std::int64_t>(static_cast<double>(now()) + mHeartBeatInterval * -1.2);
  std::string const silent = mDevices.silentSince(cutOff);
  for (std::string const& id : MultiString::split(silent)) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "DiscoveryService::CheckRemoteDeviceStatus: Device '%s' not sending "
                       "heartbeat, assuming it's dead.",
                       id.c_str());
    noteDeparture(id, DepartedDevices::Reason::Silence);
    RemoveDeviceFromList(id);
  }
  if (!silent.empty() && mCoreData) {
    notifyList("RemoteTV");
    notifyList("Mobile");
  }
}

// Upkeep

bool Core::DiscoveryService::checkDuplicateMessage(std::string aMessageId) {
  if (!mReceivedMessages.check(aMessageId, now())) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "DiscoveryService::checkDuplicateMessage: Message '%s' is duplicate.",
                     aMessageId.c_str());
  return true;
}

void Core::DiscoveryService::cleanExpiredMessages() {
  TCAutoLock lock(mLock);
  std::int64_t const limit = now() - 3LL * mHeartBeatInterval;
  mReceivedMessages.forgetBefore(limit, [&](std::string const& aId, std::int64_t aTime) {
    PCRealDebug::Print(
        PCRealDebug::Notable,
        "DiscoveryService::cleanExpiredMessages: Discarding msg '%s', received: %d, now: %d.",
        aId.c_str(), static_cast<int>(aTime), static_cast<int>(limit));
  });
}

void Core::DiscoveryService::cleanUnresolvedDevices() {
  TCAutoLock lock(mLock);
  std::int64_t const time = now();
  mUnresolvedDevices.forgetBefore(
      time - UnresolvedDevices::Patience, [&](std::string const& aId, std::int64_t aTime) {
        PCRealDebug::Print(PCRealDebug::Notable,
                           "DiscoveryService::cleanUnresolvedDevices: Discard device '%s', resolve "
                           "sent at '%d', now '%d'",
                           aId.c_str(), static_cast<int>(aTime), static_cast<int>(time));
      });
}

/// The time for stamps and for what they are compared with. All stamps there are have moved with
/// the wall clock when this returns, so that no stamp made after a jump moves with those before it.
std::int64_t Core::DiscoveryService::now() {
  TCAutoLock lock(mLock);
  followClock();
  return PCTime::EpochTime();
}

void Core::DiscoveryService::followClock() {
  std::int64_t const jump = mClock.takeJump();
  if (jump == 0) {
    return;
  }
  mDevices.shiftStamps(jump);
  mReceivedMessages.shift(jump);
  mUnresolvedDevices.shift(jump);
}

}  // namespace Zelv
