#pragma once

#include "zelv/interfaces/IBaseTimerCallback.h"

namespace Zelv {

/// Marks a timer callback that lives inside the library.
class ZELV_EXPORT ICoreTimerCallback : public virtual IBaseTimerCallback {};

GUID const IID_ICoreTimerCallback("cdbb9e15-02d6-42c8-958a-5b7c931af631");

}  // namespace Zelv
