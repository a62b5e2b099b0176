#include "apps/zelvctl/InputVerb.h"

#include <stdexcept>

#include "apps/zelvctl/InputMessage.h"
#include "zelv/adapter/NetworkConnection.h"

namespace ZelvCtl {

using Zelv::Adapter::NetworkConnection;

namespace {

/// Once, although nobody confirms it: receivers take each copy for another event.
void send(Target const& aTarget, std::string const& aText) {
  if (aText.size() > InputMessage::MaxSize) {
    throw std::runtime_error("an event has at most " + std::to_string(InputMessage::MaxSize) +
                             " bytes; this one would have " + std::to_string(aText.size()));
  }
  NetworkConnection connection("udp", aTarget.url.getDomainName(), "", aTarget.url.getPort(),
                               nullptr, Zelv::Adapter::OutgoingConnection);
  if (!connection.createUDPConnection() || !connection.sendMessage(aText, 1)) {
    throw std::runtime_error("cannot send to " + aTarget.url.toString());
  }
}

}  // namespace

InputVerb::InputVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut)
    : mErrand(aOptions, aStopDescriptor), mPrinter(aOut, aOptions.json) {}

void InputVerb::run() {
  Options const& options = mErrand.options();
  Identity const& identity = mErrand.identity();
  Target const target = mErrand.find(Service::input());
  for (std::string const& value : options.values) {
    send(target, InputMessage{options.inputType, value, identity.id, identity.name}.text());
  }
  mPrinter.sent(options.values.size());
  if (mPrinter.isBroken()) {
    throw std::runtime_error("cannot write to standard output");
  }
}

}  // namespace ZelvCtl
