#pragma once

#include "zelv/interfaces/IBaseLifetime.h"

namespace Zelv {

/// Lifetimes, as components see them.
class ZELV_EXPORT ICoreLifetime : public virtual IBaseLifetime {};

GUID const IID_ICoreLifetime("6997bde6-8695-4d68-8ce0-bf894ce52348");

}  // namespace Zelv
