#include "apps/zelv-tv/SampleCommand.h"

#include <utility>

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

SampleCommand::SampleCommand(EventQueue& aEvents, Sender aSender, Work aWork)
    : mEvents(aEvents), mSender(std::move(aSender)), mWork(std::move(aWork)) {}

std::string SampleCommand::onCommand(std::string const& aCommand, Zelv::CommandArgs const& aArgs) {
  mEvents.Post("command " + ValueText::ToField(aArgs.senderId) + " " + aArgs.messageId.toString() +
               " " + ValueText::ToLine(aCommand));
  std::string value = mWork(aCommand, aArgs);
  bool const isLocal = aArgs.messageId == Zelv::GUID::nullGUID && aArgs.senderId.empty();
  if (isLocal) {
    return value;
  }
  // Who gives no address wants no answer.
  if (!aArgs.replyTo.empty()) {
    mSender(value, aArgs);
  }
  return "";
}

}  // namespace ZelvTv
