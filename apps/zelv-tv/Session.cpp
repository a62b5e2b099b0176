#include "apps/zelv-tv/Session.h"

#include <algorithm>
#include <stdexcept>

#include "apps/zelv-tv/StatisticsPrinter.h"
#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

namespace {

std::string error(std::string const& aText) {
  return "error " + ValueText::ToLine(aText);
}

std::string queued(Zelv::GUID const& aId, std::string const& aWhat) {
  return "queued " + aId.toString() + " " + ValueText::ToLine(aWhat);
}

}  // namespace

std::vector<Session::Command> const& Session::commands() {
  static std::vector<Command> const kCommands = {
      {"get", "PATH", "read once; the answer is \"data ID PATH VALUE\" or \"failed ID\"",
       &Session::get},
      {"set", "PATH VALUE", "write; an empty value behind the blank removes an element",
       &Session::set},
      {"add", "PATH VALUE", "add a value below a path", &Session::add},
      {"sub", "PATH", "subscribe; the present value and each change come as \"data\"",
       &Session::subscribe},
      {"unsub", "ID", "end a subscription", &Session::unsubscribe},
      {"devices", "", "the other devices of the home; behind them how many there are",
       &Session::devices},
      {"command", "DEVICE XML",
       "have a mobile device, or this set (-), carry out a command: \"returned ID VALUE\"",
       &Session::command},
      {"timer", "MS NAME", "go off once, in so many milliseconds: \"fired ID NAME\"",
       &Session::timer},
      {"explain", "PATH", "which subscriptions would hear of a change of it, and why",
       &Session::explain},
      {"stats", "", "queues, the longest calls, open requests, threads and peers", &Session::stats},
      {"help", "", "this list; in values \\n is a line feed, \\\\ a backslash, \\xHH any byte",
       &Session::help},
      {"quit", "", "end, as does the end of the input", &Session::quit},
  };
  return kCommands;
}

std::vector<std::string> Session::Execute(std::string_view aLine) {
  if (aLine.find_first_not_of(' ') == std::string_view::npos) {
    return {};
  }
  Arguments arguments(aLine);
  std::string const name = arguments.Word();
  auto const command =
      std::find_if(commands().begin(), commands().end(),
                   [&name](Command const& aCommand) { return aCommand.name == name; });
  if (command == commands().end()) {
    return {error("no command '" + name + "'; help lists them")};
  }
  try {
    return (this->*command->run)(arguments);
  } catch (Arguments::Misuse const& misuse) {
    std::string const blank = *command->arguments == '\0' ? "" : " ";
    return {error(std::string(misuse.what()) + "; usage: " + command->name + blank +
                  command->arguments)};
  } catch (std::exception const& refusal) {
    // What the tree refuses while the call runs.
    return {error(refusal.what())};
  }
}

Session::Lines Session::get(Arguments& aArguments) {
  std::string const path = aArguments.Path();
  aArguments.End();
  return {queued(mParts.questions.Ask(
                     [&] { return mParts.tree.requestData(path, nullptr, &mParts.listener); }),
                 path)};
}

Session::Lines Session::set(Arguments& aArguments) {
  std::string const path = aArguments.Path();
  return {queued(mParts.tree.setData(path, aArguments.Value(), &mParts.listener, true), path)};
}

Session::Lines Session::add(Arguments& aArguments) {
  std::string const path = aArguments.Path();
  return {queued(mParts.tree.addData(path, aArguments.Value(), &mParts.listener, true), path)};
}

Session::Lines Session::subscribe(Arguments& aArguments) {
  std::string const path = aArguments.Path();
  aArguments.End();
  Zelv::GUID const id = mParts.tree.subscribeData(path, nullptr, &mParts.listener);
  mSubscriptions.emplace(id.toString(), id);
  return {"subscribed " + id.toString() + " " + ValueText::ToLine(path)};
}

Session::Lines Session::unsubscribe(Arguments& aArguments) {
  std::string const id = aArguments.Word();
  aArguments.End();
  auto const entry = mSubscriptions.find(id);
  if (entry == mSubscriptions.end()) {
    return {error("no subscription " + id)};
  }
  mParts.tree.unsubscribeData(entry->second);
  mSubscriptions.erase(entry);
  return {"unsubscribed " + id};
}

Session::Lines Session::devices(Arguments& aArguments) {
  aArguments.End();
  Lines lines = mParts.devices.List();
  std::string const count = std::to_string(lines.size());
  lines.push_back("devices " + count);
  return lines;
}

Session::Lines Session::command(Arguments& aArguments) {
  std::string const device = aArguments.Device();
  std::string const command = aArguments.Value();
  std::string const id = mParts.finder.ForCommand(device);
  return {queued(mParts.commands.Send(command, id), id)};
}

Session::Lines Session::timer(Arguments& aArguments) {
  unsigned const milliseconds = aArguments.Milliseconds();
  std::string const name = aArguments.Value();
  Zelv::GUID const id = mParts.timers.createTimer(milliseconds, 1, name, &mParts.listener);
  return {"timer " + id.toString() + " " + ValueText::ToLine(name)};
}

Session::Lines Session::explain(Arguments& aArguments) {
  std::string const path = aArguments.Path();
  aArguments.End();
  return StatisticsPrinter::Explain(Zelv::Diagnostics::explain(path), path);
}

Session::Lines Session::stats(Arguments& aArguments) {
  aArguments.End();
  return StatisticsPrinter::Statistics(Zelv::Diagnostics::statistics());
}

Session::Lines Session::help(Arguments& aArguments) {
  aArguments.End();
  Lines lines;
  for (Command const& command : commands()) {
    std::string usage = std::string("help ") + command.name + " " + command.arguments;
    usage.resize(std::max<std::size_t>(usage.size() + 1, 25), ' ');
    lines.push_back(usage + command.purpose);
  }
  return lines;
}

Session::Lines Session::quit(Arguments& aArguments) {
  aArguments.End();
  mEnded = true;
  return {};
}

}  // namespace ZelvTv
