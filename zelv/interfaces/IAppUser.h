#pragma once

#include "zelv/interfaces/IBaseUser.h"

namespace Zelv {

/// Input events, as applications see them.
class ZELV_EXPORT IAppUser : public virtual IBaseUser {};

GUID const IID_IAppUser("9974adef-79d1-421b-a2b5-830b7da732f6");

}  // namespace Zelv
