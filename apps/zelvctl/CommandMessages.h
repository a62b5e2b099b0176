#pragma once

#include <string>

namespace ZelvCtl {

/// Writes commands and their answers. Both bodies go out as they stand, being XML.
class CommandMessages {
 public:
  explicit CommandMessages(std::string const& aSenderId) : mSenderId(aSenderId) {}

  /// @param aId       the message's own identifier, which the answer relates to.
  /// @param aReplyTo  where the answer is to be sent.
  std::string command(std::string const& aId, std::string const& aReplyTo,
                      std::string const& aCommand) const;

  /// @param aRelatesTo  identifier of the command.
  std::string answer(std::string const& aRelatesTo, std::string const& aValue) const;

 private:
  std::string envelope(std::string const& aId, std::string const& aHeaderRest,
                       std::string const& aBody) const;

  std::string const mSenderId;
};

}  // namespace ZelvCtl
