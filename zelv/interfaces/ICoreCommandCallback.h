#pragma once

#include "zelv/interfaces/IBaseCommandCallback.h"

namespace Zelv {

/// Marks a command callback that lives inside the library.
class ZELV_EXPORT ICoreCommandCallback : public virtual IBaseCommandCallback {};

GUID const IID_ICoreCommandCallback("f040eb61-f039-4d69-9ee1-f9aa1c31a42d");

}  // namespace Zelv
