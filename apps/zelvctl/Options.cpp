#include "apps/zelvctl/Options.h"

#include <CLI/CLI.hpp>

namespace ZelvCtl {

bool Options::parse(int aCount, char** aArguments, int& aStatus) {
  CLI::App app{"A phone on the command line: joins a home of sets as a mobile device."};
  app.name("zelvctl");
  app.require_subcommand(1);
  app.fallthrough();
  app.add_flag("--json", json, "print JSON, for programs");
  app.add_option("--timeout", timeout, "seconds to wait for answers")
      ->check(CLI::Range(0.1, 3600.0))
      ->capture_default_str();
  app.add_option("--address", address, "own address; that of the last interface unless given")
      ->envname("ZELV_ADDRESS");
  app.add_option("--group", group, "multicast group of the home")->capture_default_str();
  app.add_option("--port", port, "port of the group")->capture_default_str();
  app.add_option("--name", name, "name that others see")->capture_default_str();
  app.add_option("--id", id, "own identifier; a new one at each call unless given");
  app.add_option("--interval", interval, "seconds between heartbeats")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  CLI::App* const devices = app.add_subcommand("devices", "list the devices of the home");
  devices->add_flag("--watch", watch,
                    "stay, and tell of arrivals and departures until interrupted");
  try {
    app.parse(aCount, aArguments);
  } catch (CLI::ParseError const& error) {
    aStatus = app.exit(error);
    return false;
  }
  return true;
}

}  // namespace ZelvCtl
