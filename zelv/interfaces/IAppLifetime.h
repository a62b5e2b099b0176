#pragma once

#include "zelv/interfaces/IBaseLifetime.h"

namespace Zelv {

/// Lifetimes, as applications see them.
class ZELV_EXPORT IAppLifetime : public virtual IBaseLifetime {};

GUID const IID_IAppLifetime("665aa5cf-5a11-4f40-9103-1b6274ed3d40");

}  // namespace Zelv
