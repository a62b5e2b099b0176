#include "apps/zelv-tv/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>

namespace ZelvTv {

namespace {

constexpr int kUsageFault = 2;

/// The library builds the set's shell lines of directory names and refuses all but these
/// characters, so a name with others could only fail later, and less clearly.
bool isPlain(std::string const& aPath) {
  return std::all_of(aPath.begin(), aPath.end(), [](unsigned char aCharacter) {
    return (std::isalnum(aCharacter) != 0 && aCharacter < 0x80U) || aCharacter == '.' ||
           aCharacter == '_' || aCharacter == '-' || aCharacter == '/';
  });
}

/// Makes the name absolute, since the program leaves the directory that it was started in.
std::string makeAbsolute(std::string& aPath) {
  aPath = std::filesystem::absolute(aPath).lexically_normal().string();
  return isPlain(aPath) ? ""
                        : "the directory's path may hold letters, digits, '.', '_', '-' and '/' "
                          "only: " +
                              aPath;
}

constexpr std::size_t kLongestName = 128;

/// A name goes into the messages to other devices as it stands, so one with markup in it would make
/// them unreadable.
std::string checkName(std::string const& aName) {
  if (aName.empty() || aName.size() > kLongestName) {
    return "a name has 1 to " + std::to_string(kLongestName) + " bytes";
  }
  bool const isPlainText = std::none_of(aName.begin(), aName.end(), [](unsigned char aCharacter) {
    return aCharacter < 0x20U || aCharacter == 0x7FU || aCharacter == '<' || aCharacter == '&';
  });
  return isPlainText ? ""
                     : "a name holds no '<', no '&' and no control characters: other devices could "
                       "not read what this one sends";
}

std::map<std::string, std::optional<PCRealDebug::Level>> const kLevels = {
    {"off", std::nullopt},
    {"error", PCRealDebug::Error},
    {"warning", PCRealDebug::Warning},
    {"notable", PCRealDebug::Notable},
    {"detail", PCRealDebug::Detail},
    {"trace", PCRealDebug::Trace},
};

}  // namespace

std::optional<Options> Options::Parse(int aCount, char const* const* aArguments, int& aExitStatus) {
  Options options;
  std::string level = "warning";
  CLI::App app(
      "A set in a process: brings the data tree up and takes commands from standard input.",
      "zelv-tv");
  CLI::Validator const absolute(makeAbsolute, "");
  app.add_option("--data", options.writable, "directory of the set's own files, made when missing")
      ->type_name("DIR")
      ->transform(absolute);
  app.add_option("--factory", options.factory, "directory of the factory files")
      ->type_name("DIR")
      ->check(CLI::ExistingDirectory)
      ->transform(absolute);
  app.add_option("--name", options.name, "what the set is called from now on")
      ->type_name("NAME")
      ->check(CLI::Validator(checkName, ""));
  app.add_option("--log", level,
                 "what is logged to standard error: off, error, warning, notable, detail or trace "
                 "(default: warning)")
      ->type_name("LEVEL")
      ->check(CLI::IsMember({"off", "error", "warning", "notable", "detail", "trace"}));
  app.footer("The command \"help\" lists what standard input takes.");
  try {
    app.parse(aCount, aArguments);
  } catch (CLI::CallForHelp const&) {
    std::cout << app.help();
    aExitStatus = 0;
    return std::nullopt;
  } catch (CLI::ParseError const& error) {
    std::cerr << "zelv-tv: " << error.what() << '\n';
    aExitStatus = kUsageFault;
    return std::nullopt;
  }
  options.logLevel = kLevels.at(level);
  return options;
}

}  // namespace ZelvTv
