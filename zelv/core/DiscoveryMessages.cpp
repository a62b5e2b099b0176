#include "zelv/core/DiscoveryMessages.h"

#include "zelv/infrastructure/GUID.h"

namespace Zelv {

using Infrastructure::GUID;

std::string DiscoveryMessages::envelope(std::string const& aHeaderRest,
                                        std::string const& aBody) const {
  return "<Envelope><Header><SenderID>" + mSettings.mLocalTvDeviceId + "</SenderID><MessageID>" +
         GUID::createGUID().toString() + "</MessageID>" + aHeaderRest + "</Header><Body>" + aBody +
         "</Body></Envelope>";
}

// A bare address: readers of "From" have never been given more.
std::string DiscoveryMessages::from() const {
  return "<From>" + mSettings.mLocalInterfaceAddress + "</From>";
}

// Without a final slash; the answer comes to the port that hears the group, unicast.
std::string DiscoveryMessages::replyTo() const {
  return "<ReplyTo>udp://" + mSettings.mLocalInterfaceAddress + ":" + mSettings.mMulticastPort +
         "</ReplyTo>";
}

std::string DiscoveryMessages::probe() const {
  return envelope(replyTo(),
                  "<Probe><Criteria><Device><Type>ANY</Type></Device></Criteria></Probe>");
}

std::string DiscoveryMessages::resolve(std::string const& aDeviceId) const {
  return envelope(replyTo(), "<Resolve><Device ID='" + aDeviceId + "'/></Resolve>");
}

std::string DiscoveryMessages::bye() const {
  return envelope(from(), "<Bye><Device ID='" + mSettings.mLocalTvDeviceId + "' /></Bye>");
}

std::string DiscoveryMessages::heartBeat() const {
  return envelope(from(),
                  "<HeartBeat><Device ID='" + mSettings.mLocalTvDeviceId + "' /></HeartBeat>");
}

std::string DiscoveryMessages::hello(std::string const& aName) const {
  return envelope(from(), "<Hello>" + device(aName) + "</Hello>");
}

std::string DiscoveryMessages::probeMatch(std::string const& aName,
                                          std::string const& aRelatesTo) const {
  return envelope(from() + "<RelatesTo>" + aRelatesTo + "</RelatesTo>",
                  "<ProbeMatch>" + device(aName) + "</ProbeMatch>");
}

std::string DiscoveryMessages::resolveMatch(std::string const& aName,
                                            std::string const& aRelatesTo) const {
  return envelope(from() + "<RelatesTo>" + aRelatesTo + "</RelatesTo>",
                  "<ResolveMatch>" + device(aName) + "</ResolveMatch>");
}

std::string DiscoveryMessages::device(std::string const& aName) const {
  // The ports are what this system listens on; they follow no setting. TVControl is announced
  // although nobody listens there: phones look for the entry.
  return "<Device ID='" + mSettings.mLocalTvDeviceId + "'><Name>" + aName + "</Name><Model>" +
         mSettings.mLocalTvModel + "</Model><Location>" + mSettings.mLocalTvLocation +
         "</Location><Type>TV</Type><Services>" + service("DataControl", "tcp", "4446") +
         service("TVControl", "tcp", "4447") + service("CommandControl", "tcp", "4448") +
         service("InputControl", "udp", "4449") + service("AssetManagement", "http", "4450") +
         "</Services></Device>";
}

std::string DiscoveryMessages::service(char const* aName, char const* aProtocol,
                                       char const* aPort) const {
  return std::string("<Service><Name>") + aName + "</Name><URL>" + aProtocol + "://" +
         mSettings.mLocalInterfaceAddress + ":" + aPort + "/</URL></Service>";
}

}  // namespace Zelv
