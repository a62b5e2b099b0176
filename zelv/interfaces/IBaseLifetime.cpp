#include "zelv/interfaces/IBaseLifetime.h"

namespace Zelv {

IBaseLifetime::~IBaseLifetime() = default;

}  // namespace Zelv
