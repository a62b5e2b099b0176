#include "apps/zelvctl/CommandMessages.h"

#include "apps/zelvctl/Identifier.h"

namespace ZelvCtl {

std::string CommandMessages::envelope(std::string const& aId, std::string const& aHeaderRest,
                                      std::string const& aBody) const {
  return "<Envelope><Header><MessageID>" + aId + "</MessageID><SenderID>" + mSenderId +
         "</SenderID>" + aHeaderRest + "</Header><Body>" + aBody + "</Body></Envelope>";
}

std::string CommandMessages::command(std::string const& aId, std::string const& aReplyTo,
                                     std::string const& aCommand) const {
  return envelope(aId, "<ReplyTo>" + aReplyTo + "</ReplyTo>", aCommand);
}

std::string CommandMessages::answer(std::string const& aRelatesTo,
                                    std::string const& aValue) const {
  return envelope(Identifier::create(), "<RelatesTo>" + aRelatesTo + "</RelatesTo>", aValue);
}

}  // namespace ZelvCtl
