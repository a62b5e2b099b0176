#include <csignal>
#include <exception>
#include <iostream>

#include "apps/StopSignal.h"
#include "apps/zelvctl/DevicesVerb.h"
#include "apps/zelvctl/Options.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

int run(ZelvCtl::Options const& aOptions) {
  ZelvApps::StopSignal const stop;
  std::signal(SIGPIPE, SIG_IGN);
  // What went wrong is told in one line of this program's own.
  PCRealDebug::Silence();
  ZelvCtl::DevicesVerb devices(aOptions, stop);
  if (aOptions.watch) {
    devices.watch();
  } else {
    devices.list();
  }
  return 0;
}

}  // namespace

int main(int aCount, char** aArguments) {
  try {
    ZelvCtl::Options options;
    int status = 0;
    return options.parse(aCount, aArguments, status) ? run(options) : status;
  } catch (std::exception const& error) {
    std::cerr << "zelvctl: " << error.what() << '\n';
    return 1;
  }
}
