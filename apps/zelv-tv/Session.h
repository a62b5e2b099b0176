#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "apps/zelv-tv/Arguments.h"
#include "apps/zelv-tv/DeviceFinder.h"
#include "apps/zelv-tv/DeviceWatch.h"
#include "apps/zelv-tv/OpenQuestions.h"
#include "apps/zelv-tv/SentCommands.h"
#include "apps/zelv-tv/TreeListener.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// Carries out the commands from standard input.
class Session {
 public:
  /// What the commands work on; all of it outlives the session.
  struct Parts {
    Zelv::IAppData& tree;
    Zelv::IAppTimer& timers;
    TreeListener& listener;
    OpenQuestions& questions;
    DeviceWatch const& devices;
    DeviceFinder const& finder;
    SentCommands& commands;
  };

  explicit Session(Parts const& aParts) : mParts(aParts) {}

  /// Carries out one line and gives the lines to print for it at once; answers of the tree come
  /// later, as events.
  std::vector<std::string> Execute(std::string_view aLine);

  /// True once "quit" was given.
  bool HasEnded() const { return mEnded; }

 private:
  using Lines = std::vector<std::string>;

  struct Command {
    char const* name;
    char const* arguments;
    char const* purpose;
    Lines (Session::*run)(Arguments& aArguments);
  };

  static std::vector<Command> const& commands();

  Lines get(Arguments& aArguments);
  Lines set(Arguments& aArguments);
  Lines add(Arguments& aArguments);
  Lines subscribe(Arguments& aArguments);
  Lines unsubscribe(Arguments& aArguments);
  Lines devices(Arguments& aArguments);
  Lines command(Arguments& aArguments);
  Lines timer(Arguments& aArguments);
  Lines explain(Arguments& aArguments);
  Lines stats(Arguments& aArguments);
  Lines help(Arguments& aArguments);
  Lines quit(Arguments& aArguments);

  Parts const mParts;
  /// The tree is silent about an identifier that it does not know; so typing errors are found here.
  std::map<std::string, Zelv::GUID> mSubscriptions;
  bool mEnded = false;
};

}  // namespace ZelvTv
