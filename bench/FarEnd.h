#pragma once

#include <string>
#include <vector>

namespace Zelv::Bench {

/// What this program is at the other host: started with "--far" and one of these, it prints a line
/// when it is ready, does what the lines of its input say, and ends with its input.
struct FarEnd {
  static constexpr char const* cFlag = "--far";

  /// A set. It prints its ID. It has a command Echo, and "change" is a change at cPath.
  static constexpr char const* cSet = "set";
  static constexpr char const* cPath = "/Zelv/Configuration/UPnPDiscovery/text()";

  /// BARE SIZE: answers each line at cBarePort with one of SIZE bytes to the same port here. "burst
  /// COUNT" sends so many, one after another.
  static constexpr char const* cBare = "bare";
  static constexpr int cBarePort = 4010;

  /// BUS ADDRESS, MQTT PORT: the one who answers there.
  static constexpr char const* cBus = "bus";
  static constexpr char const* cMqtt = "mqtt";

  /// @return the program's exit status.
  static int run(std::vector<std::string> const& aArguments);

  /// What starts it.
  static std::vector<std::string> command(std::vector<std::string> const& aArguments);
};

}  // namespace Zelv::Bench
