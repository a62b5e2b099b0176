// A datagram on the port of input, as anybody can send it. Whatever comes in is one event for one
// subscriber: of the type that stands in it, or of the empty one. Afterwards a good event is
// delivered as ever.
//
// The input is the datagram.

#include <memory>
#include <string>
#include <vector>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/controller/UserController.h"
#include "zelv/controller/UserInput.h"
#include "zelv/controller/UserInputSubscriptionManager.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/interfaces/ICoreUserCallback.h"
#include "zelv/platform/PCRealDebug.h"

using Zelv::GUID;
using Zelv::Controller::UserController;
using Zelv::Controller::UserInput;
using Zelv::Controller::UserInputSubscriptionManager;
using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::HierarchicalDB;

namespace {

class Subscriber : public virtual Zelv::ICoreUserCallback {
 public:
  void onUserInput(std::string const& aType, std::string const& aValue, std::string const& aDevice,
                   std::string const& aUser, GUID const&) override {
    heard.push_back(aType + "|" + aValue + "|" + aDevice + "|" + aUser);
  }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

  std::vector<std::string> heard;
};

/// What the message holds, read step by step.
std::string expected(std::string const& aMessage) {
  std::string text = aMessage.substr(0, aMessage.find('\0'));
  auto const begin = text.find("<Body>");
  auto const end = text.find("</Body>");
  if (begin != std::string::npos && end != std::string::npos && begin + 6 <= end) {
    text = text.substr(begin + 6, end - begin - 6);
  }
  HierarchicalDB document;
  document.loadFromString(text);
  std::string type;
  std::string value;
  std::string device;
  std::string user;
  document.getContent("/OnInput/Type/text()", type);
  document.getContent("/OnInput/Value/node()", value);
  document.getContent("/OnInput/DeviceGuid/text()", device);
  int const result = document.getContent("/OnInput/UserNickname/text()", user);
  return result == 0 ? type + "|" + value + "|" + device + "|" + user : "|||";
}

/// One message all the way, on this thread.
std::string deliver(UserController& aController, std::string const& aMessage) {
  aController.onMessage(aMessage, aMessage);
  expect("every message is one event", aController.getQueueSize() == 1);
  std::unique_ptr<UserInput> const input(aController.dequeueUserInput());
  Subscriber subscriber;
  UserInputSubscriptionManager subscriptions;
  subscriptions.addSubscription(input->getType(), &subscriber, "");
  subscriptions.addSubscription(input->getType() + "x", &subscriber, "");
  subscriptions.notifySubscribers(input->getType(), input->getValue(), input->getDevice(),
                                  input->getUser());
  expect("every event is told once", subscriber.heard.size() == 1);
  return subscriber.heard.front();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  PCRealDebug::Silence();
  UserController controller([](GUID) -> Zelv::IBase* { return nullptr; });
  std::string const message(reinterpret_cast<char const*>(aData), aSize);
  expectEqual("a message", deliver(controller, message), expected(message));
  expectEqual("a good one afterwards",
              deliver(controller,
                      "<OnInput><Type>Key</Type><Value><A/></Value><DeviceGuid>d</DeviceGuid>"
                      "<UserNickname>u</UserNickname></OnInput>\n"),
              "Key|<A/>|d|u");
  return 0;
}
