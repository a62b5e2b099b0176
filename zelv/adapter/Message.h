#pragma once

#include <cstdint>
#include <string>

#include "zelv/platform/Export.h"

namespace Zelv::Adapter {

/// A received message in pieces, for applications. The library itself reads messages in place.
class ZELV_EXPORT Message {
 public:
  /// Reads "<Envelope>..." text. The caller owns the result. A text that does not parse gives a
  /// message of empty texts. The header is the first header element alone; sender address and port
  /// stay unset.
  static Message* deserialize(std::string const& aXMLString);

  std::string getBody() const { return mBody; }
  std::string getHeader() const { return mHeader; }
  std::string getType() const { return mType; }

  void setBody(std::string const& aBody) { mBody = aBody; }
  void setHeader(std::string const& aHeader) { mHeader = aHeader; }
  void setType(std::string const& aType) { mType = aType; }
  void setSenderAddress(std::string const& aAddress) { mSenderAddress = aAddress; }
  void setSenderPort(std::uint16_t aPort) { mSenderPort = aPort; }

  /// Always empty: messages are written by concatenation where they are sent, and callers rely on
  /// nothing coming out here.
  std::string serialize() const { return std::string(); }

 private:
  std::string mBody;
  std::string mHeader;
  std::string mType;
  std::string mSenderAddress;
  std::uint16_t mSenderPort = 0;
};

}  // namespace Zelv::Adapter
