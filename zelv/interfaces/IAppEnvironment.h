#pragma once

#include "zelv/interfaces/IBaseEnvironment.h"

namespace Zelv {

/// The registry of components, as applications see it.
class ZELV_EXPORT IAppEnvironment : public virtual IBaseEnvironment {};

GUID const IID_IAppEnvironment("44aca3b0-351e-4598-bab0-88ddaa00563d");

}  // namespace Zelv
