#include "zelv/interfaces/IBaseLifetimeCallback.h"

namespace Zelv {

IBaseLifetimeCallback::~IBaseLifetimeCallback() = default;

}  // namespace Zelv
