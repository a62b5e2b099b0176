#pragma once

#include "zelv/interfaces/IBaseLifetimeCallback.h"

namespace Zelv {

/// Marks a component that lives inside the library.
class ZELV_EXPORT ICoreLifetimeCallback : public virtual IBaseLifetimeCallback {};

GUID const IID_ICoreLifetimeCallback("854cb759-b73b-4582-91de-ce469507c8f5");

}  // namespace Zelv
