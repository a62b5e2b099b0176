#pragma once

#include <cstdarg>
#include <string>

namespace Zelv::Platform {

/// Formats lines of the log.
class LogFormat {
 public:
  /// How many bytes of one value a line shows.
  static constexpr int cMostOfValue = 1024;

  /// As vsnprintf, except that no value gives more than cMostOfValue bytes of text, that a null
  /// string gives "(null)", and that "%n" writes nothing. A conversion that is not known ends the
  /// line with the rest of the format as it stands.
  static std::string Format(char const* aFormat, std::va_list aArguments);
};

}  // namespace Zelv::Platform
