#pragma once

#include <string>

namespace Zelv::Platform {

/// Standard error, for a library that lives in somebody else's process.
class ErrorStream {
 public:
  /// Writes one line by one call, so that lines of several threads and processes do not mix.
  /// Control bytes are shown as "\n" or "\x1b", so that no value can pass for a line or move the
  /// cursor. Never raises SIGPIPE; what cannot be written is lost.
  static void WriteLine(std::string const& aText);
};

}  // namespace Zelv::Platform
