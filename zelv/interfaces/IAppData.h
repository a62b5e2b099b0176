#pragma once

#include "zelv/interfaces/IBaseData.h"

namespace Zelv {

/// The tree, as applications see it.
class ZELV_EXPORT IAppData : public virtual IBaseData {};

GUID const IID_IAppData("4eed1b51-abcd-4ab0-b5a4-d5d5fbdcec59");

}  // namespace Zelv
