#include "apps/zelv-tv/SampleCommands.h"

#include <array>

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

}  // namespace

SampleCommands::SampleCommands(EventQueue& aEvents, SampleCommand::Sender const& aSender)
    : mEcho(
          aEvents, [](std::string const& aCommand, CommandArgs const&) { return aCommand; },
          aSender),
      mShowMessage(
          aEvents,
          [&aEvents](std::string const& aCommand, CommandArgs const& aArgs) {
            aEvents.Post("message " + ValueText::ToField(aArgs.senderId) + " " +
                         ValueText::ToLine(messageOf(aCommand)));
            return "shown";
          },
          aSender),
      mTime(
          aEvents,
          [](std::string const&, CommandArgs const&) { return TextOf(std::time(nullptr)); },
          aSender) {}

void SampleCommands::Register(Zelv::IAppCommand& aCommands) {
  aCommands.registerCommandHandler("Echo", &mEcho);
  aCommands.registerCommandHandler("ShowMessage", &mShowMessage);
  aCommands.registerCommandHandler("Time", &mTime);
  // The name of an element without content ends in its slash.
  aCommands.registerCommandHandler("Time/", &mTime);
}

std::string SampleCommands::TextOf(std::time_t aTime) {
  std::tm parts{};
  ::gmtime_r(&aTime, &parts);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

}  // namespace ZelvTv
