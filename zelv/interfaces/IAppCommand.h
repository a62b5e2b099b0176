#pragma once

#include "zelv/interfaces/IBaseCommand.h"

namespace Zelv {

/// Commands, as applications see them.
class ZELV_EXPORT IAppCommand : public virtual IBaseCommand {};

GUID const IID_IAppCommand("8b69e984-ad92-4d2c-bccc-5264349b847b");

}  // namespace Zelv
