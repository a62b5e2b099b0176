#include "zelv/interfaces/IBaseUser.h"

namespace Zelv {

IBaseUser::~IBaseUser() = default;

}  // namespace Zelv
