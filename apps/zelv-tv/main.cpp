#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

#include "apps/StopSignal.h"
#include "apps/zelv-tv/Console.h"
#include "apps/zelv-tv/DeviceFinder.h"
#include "apps/zelv-tv/DeviceWatch.h"
#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/InputListener.h"
#include "apps/zelv-tv/Library.h"
#include "apps/zelv-tv/LocalName.h"
#include "apps/zelv-tv/OpenQuestions.h"
#include "apps/zelv-tv/Options.h"
#include "apps/zelv-tv/Readiness.h"
#include "apps/zelv-tv/SampleCommands.h"
#include "apps/zelv-tv/Self.h"
#include "apps/zelv-tv/SentCommands.h"
#include "apps/zelv-tv/Session.h"
#include "apps/zelv-tv/Settling.h"
#include "apps/zelv-tv/TreeListener.h"
#include "zelv/Zelv.h"
#include "zelv/infrastructure/ZelvFileUtil.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/TCTv.h"

namespace {

using Zelv::Infrastructure::ZelvFileUtil;
using Zelv::Platform::Directories;

/// The file of the package that is built in.
char const* const kPicture = "tv.png";

/// The model that others see.
char const* const kProductCode = "zelv-tv";

void applyOptions(ZelvTv::Options const& aOptions) {
  if (aOptions.logLevel) {
    PCRealDebug::SetLevel(*aOptions.logLevel);
  } else {
    PCRealDebug::Silence();
  }
  g_AppTV.SetProductCode(kProductCode);
  Directories::Set(aOptions.factory.empty() ? Directories::ReadOnly() : aOptions.factory,
                   aOptions.writable.empty() ? Directories::Writable() : aOptions.writable);
  if (!aOptions.name.empty()) {
    ZelvTv::LocalName::Write(aOptions.name);
  }
}

/// What the library calls back into. It asks and subscribes as soon as it is there.
struct Receivers {
  Receivers(ZelvTv::EventQueue& aEvents, ZelvTv::Library const& aLibrary)
      : tree(aLibrary.Get<Zelv::IAppData>(Zelv::IID_IAppData)),
        timers(aLibrary.Get<Zelv::IAppTimer>(Zelv::IID_IAppTimer)),
        questions(aEvents),
        listener(aEvents, questions, timers),
        settling(aEvents, questions, tree),
        readiness(aEvents, tree),
        devices(aEvents, tree),
        input(aEvents) {
    // Behind the reads of readiness, so that "ready" is the first line.
    self.Begin(tree);
    devices.Begin();
    input.Begin(aLibrary.Get<Zelv::IAppUser>(Zelv::IID_IAppUser));
  }

  Zelv::IAppData& tree;
  Zelv::IAppTimer& timers;
  ZelvTv::OpenQuestions questions;
  ZelvTv::TreeListener listener;
  ZelvTv::Settling settling;
  ZelvTv::Readiness readiness;
  ZelvTv::DeviceWatch devices;
  ZelvTv::Self self;
  ZelvTv::InputListener input;
};

int run(ZelvTv::Options const& aOptions) {
  ZelvApps::StopSignal const stop;
  std::signal(SIGPIPE, SIG_IGN);
  applyOptions(aOptions);

  // What the library calls back into goes after it has stopped.
  ZelvTv::EventQueue events;
  std::optional<Receivers> receivers;

  ZelvTv::Library const library;
  if (!library.IsUp()) {
    std::cerr << "zelv-tv: the library did not start; the log says why\n";
    return 1;
  }
  // The library copies all factory files into an empty directory only, and repairs texts one by
  // one; a picture is none. Without it the set works, and its package has no file.
  ZelvFileUtil::copyIfNotFound(kPicture, Directories::Writable());
  // The set's own files are named relative to it.
  if (::chdir(Directories::Writable().c_str()) != 0) {
    std::cerr << "zelv-tv: cannot work in " << Directories::Writable() << '\n';
    return 1;
  }
  receivers.emplace(events, library);
  auto& channel = library.Get<Zelv::IAppCommand>(Zelv::IID_IAppCommand);
  ZelvTv::SampleCommands const samples(events, channel);
  ZelvTv::SentCommands commands(events, receivers->questions, channel);
  ZelvTv::DeviceFinder const finder(receivers->self, receivers->devices);
  ZelvTv::Session session({receivers->tree, receivers->timers, receivers->listener,
                           receivers->questions, receivers->devices, finder, commands});
  return ZelvTv::Console(events, stop, session, receivers->readiness, receivers->settling).Run();
}

}  // namespace

int main(int aCount, char** aArguments) {
  try {
    int status = 0;
    auto const options = ZelvTv::Options::Parse(aCount, aArguments, status);
    return options ? run(*options) : status;
  } catch (std::exception const& failure) {
    std::cerr << "zelv-tv: " << failure.what() << '\n';
    return 1;
  }
}
