#include "zelv/interfaces/IBaseTimer.h"

namespace Zelv {

IBaseTimer::~IBaseTimer() = default;

}  // namespace Zelv
