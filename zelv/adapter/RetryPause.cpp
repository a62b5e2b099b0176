#include "zelv/adapter/RetryPause.h"

#include <algorithm>

#include "zelv/platform/PCTime.h"

namespace Zelv::Adapter {

void RetryPause::wait() {
  PCTime::Sleep(mMilliseconds);
  mMilliseconds = std::min(mMilliseconds * 2, longest);
}

}  // namespace Zelv::Adapter
