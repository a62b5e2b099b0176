#include "apps/zelvctl/ReceivedMessage.h"

#include <string_view>

#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/PeerUrl.h"

namespace ZelvCtl {

using Zelv::Infrastructure::URL;

namespace {

constexpr std::string_view bodyBegin = "<Body>";
constexpr std::string_view bodyEnd = "</Body>";

std::string identifier(std::string const& aText) {
  return Identifier::usualForm(aText).value_or("");
}

}  // namespace

ReceivedMessage::ReceivedMessage(std::string const& aText) : mText(aText) {
  mDocument.loadFromString(aText);
}

std::string ReceivedMessage::read(std::string const& aXPath) {
  std::string value;
  mDocument.getContent(aXPath, value);
  return value;
}

std::string ReceivedMessage::type() {
  return read("/Envelope/Body/*[1]/name()");
}

std::string ReceivedMessage::senderId() {
  return read("/Envelope/Header/SenderID/text()");
}

std::string ReceivedMessage::messageId() {
  return identifier(read("/Envelope/Header/MessageID/text()"));
}

std::string ReceivedMessage::relatesTo() {
  return identifier(read("/Envelope/Header/RelatesTo/text()"));
}

bool ReceivedMessage::isAnswer() {
  return !read("/Envelope/Header/RelatesTo/text()").empty();
}

std::optional<URL> ReceivedMessage::replyTo() {
  return PeerUrl::read(read("/Envelope/Header/ReplyTo/text()"), "tcp");
}

std::string ReceivedMessage::subscriptionId() {
  return identifier(read("/Envelope/Body/OnData/SubscriptionId/text()"));
}

std::string ReceivedMessage::data() {
  return read("/Envelope/Body/OnData/Data/node()");
}

std::string ReceivedMessage::body() const {
  auto const begin = mText.find(bodyBegin);
  auto const end = begin == std::string::npos ? begin : mText.find(bodyEnd, begin);
  return end == std::string::npos
             ? ""
             : mText.substr(begin + bodyBegin.size(), end - begin - bodyBegin.size());
}

}  // namespace ZelvCtl
