#include "zelv/controller/CommandEnvelope.h"

namespace Zelv::Controller {

namespace {

std::string envelope(GUID const& aMessageId, std::string const& aSenderId,
                     std::string const& aReference, std::string const& aBody) {
  return "<Envelope><Header><MessageID>" + aMessageId.toString() + "</MessageID><SenderID>" +
         aSenderId + "</SenderID>" + aReference + "</Header><Body>" + aBody + "</Body></Envelope>";
}

}  // namespace

std::string CommandEnvelope::command(GUID const& aCommandId, std::string const& aSenderId,
                                     std::string const& aReplyTo, std::string const& aCommand) {
  return envelope(aCommandId, aSenderId, "<ReplyTo>" + aReplyTo + "</ReplyTo>", aCommand);
}

std::string CommandEnvelope::reply(std::string const& aSenderId, GUID const& aRelatesTo,
                                   std::string const& aValue) {
  return envelope(GUID::createGUID(), aSenderId,
                  "<RelatesTo>" + aRelatesTo.toString() + "</RelatesTo>", aValue);
}

}  // namespace Zelv::Controller
