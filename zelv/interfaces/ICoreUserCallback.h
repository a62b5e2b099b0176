#pragma once

#include "zelv/interfaces/IBaseUserCallback.h"

namespace Zelv {

/// Marks a user callback that lives inside the library.
class ZELV_EXPORT ICoreUserCallback : public virtual IBaseUserCallback {};

GUID const IID_ICoreUserCallback("619b2e16-ff50-43f3-bbc2-9a1810499642");

}  // namespace Zelv
