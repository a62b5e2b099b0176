#include "apps/zelvctl/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "apps/zelvctl/AssetMessage.h"
#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/Markup.h"
#include "apps/zelvctl/PrintableText.h"
#include "zelv/infrastructure/XPathGate.h"

namespace ZelvCtl {

namespace {

constexpr int usageFault = 2;
constexpr std::size_t longestName = 128;
/// Sets read no longer ones.
constexpr std::size_t longestPath = 2048;
/// So that the longest request that is allowed fits into what sets read.
constexpr std::size_t longestAssetPath = 256;

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
  auto const id = Identifier::usualForm(aId);
  if (!id) {
    return "an identifier looks like 6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";
  }
  aId = *id;
  return "";
}

std::string checkDevice(std::string const& aDevice) {
  return aDevice.empty() ? "a device is given by its name, its ID or its address" : "";
}

std::string checkPath(std::string const& aPath) {
  bool const isInTree = aPath.starts_with("/Zelv/") || aPath.starts_with("/Zelv[");
  return isInTree && aPath.size() <= longestPath
             ? ""
             : "a path begins with /Zelv/ and has at most 2048 bytes";
}

std::string checkContent(std::string const& aText) {
  return Markup::isContent(aText)
             ? ""
             : "it goes out as XML and is not well-formed; \"&lt;\" and \"&amp;\" stand for \"<\" "
               "and \"&\"";
}

std::string checkElement(std::string const& aText) {
  return Markup::isElement(aText) ? "" : "a command is an XML element, as <Echo>text</Echo>";
}

/// Sets find nothing for any other.
std::string checkLiteral(std::string const& aText) {
  return !aText.empty() && Zelv::Infrastructure::XPathGate::isQuotableLiteral(aText)
             ? ""
             : "it has 1 to 128 bytes, none of them a quote, a bracket, \"<\", \"&\" or a control "
               "character";
}

/// A path is put into the request, and by the set into its answer, as it stands.
std::string checkAsset(std::string const& aName) {
  if (!aName.starts_with('/')) {
    return checkLiteral(aName);
  }
  bool const isPlain = std::none_of(aName.begin(), aName.end(), [](unsigned char aByte) {
    return aByte < 0x20 || aByte == 0x7f || aByte == '\'' || aByte == '<' || aByte == '&';
  });
  return isPlain && aName.size() <= longestAssetPath ? ""
                                                     : "a path has at most 256 bytes, none of them "
                                                       "an apostrophe, \"<\", \"&\" or a control "
                                                       "character";
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
                  "own address; unless given, the one that TV sees if TV is an address, else that "
                  "of the last interface")
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

CLI::App& declareVerb(CLI::App& aApp, Options& aOptions, Options::Verb aVerb, char const* aName,
                      char const* aText) {
  CLI::App* const verb = aApp.add_subcommand(aName, aText);
  verb->footer(
      "The options of `zelvctl --help` go with every command; \"--\" stands before values "
      "that begin with \"-\".");
  verb->parse_complete_callback([&aOptions, aVerb] { aOptions.verb = aVerb; });
  return *verb;
}

void declareDevice(CLI::App& aVerb, Options& aOptions) {
  aVerb.add_option("TV", aOptions.device, "the device: its name, its ID or its address")
      ->required()
      ->check(CLI::Validator(checkDevice, ""))
      ->type_name("");
}

void declarePath(CLI::App& aVerb, Options& aOptions) {
  aVerb.add_option("PATH", aOptions.path, "path in the device's own tree, as /Zelv/Devices/...")
      ->required()
      ->check(CLI::Validator(checkPath, ""))
      ->type_name("");
}

void declareTreeVerbs(CLI::App& aApp, Options& aOptions) {
  CLI::App& get = declareVerb(aApp, aOptions, Options::Get, "get", "print the value of a path");
  declareDevice(get, aOptions);
  declarePath(get, aOptions);
  CLI::App& watch = declareVerb(aApp, aOptions, Options::Watch, "watch",
                                "print the value of a path, and each new one until interrupted");
  declareDevice(watch, aOptions);
  declarePath(watch, aOptions);
  CLI::App& set = declareVerb(aApp, aOptions, Options::Set, "set",
                              "give a path a new value. Success means that the device has got it: "
                              "no device tells whether it could store a value");
  declareDevice(set, aOptions);
  declarePath(set, aOptions);
  set.add_option("VALUE", aOptions.values, "text or XML, which goes out as it stands")
      ->required()
      ->expected(1)
      ->check(CLI::Validator(checkContent, ""))
      ->type_name("");
}

void declareCommandVerb(CLI::App& aApp, Options& aOptions) {
  CLI::App& command = declareVerb(aApp, aOptions, Options::Command, "command",
                                  "have a device carry out a command, and print what it returns");
  declareDevice(command, aOptions);
  command.add_option("XML", aOptions.command, "the command, as <Echo>text</Echo>")
      ->required()
      ->check(CLI::Validator(checkElement, ""))
      ->type_name("");
  auto* const returns =
      command.add_option("--returns", aOptions.returns, "how many answers to wait for")
          ->check(CLI::Range(1, 1000000))
          ->type_name("N")
          ->capture_default_str();
  command.add_flag("--no-wait", aOptions.noWait, "wait for no answer, only until it has arrived")
      ->excludes(returns);
}

void declareInputVerb(CLI::App& aApp, Options& aOptions) {
  CLI::App& input = declareVerb(aApp, aOptions, Options::Input, "input",
                                "send a device an event of input for each value. Nobody confirms "
                                "them, so success means that they have gone out");
  declareDevice(input, aOptions);
  input.add_option("TYPE", aOptions.inputType, "as Key or Text; may be empty")
      ->required()
      ->type_name("");
  input.add_option("VALUE", aOptions.values, "text or XML, which goes out as it stands")
      ->required()
      ->expected(-1)
      ->check(CLI::Validator(checkContent, ""))
      ->type_name("");
}

/// What one option alone cannot tell.
void checkAssets(Options const& aOptions) {
  std::size_t const packages = aOptions.packages.size() + aOptions.packageIds.size();
  std::size_t const assets = aOptions.assets.size() + aOptions.assetIds.size();
  if (packages + assets == 0) {
    throw CLI::ValidationError("NAME, --id, --package or --package-id is required");
  }
  if (packages > 1 && assets > 0) {
    throw CLI::ValidationError("assets are looked for in one package, or in all of them");
  }
  if (packages + assets > AssetMessage::MaxThings) {
    throw CLI::ValidationError("one request may ask for 1024 things at most");
  }
}

void declareAssetChoice(CLI::App& aVerb, Options& aOptions) {
  CLI::Validator const literal(checkLiteral, "");
  aVerb
      .add_option("NAME", aOptions.assets,
                  "assets by name; one that begins with / is a path in the package")
      ->expected(-1)
      ->check(CLI::Validator(checkAsset, ""))
      ->type_name("");
  aVerb.add_option("--id", aOptions.assetIds, "an asset by its ID; may be given several times")
      ->allow_extra_args(false)
      ->check(literal)
      ->type_name("ID");
  aVerb
      .add_option("--package", aOptions.packages,
                  "a whole package, or the one in which assets are looked for")
      ->allow_extra_args(false)
      ->check(literal)
      ->type_name("NAME");
  aVerb.add_option("--package-id", aOptions.packageIds, "the same by the ID of the package")
      ->allow_extra_args(false)
      ->check(literal)
      ->type_name("ID");
}

void declareAssetVerb(CLI::App& aApp, Options& aOptions) {
  CLI::App& asset = declareVerb(aApp, aOptions, Options::Asset, "asset",
                                "fetch the files of assets, or list what a package holds. The own "
                                "identifier goes before the command: --id is an asset's here");
  declareDevice(asset, aOptions);
  declareAssetChoice(asset, aOptions);
  auto* const folder =
      asset.add_option("-o,--output", aOptions.folder, "directory that files are written to")
          ->type_name("DIR")
          ->capture_default_str();
  asset.add_flag("--list", aOptions.list, "print name, ID and source of each asset; fetch nothing")
      ->excludes(folder);
  asset.final_callback([&aOptions] { checkAssets(aOptions); });
}

void declareServeVerb(CLI::App& aApp, Options& aOptions) {
  CLI::App& serve =
      declareVerb(aApp, aOptions, Options::Serve, "serve",
                  "stay as a phone that takes commands: print each, answer it, until interrupted");
  serve
      .add_option("--answer", aOptions.answer,
                  "what every command returns; the command itself unless given, nothing if empty")
      ->check(CLI::Validator(checkContent, ""))
      ->type_name("XML");
}

void declareVerbs(CLI::App& aApp, Options& aOptions) {
  CLI::App& devices =
      declareVerb(aApp, aOptions, Options::Devices, "devices", "list the devices of the home");
  devices.add_flag("--watch", aOptions.watch,
                   "stay, and tell of arrivals and departures until interrupted");
  declareTreeVerbs(aApp, aOptions);
  declareCommandVerb(aApp, aOptions);
  declareInputVerb(aApp, aOptions);
  declareAssetVerb(aApp, aOptions);
  declareServeVerb(aApp, aOptions);
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
  declareVerbs(app, *this);
  try {
    app.parse(aCount, aArguments);
  } catch (CLI::CallForHelp const&) {
    std::cout << app.help();
    aStatus = 0;
    return false;
  } catch (CLI::ParseError const& error) {
    std::cerr << "zelvctl: " << PrintableText::masked(error.what()) << '\n';
    aStatus = usageFault;
    return false;
  }
  return true;
}

}  // namespace ZelvCtl
