#include "apps/zelvctl/DataMessages.h"

#include "apps/zelvctl/Identifier.h"
#include "zelv/infrastructure/XMLSerializer.h"

namespace ZelvCtl {

namespace {

std::string path(std::string const& aXPath) {
  std::string escaped;
  Zelv::Infrastructure::XMLSerializer::escapeXMLEntities(aXPath, escaped);
  return "<XPath>" + escaped + "</XPath>";
}

std::string subscription(std::string const& aId) {
  return "<SubscriptionId>" + aId + "</SubscriptionId>";
}

}  // namespace

std::string DataMessages::envelope(std::string const& aHeaderRest, std::string const& aBody) const {
  return "<Envelope><Header><SenderID>" + mSenderId + "</SenderID><MessageID>" +
         Identifier::create() + "</MessageID>" + aHeaderRest + "</Header><Body>" + aBody +
         "</Body></Envelope>";
}

std::string DataMessages::from() const {
  return "<From>" + mUrl + "</From>";
}

std::string DataMessages::request(std::string const& aId, std::string const& aXPath) const {
  return envelope(
      from() + "<NotifyTo>" + mUrl + "</NotifyTo>",
      "<RequestData><TransactionId>" + aId + "</TransactionId>" + path(aXPath) + "</RequestData>");
}

std::string DataMessages::subscribe(std::string const& aId, std::string const& aXPath) const {
  return envelope(from() + "<NotifyTo>" + mUrl + "</NotifyTo>",
                  "<SubscribeData>" + subscription(aId) + path(aXPath) + "</SubscribeData>");
}

std::string DataMessages::unsubscribe(std::string const& aId) const {
  return envelope(from(), "<UnsubscribeData>" + subscription(aId) + "</UnsubscribeData>");
}

std::string DataMessages::set(std::string const& aXPath, std::string const& aValue) const {
  return envelope("", "<SetData>" + path(aXPath) + "<Data>" + aValue + "</Data></SetData>");
}

}  // namespace ZelvCtl
