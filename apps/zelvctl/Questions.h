#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

namespace ZelvCtl {

/// Which devices were asked to describe themselves. One question a second for each device, and
/// MostPerSecond in all, however many heartbeats of strangers come.
class Questions {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::size_t MostPerSecond = 20;

  /// @return true, once, when the question is to be sent now.
  bool mayAsk(std::string const& aDeviceId, Clock::time_point aNow);

 private:
  std::map<std::string, Clock::time_point> mAsked;
};

}  // namespace ZelvCtl
