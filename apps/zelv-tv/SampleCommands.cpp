#include "apps/zelv-tv/SampleCommands.h"

#include <array>
#include <utility>

#include "apps/zelv-tv/ValueText.h"
#include "zelv/infrastructure/HierarchicalDB.h"

namespace ZelvTv {

using Zelv::CommandArgs;
using Zelv::Infrastructure::HierarchicalDB;

namespace {

std::string messageOf(std::string const& aCommand) {
  HierarchicalDB document;
  document.loadFromString(aCommand);
  std::string text;
  return document.getContent("/ShowMessage/text()", text) == 0 ? text : "";
}

SampleCommand::Sender senderOf(ReturnSender& aReturns) {
  return [&aReturns](std::string const& aValue, CommandArgs const& aArgs) {
    aReturns.Send(aValue, aArgs);
  };
}

}  // namespace

SampleCommands::SampleCommands(EventQueue& aEvents, Zelv::IAppCommand& aCommands,
                               ReturnSender::Way aWay)
    : mCommands(aCommands),
      mReturns(std::move(aWay)),
      mEcho(aEvents, senderOf(mReturns),
            [](std::string const& aCommand, CommandArgs const&) { return aCommand; }),
      mShowMessage(aEvents, senderOf(mReturns),
                   [&aEvents](std::string const& aCommand, CommandArgs const& aArgs) {
                     aEvents.Post("message " + ValueText::ToField(aArgs.senderId) + " " +
                                  ValueText::ToLine(messageOf(aCommand)));
                     return "shown";
                   }),
      mTime(aEvents, senderOf(mReturns),
            [](std::string const&, CommandArgs const&) { return TextOf(std::time(nullptr)); }) {
  take("Echo", mEcho);
  take("ShowMessage", mShowMessage);
  take("Time", mTime);
  // The name of an element without content ends in its slash.
  take("Time/", mTime);
}

SampleCommands::~SampleCommands() {
  for (Zelv::GUID const& handle : mHandles) {
    mCommands.unregisterCommandHandler(handle);
  }
}

void SampleCommands::take(char const* aName, SampleCommand& aCommand) {
  mHandles.push_back(mCommands.registerCommandHandler(aName, &aCommand));
}

std::string SampleCommands::TextOf(std::time_t aTime) {
  std::tm parts{};
  ::gmtime_r(&aTime, &parts);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

}  // namespace ZelvTv
