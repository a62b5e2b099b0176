#include "zelv/interfaces/IBaseUserCallback.h"

namespace Zelv {

IBaseUserCallback::~IBaseUserCallback() = default;

}  // namespace Zelv
