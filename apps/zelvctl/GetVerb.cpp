#include "apps/zelvctl/GetVerb.h"

#include <stdexcept>

#include "apps/zelvctl/DataMessages.h"
#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/ReceivedMessage.h"

namespace ZelvCtl {

GetVerb::GetVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut)
    : mId(Identifier::create()),
      mErrand(aOptions, aStopDescriptor),
      mPrinter(aOut, aOptions.json) {}

void GetVerb::receive(std::string const& aMessage) {
  ReceivedMessage message(aMessage);
  if (!mValue && message.type() == "OnData" && message.subscriptionId() == mId) {
    mValue = message.data();
  }
}

void GetVerb::run() {
  std::string const url =
      mErrand.openMailbox(0, [this](std::string const& aMessage) { receive(aMessage); });
  Target const target = mErrand.find(Service::data());
  std::string const& path = mErrand.options().path;
  mErrand.deliver(target, DataMessages(mErrand.identity().id, url).request(mId, path));
  if (!mErrand.await([this] { return mValue.has_value(); })) {
    throw std::runtime_error("'" + target.name + "' gave no value of " + path + " " +
                             mErrand.timeAsText());
  }
  mPrinter.value(path, *mValue);
  if (mPrinter.isBroken()) {
    throw std::runtime_error("cannot write to standard output");
  }
}

}  // namespace ZelvCtl
