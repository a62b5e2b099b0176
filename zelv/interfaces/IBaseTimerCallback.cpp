#include "zelv/interfaces/IBaseTimerCallback.h"

namespace Zelv {

IBaseTimerCallback::~IBaseTimerCallback() = default;

}  // namespace Zelv
