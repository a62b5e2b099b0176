#pragma once

#include "zelv/interfaces/IBaseCommand.h"

namespace Zelv {

/// Commands, as components see them.
class ZELV_EXPORT ICoreCommand : public virtual IBaseCommand {};

GUID const IID_ICoreCommand("29d4af8c-36c8-4245-9781-8cc319f4e703");

}  // namespace Zelv
