#pragma once

#include <string>

#include "zelv/infrastructure/GUID.h"

namespace Zelv::Testing {

/// What other devices of a home write.
struct DiscoveryTexts {
  static std::string envelope(std::string const& aHeader, std::string const& aBody) {
    return "<Envelope><Header>" + aHeader + "</Header><Body>" + aBody + "</Body></Envelope>\n";
  }

  static std::string messageId(std::string const& aId) {
    return "<MessageID>" + aId + "</MessageID>";
  }

  /// With a MessageID that no other message has.
  static std::string message(std::string const& aBody, std::string const& aHeaderRest = "") {
    return envelope("<SenderID>peer</SenderID>" +
                        messageId(Infrastructure::GUID::createGUID().toString()) + aHeaderRest,
                    aBody);
  }

  static std::string services(std::string const& aHost) {
    return "<Services><Service><Name>DataControl</Name><URL>tcp://" + aHost +
           ":4446/</URL></Service><Service><Name>CommandControl</Name><URL>tcp://" + aHost +
           ":4448/</URL></Service></Services>";
  }

  static std::string description(std::string const& aType, std::string const& aId,
                                 std::string const& aName = "Name") {
    return "<Device ID='" + aId + "'><Name>" + aName +
           "</Name><Model>Model</Model><Location>Hall</Location><Type>" + aType + "</Type>" +
           services("192.0.2.9") + "</Device>";
  }

  static std::string hello(std::string const& aType, std::string const& aId,
                           std::string const& aName = "Name") {
    return message("<Hello>" + description(aType, aId, aName) + "</Hello>");
  }
  static std::string probeMatch(std::string const& aType, std::string const& aId,
                                std::string const& aName = "Name") {
    return message("<ProbeMatch>" + description(aType, aId, aName) + "</ProbeMatch>");
  }
  static std::string resolveMatch(std::string const& aType, std::string const& aId,
                                  std::string const& aName = "Name") {
    return message("<ResolveMatch>" + description(aType, aId, aName) + "</ResolveMatch>");
  }
  static std::string heartBeat(std::string const& aId) {
    return message("<HeartBeat><Device ID='" + aId + "' /></HeartBeat>");
  }
  static std::string bye(std::string const& aId) {
    return message("<Bye><Device ID='" + aId + "' /></Bye>");
  }
  static std::string probe(std::string const& aType, std::string const& aReplyTo) {
    return message(
        "<Probe><Criteria><Device><Type>" + aType + "</Type></Device></Criteria></Probe>",
        "<ReplyTo>" + aReplyTo + "</ReplyTo>");
  }
  static std::string resolve(std::string const& aId, std::string const& aReplyTo) {
    return message("<Resolve><Device ID='" + aId + "'/></Resolve>",
                   "<ReplyTo>" + aReplyTo + "</ReplyTo>");
  }

  /// What stands between two texts, for messages that hold random identifiers.
  static std::string between(std::string const& aText, std::string const& aBegin,
                             std::string const& aEnd) {
    auto const begin = aText.find(aBegin);
    auto const from = begin + aBegin.size();
    auto const end = begin == std::string::npos ? begin : aText.find(aEnd, from);
    return end == std::string::npos ? "" : aText.substr(from, end - from);
  }

  /// The name of the first element of the body.
  static std::string typeOf(std::string const& aMessage) {
    return between(aMessage, "<Body><", ">");
  }
};

}  // namespace Zelv::Testing
