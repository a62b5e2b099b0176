#include "apps/zelvctl/PhoneMessages.h"

#include "zelv/infrastructure/GUID.h"
#include "zelv/infrastructure/XMLSerializer.h"

namespace ZelvCtl {

using Zelv::Infrastructure::GUID;
using Zelv::Infrastructure::XMLSerializer;

std::string PhoneMessages::envelope(std::string const& aHeaderRest,
                                    std::string const& aBody) const {
  return "<Envelope><Header><SenderID>" + mIdentity.id + "</SenderID><MessageID>" +
         GUID::createGUID().toString() + "</MessageID>" + aHeaderRest + "</Header><Body>" + aBody +
         "</Body></Envelope>";
}

std::string PhoneMessages::from() const {
  return "<From>" + mIdentity.address + "</From>";
}

std::string PhoneMessages::replyTo() const {
  return "<ReplyTo>udp://" + mIdentity.address + ":" + mIdentity.port + "</ReplyTo>";
}

// A phone without services of its own says so, rather than leave the element out: sets copy it
// whole.
std::string PhoneMessages::services() const {
  std::string const commands =
      mIdentity.commandUrl.empty()
          ? ""
          : "<Service><Name>CommandControl</Name><URL>" + mIdentity.commandUrl + "</URL></Service>";
  return "<Services>" + commands + "</Services>";
}

std::string PhoneMessages::device() const {
  std::string name;
  XMLSerializer::escapeXMLEntities(mIdentity.name, name);
  return "<Device ID='" + mIdentity.id + "'><Name>" + name +
         "</Name><Model>zelvctl</Model><Type>MOBILE</Type>" + services() + "</Device>";
}

std::string PhoneMessages::probe() const {
  return envelope(replyTo(),
                  "<Probe><Criteria><Device><Type>ANY</Type></Device></Criteria></Probe>");
}

std::string PhoneMessages::hello() const {
  return envelope(from(), "<Hello>" + device() + "</Hello>");
}

std::string PhoneMessages::heartBeat() const {
  return envelope(from(), "<HeartBeat><Device ID='" + mIdentity.id + "' /></HeartBeat>");
}

std::string PhoneMessages::bye() const {
  return envelope(from(), "<Bye><Device ID='" + mIdentity.id + "' /></Bye>");
}

std::string PhoneMessages::resolve(std::string const& aDeviceId) const {
  return envelope(replyTo(), "<Resolve><Device ID='" + aDeviceId + "'/></Resolve>");
}

std::string PhoneMessages::probeMatch(std::string const& aRelatesTo) const {
  return envelope(from() + "<RelatesTo>" + aRelatesTo + "</RelatesTo>",
                  "<ProbeMatch>" + device() + "</ProbeMatch>");
}

std::string PhoneMessages::resolveMatch(std::string const& aRelatesTo) const {
  return envelope(from() + "<RelatesTo>" + aRelatesTo + "</RelatesTo>",
                  "<ResolveMatch>" + device() + "</ResolveMatch>");
}

}  // namespace ZelvCtl
