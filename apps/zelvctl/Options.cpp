#include "apps/zelvctl/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "zelv/infrastructure/GUID.h"

namespace ZelvCtl {

namespace {

constexpr int usageFault = 2;
constexpr std::size_t longestName = 128;

std::string checkName(std::string const& aName) {
  bool const hasControls = std::any_of(aName.begin(), aName.end(), [](unsigned char aByte) {
    return aByte < 0x20 || aByte == 0x7f;
  });
  return aName.empty() || aName.size() > longestName || hasControls
             ? "a name has 1 to 128 bytes, none of them a control character"
             : "";
}

/// Brings the identifier into its usual form, by which others know it.
std::string normaliseId(std::string& aId) {
  try {
    aId = Zelv::Infrastructure::GUID(aId).toString();
    return "";
  } catch (std::exception const&) {
    return "an identifier looks like 6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";
  }
}

void declareIdentity(CLI::App& aApp, Options& aOptions) {
  aApp.add_option("--name", aOptions.name, "name that others see")
      ->check(CLI::Validator(checkName, ""))
      ->type_name("NAME")
      ->capture_default_str();
  aApp.add_option("--id", aOptions.id, "own identifier; a new one at each call unless given")
      ->transform(CLI::Validator(normaliseId, ""))
      ->type_name("ID");
}

void declareNetwork(CLI::App& aApp, Options& aOptions) {
  aApp.add_option("--address", aOptions.address,
                  "own address; that of the last interface unless given")
      ->check(CLI::ValidIPV4)
      ->type_name("A.B.C.D")
      ->envname("ZELV_ADDRESS");
  aApp.add_option("--group", aOptions.group, "multicast group of the home")
      ->check(CLI::ValidIPV4)
      ->type_name("A.B.C.D")
      ->capture_default_str();
  aApp.add_option("--port", aOptions.port, "port of the group")
      ->check(CLI::Range(1, 65535))
      ->type_name("PORT")
      ->capture_default_str();
}

void declareTimes(CLI::App& aApp, Options& aOptions) {
  aApp.add_option("--timeout", aOptions.timeout, "seconds to wait for answers at most")
      ->check(CLI::Range(0.1, 3600.0))
      ->type_name("SECONDS")
      ->capture_default_str();
  aApp.add_option("--interval", aOptions.interval,
                  "seconds between heartbeats; not less than the sets have")
      ->check(CLI::Range(1, 86400))
      ->type_name("SECONDS")
      ->capture_default_str();
}

}  // namespace

bool Options::parse(int aCount, char const* const* aArguments, int& aStatus) {
  CLI::App app("A phone on the command line: joins a home of sets as a mobile device.", "zelvctl");
  app.require_subcommand(1);
  app.fallthrough();
  app.add_flag("--json", json, "print JSON, for programs");
  declareTimes(app, *this);
  declareIdentity(app, *this);
  declareNetwork(app, *this);
  CLI::App* const devices = app.add_subcommand("devices", "list the devices of the home");
  devices->add_flag("--watch", watch,
                    "stay, and tell of arrivals and departures until interrupted");
  try {
    app.parse(aCount, aArguments);
  } catch (CLI::CallForHelp const&) {
    std::cout << app.help();
    aStatus = 0;
    return false;
  } catch (CLI::ParseError const& error) {
    std::cerr << "zelvctl: " << error.what() << '\n';
    aStatus = usageFault;
    return false;
  }
  return true;
}

}  // namespace ZelvCtl
