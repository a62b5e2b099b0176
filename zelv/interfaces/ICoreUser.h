#pragma once

#include "zelv/interfaces/IBaseUser.h"

namespace Zelv {

/// Input events, as components see them.
class ZELV_EXPORT ICoreUser : public virtual IBaseUser {};

GUID const IID_ICoreUser("8c1e8246-b9c5-4b3d-a60d-0f619a774d72");

}  // namespace Zelv
