#include "zelv/controller/RemoteDataMessages.h"

#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv::Controller {

namespace {

std::string escaped(std::string const& aText) {
  std::string result;
  Infrastructure::XMLSerializer::escapeXMLEntities(aText, result);
  return result;
}

}  // namespace

void RemoteDataMessages::setLocalDeviceId(std::string const& aDeviceId) {
  TCAutoLock lock(mLock);
  mLocalDeviceId = aDeviceId;
}

void RemoteDataMessages::setServiceUrl(std::string const& aUrl) {
  TCAutoLock lock(mLock);
  mServiceUrl = aUrl;
}

std::string RemoteDataMessages::requestData(GUID const& aTransactionId,
                                            std::string const& aLocalXPath) const {
  return envelope(true, "<RequestData><TransactionId>" + aTransactionId.toString() +
                            "</TransactionId><XPath>" + escaped(aLocalXPath) +
                            "</XPath></RequestData>");
}

std::string RemoteDataMessages::subscribeData(GUID const& aSubscriptionId,
                                              std::string const& aLocalXPath) const {
  return envelope(true, "<SubscribeData><SubscriptionId>" + aSubscriptionId.toString() +
                            "</SubscriptionId><XPath>" + escaped(aLocalXPath) +
                            "</XPath></SubscribeData>");
}

std::string RemoteDataMessages::unsubscribeData(GUID const& aSubscriptionId) const {
  return envelope(false, "<UnsubscribeData><SubscriptionId>" + aSubscriptionId.toString() +
                             "</SubscriptionId></UnsubscribeData>");
}

std::string RemoteDataMessages::onData(GUID const& aSubscriptionId,
                                       std::string const& aValue) const {
  return envelope(false, "<OnData><SubscriptionId>" + aSubscriptionId.toString() +
                             "</SubscriptionId><Data>" + aValue + "</Data></OnData>");
}

std::string RemoteDataMessages::envelope(bool aToBeNotified, std::string const& aBody) const {
  std::string const messageId = GUID::createGUID().toString();
  TCAutoLock lock(mLock);
  return "<Envelope><Header><SenderID>" + mLocalDeviceId + "</SenderID><MessageID>" + messageId +
         "</MessageID><From>" + mServiceUrl + "</From>" +
         (aToBeNotified ? "<NotifyTo>" + mServiceUrl + "</NotifyTo>" : "") + "</Header><Body>" +
         aBody + "</Body></Envelope>";
}

}  // namespace Zelv::Controller
