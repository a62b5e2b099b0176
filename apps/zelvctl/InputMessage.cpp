#include "apps/zelvctl/InputMessage.h"

#include "zelv/infrastructure/XMLSerializer.h"

namespace ZelvCtl {

namespace {

std::string escaped(std::string const& aText) {
  std::string text;
  Zelv::Infrastructure::XMLSerializer::escapeXMLEntities(aText, text);
  return text;
}

}  // namespace

std::string InputMessage::text() const {
  return "<OnInput><Type>" + escaped(type) + "</Type><Value>" + value + "</Value><DeviceGuid>" +
         deviceId + "</DeviceGuid><UserNickname>" + escaped(user) + "</UserNickname></OnInput>";
}

}  // namespace ZelvCtl
