#include "apps/zelvctl/CommandVerb.h"

#include <stdexcept>

#include "apps/zelvctl/CommandMessages.h"
#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/ReceivedMessage.h"

namespace ZelvCtl {

CommandVerb::CommandVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut)
    : mId(Identifier::create()),
      mErrand(aOptions, aStopDescriptor),
      mPrinter(aOut, aOptions.json) {}

void CommandVerb::receive(std::string const& aMessage) {
  ReceivedMessage message(aMessage);
  if (mAnswers < mErrand.options().returns && message.relatesTo() == mId &&
      !mSeen.check(message.messageId())) {
    mPrinter.answer(message.senderId(), message.body());
    ++mAnswers;
  }
}

void CommandVerb::run() {
  Options const& options = mErrand.options();
  std::string const url =
      mErrand.openMailbox(0, [this](std::string const& aMessage) { receive(aMessage); });
  Target const target = mErrand.find(Service::commands());
  mErrand.deliver(target,
                  CommandMessages(mErrand.identity().id).command(mId, url, options.command));
  if (!options.noWait && !mErrand.await([&] { return mAnswers >= options.returns; })) {
    throw std::runtime_error(
        "'" + target.name + "' has taken the command and returned " +
        (mAnswers == 0 ? "nothing " : "only " + std::to_string(mAnswers) + " answers ") +
        mErrand.timeAsText());
  }
  if (mPrinter.isBroken()) {
    throw std::runtime_error("cannot write to standard output");
  }
}

}  // namespace ZelvCtl
