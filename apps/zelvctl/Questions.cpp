#include "apps/zelvctl/Questions.h"

namespace ZelvCtl {

bool Questions::mayAsk(std::string const& aDeviceId, Clock::time_point aNow) {
  Clock::time_point const limit = aNow - std::chrono::seconds(1);
  std::erase_if(mAsked, [&](auto const& aEntry) { return aEntry.second <= limit; });
  return mAsked.size() < MostPerSecond && mAsked.emplace(aDeviceId, aNow).second;
}

}  // namespace ZelvCtl
