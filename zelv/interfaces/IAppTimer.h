#pragma once

#include "zelv/interfaces/IBaseTimer.h"

namespace Zelv {

/// Timers, as applications see them.
class ZELV_EXPORT IAppTimer : public virtual IBaseTimer {};

GUID const IID_IAppTimer("de7cebbb-b648-464a-91f6-d30c6c37892c");

}  // namespace Zelv
