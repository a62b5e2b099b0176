#pragma once

#include "zelv/interfaces/IBaseTimer.h"

namespace Zelv {

/// Timers, as components see them.
class ZELV_EXPORT ICoreTimer : public virtual IBaseTimer {};

GUID const IID_ICoreTimer("77ffd078-ce2d-424c-a178-d251f93657ba");

}  // namespace Zelv
