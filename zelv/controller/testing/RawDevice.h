#pragma once

#include <cctype>
#include <cstdint>
#include <string>

#include "zelv/adapter/testing/Peer.h"

namespace Zelv::Controller::Testing {

/// Another device as the network sees it: it speaks through bare sockets and writes and reads its
/// messages letter by letter. Every wait is bounded.
class RawDevice {
 public:
  RawDevice() : mPort(Peer::freePort(Peer::Stream)), mListener(Peer::Stream) {
    if (!mListener.listen(mPort)) {
      throw std::runtime_error("no listener");
    }
  }

  std::string url() const { return "tcp://127.0.0.1:" + std::to_string(mPort) + "/"; }

  /// The next message that somebody sends, without the line feed behind it; acknowledged. Empty if
  /// nobody does.
  std::string take() {
    Peer sender = mListener.accept();
    std::string text;
    while (!text.ends_with('\n')) {
      std::string const piece = sender.receive();
      if (piece.empty()) {
        return "";
      }
      text += piece;
    }
    sender.send("\n");
    text.pop_back();
    return text;
  }

  /// Sends a message to a service of this machine. @return what came back.
  static std::string tell(std::uint16_t aPort, std::string const& aMessage) {
    Peer sender = Peer::connectedTo(aPort);
    sender.send(aMessage + "\n");
    return sender.receive();
  }

  static std::string envelope(std::string const& aHeader, std::string const& aBody) {
    return "<Envelope><Header>" + aHeader + "</Header><Body>" + aBody + "</Body></Envelope>";
  }

  /// The five messages, as this device sends them.

  std::string requestData(std::string const& aId, std::string const& aXPath) const {
    return envelope(header(true), "<RequestData><TransactionId>" + aId + "</TransactionId><XPath>" +
                                      aXPath + "</XPath></RequestData>");
  }

  std::string subscribeData(std::string const& aId, std::string const& aXPath) const {
    return envelope(header(true), "<SubscribeData><SubscriptionId>" + aId +
                                      "</SubscriptionId><XPath>" + aXPath +
                                      "</XPath></SubscribeData>");
  }

  std::string unsubscribeData(std::string const& aId) const {
    return envelope(header(false), "<UnsubscribeData><SubscriptionId>" + aId +
                                       "</SubscriptionId></UnsubscribeData>");
  }

  std::string onData(std::string const& aId, std::string const& aValue) const {
    return envelope(header(false), "<OnData><SubscriptionId>" + aId + "</SubscriptionId><Data>" +
                                       aValue + "</Data></OnData>");
  }

  static std::string setData(std::string const& aXPath, std::string const& aValue) {
    return envelope("<SenderID>phone</SenderID>",
                    "<SetData><XPath>" + aXPath + "</XPath><Data>" + aValue + "</Data></SetData>");
  }

  /// The text with "#" for the identifier of the message, if one stands there: 36 characters,
  /// hexadecimal digits in lower case and dashes.
  static std::string withoutMessageId(std::string const& aMessage) {
    std::string const tag = "<MessageID>";
    auto const at = aMessage.find(tag);
    if (at == std::string::npos) {
      return aMessage;
    }
    std::string const id = aMessage.substr(at + tag.size(), 36);
    for (std::size_t index = 0; index < id.size(); ++index) {
      bool const dash = index == 8 || index == 13 || index == 18 || index == 23;
      bool const digit = std::isdigit(static_cast<unsigned char>(id[index])) != 0 ||
                         (id[index] >= 'a' && id[index] <= 'f');
      if (dash ? id[index] != '-' : !digit) {
        return aMessage;
      }
    }
    std::string text = aMessage;
    return text.replace(at + tag.size(), id.size(), "#");
  }

 private:
  using Peer = Zelv::Testing::Peer;

  std::string header(bool aToBeNotified) const {
    return "<SenderID>" + id + "</SenderID><MessageID>7f0a6c1e-0000-4000-8000-000000000001" +
           "</MessageID><From>" + url() + "</From>" +
           (aToBeNotified ? "<NotifyTo>" + notifyTo + "</NotifyTo>" : "");
  }

  std::uint16_t mPort;
  Peer mListener;

 public:
  // Behind the port, which they are made of.

  /// How this device calls itself.
  std::string id = "phone";
  /// Where it wants its answers; its own address unless set.
  std::string notifyTo = url();
};

}  // namespace Zelv::Controller::Testing
