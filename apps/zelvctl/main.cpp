#include <csignal>
#include <exception>
#include <iostream>

#include "apps/StopSignal.h"
#include "apps/zelvctl/AssetVerb.h"
#include "apps/zelvctl/CommandVerb.h"
#include "apps/zelvctl/DevicesVerb.h"
#include "apps/zelvctl/GetVerb.h"
#include "apps/zelvctl/InputVerb.h"
#include "apps/zelvctl/Options.h"
#include "apps/zelvctl/PrintableText.h"
#include "apps/zelvctl/ServeVerb.h"
#include "apps/zelvctl/SetVerb.h"
#include "apps/zelvctl/WatchVerb.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

using ZelvCtl::Options;

void runDevices(Options const& aOptions, ZelvApps::StopSignal const& aStop) {
  ZelvCtl::DevicesVerb devices(aOptions, aStop);
  if (aOptions.watch) {
    devices.watch();
  } else {
    devices.list();
  }
}

template <typename Verb>
void runVerb(Options const& aOptions, ZelvApps::StopSignal const& aStop) {
  Verb(aOptions, aStop.Descriptor(), std::cout).run();
}

void run(Options const& aOptions, ZelvApps::StopSignal const& aStop) {
  switch (aOptions.verb) {
    case Options::Devices:
      return runDevices(aOptions, aStop);
    case Options::Get:
      return runVerb<ZelvCtl::GetVerb>(aOptions, aStop);
    case Options::Watch:
      return runVerb<ZelvCtl::WatchVerb>(aOptions, aStop);
    case Options::Set:
      return runVerb<ZelvCtl::SetVerb>(aOptions, aStop);
    case Options::Command:
      return runVerb<ZelvCtl::CommandVerb>(aOptions, aStop);
    case Options::Input:
      return runVerb<ZelvCtl::InputVerb>(aOptions, aStop);
    case Options::Asset:
      return runVerb<ZelvCtl::AssetVerb>(aOptions, aStop);
    case Options::Serve:
      return runVerb<ZelvCtl::ServeVerb>(aOptions, aStop);
  }
}

}  // namespace

int main(int aCount, char** aArguments) {
  try {
    Options options;
    int status = 0;
    if (!options.parse(aCount, aArguments, status)) {
      return status;
    }
    ZelvApps::StopSignal const stop;
    std::signal(SIGPIPE, SIG_IGN);
    // What went wrong is told in one line of this program's own.
    PCRealDebug::Silence();
    run(options, stop);
    return 0;
  } catch (std::exception const& error) {
    std::cerr << "zelvctl: " << ZelvCtl::PrintableText::masked(error.what()) << '\n';
    return 1;
  }
}
