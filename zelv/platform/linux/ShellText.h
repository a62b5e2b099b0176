#pragma once

#include <string>

namespace Zelv::Platform {

/// What may reach the set's shell.
class ShellText {
 public:
  /// True for a line that Shell::Run() may run; others are logged at error level.
  static bool Accept(std::string const& aLine);
};

}  // namespace Zelv::Platform
