#include "apps/zelvctl/ServeVerb.h"

#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "apps/zelvctl/Delivery.h"

namespace ZelvCtl {

namespace {

/// Where sets take commands, and so do phones as long as nobody else on the machine does.
constexpr std::uint16_t usualPort = 4448;

}  // namespace

ServeVerb::ServeVerb(Options const& aOptions, int aStopDescriptor, std::ostream& aOut)
    : mAnswers(Delivery::send),
      mErrand(aOptions, aStopDescriptor),
      mMessages(mErrand.identity().id),
      mPrinter(aOut, aOptions.json) {}

std::string ServeVerb::open() {
  auto const receiver = [this](std::string const& aMessage) { receive(aMessage); };
  try {
    return mErrand.openMailbox(usualPort, receiver);
  } catch (std::system_error const& error) {
    if (error.code().value() != EADDRINUSE) {
      throw;
    }
    return mErrand.openMailbox(0, receiver);
  }
}

void ServeVerb::run() {
  std::string const url = open();
  mErrand.offerCommands(url);
  mErrand.join();
  mPrinter.ready(mErrand.identity().id, url);
  Loop::End const end = mErrand.loop().run(Loop::Forever, [this] { return mPrinter.isBroken(); });
  if (end != Loop::Stopped) {
    throw std::runtime_error("cannot write to standard output");
  }
}

// Drops what sets drop too: what has no identifier or no body, and what has come before. Answers to
// others' commands are none of this phone's business, which sends none.
void ServeVerb::receive(std::string const& aMessage) {
  ReceivedMessage message(aMessage);
  std::string const id = message.messageId();
  std::string const command = message.body();
  if (id.empty() || command.empty() || message.isAnswer() || mSeen.check(id)) {
    return;
  }
  mPrinter.command(message.senderId(), id, command);
  answer(message, command);
}

void ServeVerb::answer(ReceivedMessage& aMessage, std::string const& aCommand) {
  std::string const& text = mErrand.options().answer.value_or(aCommand);
  auto const address = aMessage.replyTo();
  if (address && !text.empty() &&
      !mAnswers.send(*address, mMessages.answer(aMessage.messageId(), text))) {
    std::cerr << "zelvctl: too many answers are waiting; one is left out\n";
  }
}

}  // namespace ZelvCtl
