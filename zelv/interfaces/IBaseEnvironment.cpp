#include "zelv/interfaces/IBaseEnvironment.h"

namespace Zelv {

IBaseEnvironment::~IBaseEnvironment() = default;

}  // namespace Zelv
