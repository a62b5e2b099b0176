#include "zelv/adapter/Message.h"

#include "zelv/infrastructure/HierarchicalDB.h"

namespace Zelv::Adapter {

Message* Message::deserialize(std::string const& aXMLString) {
  Message* const message = new Message;
  Infrastructure::HierarchicalDB document;
  if (document.loadFromString(aXMLString) == 0) {
    document.getContent("/Envelope/Body/*[1]/name()", message->mType);
    document.getContent("/Envelope/Header/*[1]", message->mHeader);
    document.getContent("/Envelope/Body/*[1]", message->mBody);
  }
  return message;
}

}  // namespace Zelv::Adapter
