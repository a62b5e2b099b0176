#pragma once

#include "zelv/interfaces/IBaseEnvironment.h"

namespace Zelv {

/// The registry of components, as components see it.
class ZELV_EXPORT ICoreEnvironment : public virtual IBaseEnvironment {};

GUID const IID_ICoreEnvironment("50622789-0b49-4184-8c46-ce8d7614a0e1");

}  // namespace Zelv
