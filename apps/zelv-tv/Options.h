#pragma once

#include <optional>
#include <string>

#include "zelv/platform/PCRealDebug.h"

namespace ZelvTv {

/// What the command line says. Directories are absolute; an empty one means the library's own.
struct Options {
  std::string writable;
  std::string factory;
  /// What the set is called from now on; empty to leave the name as it is.
  std::string name;
  /// None for a silent log.
  std::optional<PCRealDebug::Level> logLevel = PCRealDebug::Warning;

  /// Reads the command line. Prints the help or one line on what is wrong where it is asked for.
  ///
  /// @param aExitStatus  set when the program is to end at once.
  /// @return nothing when the program is to end at once.
  static std::optional<Options> Parse(int aCount, char const* const* aArguments, int& aExitStatus);
};

}  // namespace ZelvTv
