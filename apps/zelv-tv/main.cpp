#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <optional>

#include "apps/StopSignal.h"
#include "apps/zelv-tv/Console.h"
#include "apps/zelv-tv/DeviceWatch.h"
#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/Library.h"
#include "apps/zelv-tv/LocalName.h"
#include "apps/zelv-tv/Options.h"
#include "apps/zelv-tv/Readiness.h"
#include "apps/zelv-tv/Session.h"
#include "apps/zelv-tv/Settling.h"
#include "apps/zelv-tv/TreeListener.h"
#include "zelv/Zelv.h"
#include "zelv/platform/Directories.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

using Zelv::Platform::Directories;

void applyOptions(ZelvTv::Options const& aOptions) {
  if (aOptions.logLevel) {
    PCRealDebug::SetLevel(*aOptions.logLevel);
  } else {
    PCRealDebug::Silence();
  }
  Directories::Set(aOptions.factory.empty() ? Directories::ReadOnly() : aOptions.factory,
                   aOptions.writable.empty() ? Directories::Writable() : aOptions.writable);
  if (!aOptions.name.empty()) {
    ZelvTv::LocalName::Write(aOptions.name);
  }
}

int run(ZelvTv::Options const& aOptions) {
  ZelvApps::StopSignal const stop;
  std::signal(SIGPIPE, SIG_IGN);
  applyOptions(aOptions);

  // What the library calls back into goes after it has stopped.
  ZelvTv::EventQueue events;
  std::optional<ZelvTv::TreeListener> listener;
  std::optional<ZelvTv::Readiness> readiness;
  std::optional<ZelvTv::Settling> settling;
  std::optional<ZelvTv::DeviceWatch> devices;

  ZelvTv::Library const library;
  if (!library.IsUp()) {
    std::cerr << "zelv-tv: the library did not start; the log says why\n";
    return 1;
  }
  // The set's own files are named relative to it.
  if (::chdir(Directories::Writable().c_str()) != 0) {
    std::cerr << "zelv-tv: cannot work in " << Directories::Writable() << '\n';
    return 1;
  }
  auto& tree = library.Get<Zelv::IAppData>(Zelv::IID_IAppData);
  auto& timers = library.Get<Zelv::IAppTimer>(Zelv::IID_IAppTimer);
  listener.emplace(events, timers);
  settling.emplace(events, tree);
  readiness.emplace(events, tree);
  // Behind the reads of readiness, so that "ready" is the first line.
  devices.emplace(events, tree);
  devices->Begin();
  ZelvTv::Session session(tree, timers, *listener, *devices);
  return ZelvTv::Console(events, stop, session, *readiness, *settling).Run();
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
