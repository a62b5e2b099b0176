#pragma once

#include "zelv/interfaces/IBaseDataCallback.h"

namespace Zelv {

/// Marks a data callback that lives inside the library.
class ZELV_EXPORT ICoreDataCallback : public virtual IBaseDataCallback {};

GUID const IID_ICoreDataCallback("33f6ce1f-aa03-4c57-b3ab-e89acf0b557f");

}  // namespace Zelv
